#include "support/text_search.h"

#include <cstring>

namespace vsm {

namespace {

char FoldAscii(char ch) { return ch >= 'A' && ch <= 'Z' ? static_cast<char>(ch + 32) : ch; }

}  // namespace

int32_t FindInRange(const char* text, const char* pattern, int32_t start, int32_t end,
                    bool caseSensitive) {
  if (text == nullptr || pattern == nullptr || pattern[0] == '\0') return -1;
  if (start < 0 || start >= end) return -1;
  int32_t matched = 0;
  int32_t first = -1;
  int32_t i = start;
  while (i < end) {
    char have = text[i];
    char want = pattern[matched];
    if (!caseSensitive) {
      have = FoldAscii(have);
      want = FoldAscii(want);
    }
    if (have == want) {
      if (matched == 0) first = i;
      ++matched;
      if (pattern[matched] == '\0') return first;
      ++i;
    } else if (matched > 0) {
      // Retry the failed character against the pattern's start, without stepping back.
      matched = 0;
      if (i < start + 1) i = start + 1;
    } else {
      ++i;
    }
  }
  return -1;
}

int32_t FindText(const char* text, const char* pattern, bool caseSensitive) {
  if (text == nullptr) return -1;
  return FindInRange(text, pattern, 0, static_cast<int32_t>(std::strlen(text)), caseSensitive);
}

int32_t CountTextBlocks(const char* text) {
  static const char kSeparator[] = "\r\n\r\n";
  const int32_t kSeparatorLength = 4;
  if (text == nullptr) return 0;
  int32_t length = static_cast<int32_t>(std::strlen(text));
  if (length == 0) return 0;
  int32_t count = 0;
  int32_t position = 0;
  int32_t found;
  while ((found = FindInRange(text, kSeparator, position, length, false)) >= 0) {
    ++count;
    position = found + kSeparatorLength;
  }
  return position < length ? count + 1 : count;
}

}  // namespace vsm
