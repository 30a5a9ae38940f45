// Construction, assignment, comparison, shifts and the conversions to bytes and text.
#include "bigint/big_integer.h"

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <ostream>

namespace vsm {

namespace {

constexpr int32_t kMaxBytes = CBigInteger::kMaxLength * 4;

// The value of a digit character after upper-casing, or -1.
int DigitValue(char c) {
  if (c >= '0' && c <= '9') return c - '0';
  if (c >= 'A' && c <= 'Z') return c - 'A' + 10;
  return -1;
}

int32_t TrimmedLength(const uint32_t* words, int32_t length) {
  while (length > 1 && words[length - 1] == 0) --length;
  return length;
}

int TopBitPosition(uint32_t word) { return word == 0 ? 0 : 32 - __builtin_clz(word); }

}  // namespace

CBigInteger::CBigInteger() : length_(1) { std::memset(data_, 0, sizeof data_); }

CBigInteger::CBigInteger(int64_t value) : CBigInteger() {
  int32_t count = 0;
  while (value != 0 && count < kMaxLength) {
    data_[count++] = static_cast<uint32_t>(value);
    value >>= 32;  // keeps the sign, so a negative value never reaches 0
  }
  length_ = std::max(count, 1);
}

CBigInteger::CBigInteger(uint64_t value) : CBigInteger() {
  data_[0] = static_cast<uint32_t>(value);
  if ((value >> 32) != 0) {
    data_[1] = static_cast<uint32_t>(value >> 32);
    length_ = 2;
  }
}

CBigInteger::CBigInteger(const CBigInteger& other) { CopyFrom(other); }

CBigInteger::CBigInteger(char* text, int32_t radix) : CBigInteger() {
  if (text == nullptr) return;
  const size_t size = std::strlen(text);
  for (size_t i = 0; i < size; ++i) {
    if (text[i] >= 'a' && text[i] <= 'z') text[i] = static_cast<char>(text[i] - 'a' + 'A');
  }
  const size_t first = size > 0 && text[0] == '-' ? 1 : 0;
  // value += digit * multiplier, then multiplier *= radix, from the last digit up. While the
  // multiplier stays below 1022 words nothing can reach the sign word (value < multiplier), so
  // both steps run in place on the words and give the values and minimal lengths the operators
  // would; past that the operators themselves take over for good, with their wrap-around.
  CBigInteger multiplier(1);
  bool growsInPlace = true;
  for (size_t i = size; i-- > first;) {
    const int digit = DigitValue(text[i]);
    if (digit < 0 || digit >= radix) continue;
    growsInPlace = growsInPlace && multiplier.length_ < kMaxLength - 2;
    if (growsInPlace) {
      uint64_t carry = 0;
      int32_t k = 0;
      for (; k < multiplier.length_; ++k) {
        const uint64_t sum = static_cast<uint64_t>(multiplier.data_[k]) * digit + data_[k] + carry;
        data_[k] = static_cast<uint32_t>(sum);
        carry = sum >> 32;
      }
      for (; carry != 0; ++k) {
        const uint64_t sum = static_cast<uint64_t>(data_[k]) + carry;
        data_[k] = static_cast<uint32_t>(sum);
        carry = sum >> 32;
      }
      length_ = TrimmedLength(data_, std::max({length_, k, multiplier.length_}));
    } else {
      CopyFrom(*this + CBigInteger(digit) * multiplier);
    }
    if (i == first) break;
    if (growsInPlace) {
      uint64_t carry = 0;
      for (int32_t k = 0; k < multiplier.length_; ++k) {
        const uint64_t product = static_cast<uint64_t>(multiplier.data_[k]) * radix + carry;
        multiplier.data_[k] = static_cast<uint32_t>(product);
        carry = product >> 32;
      }
      if (carry != 0) multiplier.data_[multiplier.length_++] = static_cast<uint32_t>(carry);
      multiplier.length_ = TrimmedLength(multiplier.data_, multiplier.length_);
    } else {
      multiplier.CopyFrom(multiplier * CBigInteger(radix));
    }
  }
  if (first == 1) CopyFrom(-*this);
}

CBigInteger::CBigInteger(const uint8_t* bytes, int32_t size) : CBigInteger() {
  if (bytes == nullptr || size <= 0) return;
  if (size > kMaxBytes) {
    bytes += size - kMaxBytes;
    size = kMaxBytes;
  }
  const int32_t whole = size / 4;
  const int32_t rest = size % 4;
  for (int32_t i = 0; i < whole; ++i) {
    const uint8_t* p = bytes + size - 4 * (i + 1);
    data_[i] = static_cast<uint32_t>(p[0]) << 24 | static_cast<uint32_t>(p[1]) << 16 |
               static_cast<uint32_t>(p[2]) << 8 | p[3];
  }
  if (rest != 0) {
    uint32_t word = 0;
    for (int32_t j = 0; j < rest; ++j) word = word << 8 | bytes[j];
    data_[whole] = word;
  }
  length_ = whole + (rest != 0 ? 1 : 0);
  Trim();
}

CBigInteger::CBigInteger(const uint32_t* words, int32_t count) : CBigInteger() {
  if (words == nullptr || count <= 0) return;
  if (count > kMaxLength) {
    words += count - kMaxLength;
    count = kMaxLength;
  }
  for (int32_t i = 0; i < count; ++i) data_[i] = words[count - 1 - i];
  length_ = count;
  Trim();
}

CBigInteger CBigInteger::operator=(const CBigInteger& other) {
  if (this != &other) CopyFrom(other);
  return *this;
}

void CBigInteger::CopyFrom(const CBigInteger& other) {
  length_ = other.length_;
  std::memcpy(data_, other.data_, sizeof data_);
}

void CBigInteger::Trim() { length_ = TrimmedLength(data_, length_); }

bool CBigInteger::IsMostNegative() const {
  if (data_[kMaxLength - 1] != 0x80000000u) return false;
  for (int32_t i = 0; i < kMaxLength - 1; ++i) {
    if (data_[i] != 0) return false;
  }
  return true;
}

CBigInteger CBigInteger::PowerOfWordBase(int32_t index) {
  CBigInteger power;
  if (index >= 0 && index < kMaxLength) {
    power.data_[index] = 1;
    power.length_ = index + 1;
  }
  return power;
}

bool CBigInteger::operator>(const CBigInteger& right) const {
  if (IsNegative() != right.IsNegative()) return !IsNegative();
  for (int32_t i = std::max(length_, right.length_) - 1; i >= 0; --i) {
    if (data_[i] != right.data_[i]) return data_[i] > right.data_[i];
  }
  return false;
}

bool CBigInteger::operator<(const CBigInteger& right) const {
  if (IsNegative() != right.IsNegative()) return IsNegative();
  for (int32_t i = std::max(length_, right.length_) - 1; i >= 0; --i) {
    if (data_[i] != right.data_[i]) return data_[i] < right.data_[i];
  }
  return false;
}

bool CBigInteger::operator==(const CBigInteger& right) const {
  return length_ == right.length_ &&
         std::memcmp(data_, right.data_, sizeof(uint32_t) * static_cast<size_t>(length_)) == 0;
}

bool CBigInteger::operator!=(const CBigInteger& right) const { return !(*this == right); }

int32_t CBigInteger::BitCount() {
  Trim();
  return 32 * (length_ - 1) + TopBitPosition(data_[length_ - 1]);
}

// Equivalent to shifting by at most 32 bits at a time, growing by a word whenever a carry is
// left and `count` allows: the result holds the low words of (value << bits), as many as the
// shifted value needs, up to `count`.
int32_t CBigInteger::ShiftLeftWords(uint32_t* words, int32_t count, int32_t bits) {
  if (count <= 0) return count;
  const int32_t length = TrimmedLength(words, count);
  if (bits <= 0 || (length == 1 && words[0] == 0)) return length;
  const int64_t wordShift = bits / 32;
  const int bitShift = bits % 32;
  const int64_t needed =
      (32 * static_cast<int64_t>(length - 1) + TopBitPosition(words[length - 1]) + bits + 31) / 32;
  const int32_t newLength = static_cast<int32_t>(std::min<int64_t>(needed, count));
  auto source = [&](int64_t index) -> uint32_t {
    return index >= 0 && index < length ? words[index] : 0;
  };
  for (int32_t i = newLength - 1; i >= 0; --i) {
    const int64_t from = i - wordShift;
    words[i] = bitShift == 0 ? source(from)
                             : source(from) << bitShift | source(from - 1) >> (32 - bitShift);
  }
  return TrimmedLength(words, newLength);
}

int32_t CBigInteger::ShiftRightWords(uint32_t* words, int32_t count, int32_t bits) {
  if (count <= 0) return count;
  const int32_t length = TrimmedLength(words, count);
  if (bits <= 0) return length;
  const int64_t wordShift = bits / 32;
  const int bitShift = bits % 32;
  auto source = [&](int64_t index) -> uint32_t { return index < length ? words[index] : 0; };
  for (int32_t i = 0; i < length; ++i) {
    const int64_t from = i + wordShift;
    words[i] = bitShift == 0 ? source(from)
                             : source(from) >> bitShift | source(from + 1) << (32 - bitShift);
  }
  return TrimmedLength(words, length);
}

CBigInteger CBigInteger::operator<<(int32_t bits) const {
  CBigInteger result(*this);
  result.length_ = ShiftLeftWords(result.data_, kMaxLength, bits);
  return result;
}

uint8_t* CBigInteger::GetBytes() const {
  uint8_t* bytes = new uint8_t[static_cast<size_t>(length_) * 4];
  GetBytes(bytes, length_ * 4);
  return bytes;
}

int32_t CBigInteger::GetBytes(uint8_t* target, int32_t size) const {
  const int32_t count = length_ * 4;
  if (target == nullptr || count > size) return -1;
  std::memset(target, 0, static_cast<size_t>(size));
  for (int32_t i = 0; i < length_; ++i) {
    const uint32_t word = data_[length_ - 1 - i];
    target[4 * i] = static_cast<uint8_t>(word >> 24);
    target[4 * i + 1] = static_cast<uint8_t>(word >> 16);
    target[4 * i + 2] = static_cast<uint8_t>(word >> 8);
    target[4 * i + 3] = static_cast<uint8_t>(word);
  }
  return count;
}

int32_t CBigInteger::ExportMinimal(uint8_t* target, int32_t size) {
  if (target != nullptr && size > 0) std::memset(target, 0, static_cast<size_t>(size));
  const int32_t count = (BitCount() + 7) / 8;
  if (target == nullptr || count > size) return count;
  for (int32_t j = 0; j < count; ++j) {
    const int32_t fromBottom = count - 1 - j;
    target[j] = static_cast<uint8_t>(data_[fromBottom / 4] >> (8 * (fromBottom % 4)));
  }
  return count;
}

std::string CBigInteger::ToHexString() const {
  std::string text;
  char word[9];
  if (data_[length_ - 1] != 0) {
    std::snprintf(word, sizeof word, "%X", data_[length_ - 1]);
    text = word;
  }
  text.reserve(text.size() + 8 * static_cast<size_t>(length_ - 1));
  for (int32_t i = length_ - 2; i >= 0; --i) {
    std::snprintf(word, sizeof word, "%08X", data_[i]);
    text += word;
  }
  return text;
}

std::ostream& operator<<(std::ostream& out, const CBigInteger& value) {
  const std::ios_base::fmtflags flags = out.flags();
  out << std::hex << std::nouppercase;
  for (int32_t i = value.length() - 1; i >= 0; --i) out << value.data()[i];
  out.flags(flags);
  return out;
}

}  // namespace vsm
