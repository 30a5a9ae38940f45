#include "support/utf_convert.h"

#include <utf8.h>

#include <cstdint>
#include <cwchar>
#include <iterator>
#include <vector>

namespace vsm {

namespace {

void AppendUtf16(uint32_t codePoint, std::wstring& output) {
  if (codePoint > 0xFFFF) {
    codePoint -= 0x10000;
    output.push_back(static_cast<wchar_t>(0xD800 + (codePoint >> 10)));
    output.push_back(static_cast<wchar_t>(0xDC00 + (codePoint & 0x3FF)));
  } else {
    output.push_back(static_cast<wchar_t>(codePoint));
  }
}

// The lenient decoder: any lead byte from 0xC0 to 0xF7 with its continuation bytes, overlong
// forms included. False for anything else that isn't well-formed.
bool DecodeLenient(const uint8_t* bytes, size_t length, std::wstring& result) {
  size_t i = 0;
  while (i < length) {
    uint8_t lead = bytes[i];
    uint32_t codePoint;
    size_t trailing;
    if (lead < 0x80) {
      codePoint = lead;
      trailing = 0;
    } else if (lead >= 0xC0 && lead <= 0xDF) {
      codePoint = lead & 0x1F;
      trailing = 1;
    } else if (lead >= 0xE0 && lead <= 0xEF) {
      codePoint = lead & 0x0F;
      trailing = 2;
    } else if (lead >= 0xF0 && lead <= 0xF7) {
      codePoint = lead & 0x07;
      trailing = 3;
    } else {
      return false;  // a stray continuation byte, or no lead byte at all
    }
    if (trailing > length - i - 1) return false;
    for (size_t k = 1; k <= trailing; ++k) {
      uint8_t next = bytes[i + k];
      if (next < 0x80 || next > 0xBF) return false;
      codePoint = codePoint << 6 | (next & 0x3F);
    }
    if ((codePoint >= 0xD800 && codePoint <= 0xDFFF) || codePoint > 0x10FFFF) return false;
    AppendUtf16(codePoint, result);
    i += trailing + 1;
  }
  return true;
}

}  // namespace

void Utf8ToWide(const char* text, size_t length, std::wstring& output) {
  if (text == nullptr) return;
  std::vector<uint16_t> units;
  try {
    utf8::utf8to16(text, text + length, std::back_inserter(units));
  } catch (const utf8::exception&) {
    std::wstring result;
    if (DecodeLenient(reinterpret_cast<const uint8_t*>(text), length, result)) {
      output = result;
    } else {
      output.clear();
    }
    return;
  }
  for (uint16_t unit : units) output.push_back(static_cast<wchar_t>(unit));
}

void WideToUtf8(const wchar_t* units, std::string& output) {
  output.clear();
  if (units == nullptr) return;
  try {
    utf8::utf16to8(units, units + std::wcslen(units), std::back_inserter(output));
  } catch (const utf8::exception&) {
    // `output` keeps what was converted before the bad unit.
  }
}

}  // namespace vsm
