// For punycode_oracle.py: each input line "L <hex UTF-8 label>" prints PunycodeEncode's
// "<result> <nonBasicCount> <text>", each line "H <hex UTF-8 host>" HostNameToPunycode's
// "<size> <result> <text>", the size asked first as callers do.
#include <cstdio>
#include <iostream>
#include <string>
#include <vector>

#include "support/punycode.h"
#include "support/utf_convert.h"

int main() {
  std::string line;
  while (std::getline(std::cin, line)) {
    std::string text;
    for (size_t i = 2; i + 2 <= line.size(); i += 2) {
      text.push_back(static_cast<char>(std::stoul(line.substr(i, 2), nullptr, 16)));
    }
    std::vector<char> output(8192, '\0');
    uint32_t first, result;
    if (line[0] == 'L') {
      std::wstring wide;
      vsm::Utf8ToWide(text.data(), text.size(), wide);
      result = vsm::PunycodeEncode(wide.c_str(), vsm::kPunycodeZeroTerminated, output.data(), 8191,
                                   nullptr, 0, &first);
      std::swap(first, result);
    } else {
      first = vsm::HostNameToPunycode(text.c_str(), nullptr);
      result = first == 0 ? 0 : vsm::HostNameToPunycode(text.c_str(), output.data());
    }
    std::printf("%u %u %s\n", first, result, output.data());
  }
}
