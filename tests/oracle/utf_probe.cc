// For utf_oracle.py: each input line "D <hex UTF-8>" prints Utf8ToWide's units, and each line
// "E <hex units>" prints WideToUtf8's bytes; four hex digits per unit, two per byte.
#include <cstdio>
#include <iostream>
#include <string>

#include "support/utf_convert.h"

int main() {
  std::string line;
  while (std::getline(std::cin, line)) {
    size_t digits = line[0] == 'D' ? 2 : 4;
    std::string bytes, output;
    std::wstring units;
    for (size_t i = 2; i + digits <= line.size(); i += digits) {
      unsigned long value = std::stoul(line.substr(i, digits), nullptr, 16);
      if (digits == 2) bytes.push_back(static_cast<char>(value));
      if (digits == 4) units.push_back(static_cast<wchar_t>(value));
    }
    if (digits == 2) {
      units.clear();
      vsm::Utf8ToWide(bytes.data(), bytes.size(), units);
      for (wchar_t unit : units) std::printf("%04X", static_cast<unsigned>(unit));
    } else {
      vsm::WideToUtf8(units.c_str(), output);
      for (unsigned char byte : output) std::printf("%02X", byte);
    }
    std::printf("\n");
  }
}
