// Text forms of CBigInteger values for the bigint tests: the whole two's complement value (all
// 1024 words, whatever `length` says) and the length beside it.
#ifndef VSM_TESTS_BIGINT_BIG_NUMBER_TEXT_H_
#define VSM_TESTS_BIGINT_BIG_NUMBER_TEXT_H_

#include <cstdint>
#include <cstdio>
#include <string>
#include <vector>

#include "bigint/big_integer.h"

namespace vsm {

// The text constructor on a copy of `text`.
inline CBigInteger Text(const std::string& text, int32_t radix) {
  std::vector<char> copy(text.begin(), text.end());
  copy.push_back('\0');
  return CBigInteger(copy.data(), radix);
}

// "-1F L1": the value of all 1024 words in upper-case hex, signed, then `length`.
inline std::string Describe(const CBigInteger& value) {
  std::vector<uint32_t> words(value.data(), value.data() + CBigInteger::kMaxLength);
  const bool negative = value.IsNegative();
  if (negative) {
    uint64_t carry = 1;
    for (uint32_t& word : words) {
      const uint64_t sum = static_cast<uint64_t>(~word) + carry;
      word = static_cast<uint32_t>(sum);
      carry = sum >> 32;
    }
  }
  size_t top = words.size();
  while (top > 1 && words[top - 1] == 0) --top;
  char digits[9];
  std::snprintf(digits, sizeof digits, "%X", words[top - 1]);
  std::string text = (negative ? "-" : "") + std::string(digits);
  for (size_t i = top - 1; i-- > 0;) {
    std::snprintf(digits, sizeof digits, "%08X", words[i]);
    text += digits;
  }
  return text + " L" + std::to_string(value.length());
}

inline std::string Hex(const uint8_t* bytes, int32_t count) {
  std::string text;
  for (int32_t i = 0; i < count; ++i) {
    text += {"0123456789abcdef"[bytes[i] >> 4], "0123456789abcdef"[bytes[i] & 15]};
  }
  return text;
}

}  // namespace vsm

#endif  // VSM_TESTS_BIGINT_BIG_NUMBER_TEXT_H_
