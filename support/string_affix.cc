#include "support/string_affix.h"

#include <cstdlib>
#include <cstring>

namespace vsm {

bool EndsWith(const std::string& text, const char* other, size_t length) {
  if (other == nullptr || length > text.size()) return false;
  return std::memcmp(text.data() + (text.size() - length), other, length) == 0;
}

bool EndsWith(const std::string& text, const std::string& other) {
  return EndsWith(text, other.data(), other.size());
}

bool EndsWith(const std::string& text, const char* other) {
  return other != nullptr && EndsWith(text, other, std::strlen(other));
}

bool StartsWith(const std::string& text, const char* other, size_t length) {
  if (other == nullptr || length > text.size()) return false;
  return std::memcmp(text.data(), other, length) == 0;
}

bool StartsWith(const std::string& text, const std::string& other) {
  return StartsWith(text, other.data(), other.size());
}

bool StartsWith(const std::string& text, const char* other) {
  return other != nullptr && StartsWith(text, other, std::strlen(other));
}

std::wstring NarrowToWide(const std::string& text) {
  std::wstring wide(text.size(), L'\0');
  if (!text.empty() &&
      std::mbstowcs(&wide[0], text.c_str(), wide.size()) == static_cast<size_t>(-1)) {
    // A failed conversion may have written part of the text; the result is all zeros then.
    wide.assign(text.size(), L'\0');
  }
  return wide;
}

std::string WideToNarrow(const std::wstring& text) {
  std::string narrow(text.size(), '\0');
  if (!text.empty() &&
      std::wcstombs(&narrow[0], text.c_str(), narrow.size()) == static_cast<size_t>(-1)) {
    narrow.assign(text.size(), '\0');
  }
  return narrow;
}

}  // namespace vsm
