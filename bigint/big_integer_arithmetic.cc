// Negation, the four operations and the remainder. Signs are handled by reducing every case to
// operations on non-negative values; the `length` each case leaves is part of the result.
#include <algorithm>
#include <cstring>

#include "bigint/big_integer.h"

namespace vsm {

CBigInteger CBigInteger::operator-() const {
  if (IsZeroWord()) return *this;
  CBigInteger result(*this);
  uint64_t carry = 1;
  for (int32_t i = 0; i < kMaxLength; ++i) {
    const uint64_t word = static_cast<uint64_t>(~data_[i]) + carry;
    result.data_[i] = static_cast<uint32_t>(word);
    carry = word >> 32;
  }
  // Only the most negative value (and a zero of more than one word) keeps its sign bit.
  if (result.IsNegative() == IsNegative()) result.length_ = kMaxLength;
  result.Trim();
  return result;
}

CBigInteger CBigInteger::AddMagnitudes(const CBigInteger& a, const CBigInteger& b) {
  CBigInteger sum;
  int32_t length = std::max(a.length_, b.length_);
  uint64_t carry = 0;
  for (int32_t i = 0; i < length; ++i) {
    const uint64_t word = static_cast<uint64_t>(a.data_[i]) + b.data_[i] + carry;
    sum.data_[i] = static_cast<uint32_t>(word);
    carry = word >> 32;
  }
  if (carry != 0 && length < kMaxLength) sum.data_[length++] = static_cast<uint32_t>(carry);
  sum.length_ = length;
  sum.Trim();
  return sum;
}

CBigInteger CBigInteger::SubtractMagnitudes(const CBigInteger& a, const CBigInteger& b) {
  CBigInteger difference;
  int32_t length = std::max(a.length_, b.length_);
  uint64_t borrow = 0;
  for (int32_t i = 0; i < length; ++i) {
    const uint64_t word = static_cast<uint64_t>(a.data_[i]) - b.data_[i] - borrow;
    difference.data_[i] = static_cast<uint32_t>(word);
    borrow = (word >> 32) & 1;
  }
  if (borrow != 0) {
    for (int32_t i = length; i < kMaxLength; ++i) difference.data_[i] = 0xFFFFFFFFu;
    length = kMaxLength;
  }
  difference.length_ = length;
  difference.Trim();
  return difference;
}

// The sign cases below turn a sum with the most negative value into the same sum again, so
// those sums are taken on the raw two's complement words instead.
CBigInteger CBigInteger::WrappingSum(const CBigInteger& a, const CBigInteger& b, bool subtract) {
  CBigInteger sum;
  uint64_t carry = subtract ? 1 : 0;
  for (int32_t i = 0; i < kMaxLength; ++i) {
    const uint32_t right = subtract ? ~b.data_[i] : b.data_[i];
    const uint64_t word = static_cast<uint64_t>(a.data_[i]) + right + carry;
    sum.data_[i] = static_cast<uint32_t>(word);
    carry = word >> 32;
  }
  sum.length_ = kMaxLength;
  sum.Trim();
  return sum;
}

CBigInteger CBigInteger::operator+(const CBigInteger& right) const {
  if (IsMostNegative() || right.IsMostNegative()) return WrappingSum(*this, right, false);
  const bool leftNegative = IsNegative();
  const bool rightNegative = right.IsNegative();
  if (!leftNegative && !rightNegative) return AddMagnitudes(*this, right);
  if (leftNegative && rightNegative) return -((-*this) + (-right));
  if (leftNegative) {
    const CBigInteger x = -*this;
    return x > right ? -(x - right) : right - x;
  }
  const CBigInteger y = -right;
  return *this > y ? *this - y : -(y - *this);
}

CBigInteger CBigInteger::operator-(const CBigInteger& right) const {
  if (IsMostNegative() || right.IsMostNegative()) return WrappingSum(*this, right, true);
  const bool leftNegative = IsNegative();
  const bool rightNegative = right.IsNegative();
  if (!leftNegative && !rightNegative) {
    return *this < right ? -(right - *this) : SubtractMagnitudes(*this, right);
  }
  if (!leftNegative) return *this + (-right);
  if (!rightNegative) return -((-*this) + right);
  const CBigInteger x = -*this;
  const CBigInteger y = -right;
  return x > y ? -(x - y) : y - x;
}

CBigInteger CBigInteger::operator+=(const CBigInteger& right) {
  CopyFrom(*this + right);
  return *this;
}

CBigInteger CBigInteger::operator-=(const CBigInteger& right) {
  CopyFrom(*this - right);
  return *this;
}

CBigInteger CBigInteger::operator*(const CBigInteger& right) const {
  const bool leftNegative = IsNegative();
  const bool rightNegative = right.IsNegative();
  const CBigInteger a = leftNegative ? -*this : *this;
  const CBigInteger b = rightNegative ? -right : right;
  CBigInteger product;
  for (int32_t i = 0; i < a.length_; ++i) {
    if (a.data_[i] == 0) continue;
    uint64_t carry = 0;
    const int32_t end = std::min(b.length_, kMaxLength - i);
    for (int32_t j = 0; j < end; ++j) {
      const uint64_t word =
          static_cast<uint64_t>(a.data_[i]) * b.data_[j] + product.data_[i + j] + carry;
      product.data_[i + j] = static_cast<uint32_t>(word);
      carry = word >> 32;
    }
    if (i + b.length_ < kMaxLength) product.data_[i + b.length_] = static_cast<uint32_t>(carry);
  }
  product.length_ = std::min(a.length_ + b.length_, kMaxLength);
  product.Trim();
  if (!product.IsNegative()) return leftNegative == rightNegative ? product : -product;
  if (leftNegative == rightNegative || product.IsMostNegative()) return product;
  return -product;
}

CBigInteger CBigInteger::operator/(const CBigInteger& right) const {
  CBigInteger quotient;
  Divide(*this, right, true, &quotient, nullptr);
  return quotient;
}

CBigInteger CBigInteger::operator%(const CBigInteger& right) const {
  CBigInteger remainder;
  Divide(*this, right, false, nullptr, &remainder);
  return remainder;
}

void CBigInteger::Divide(const CBigInteger& left, const CBigInteger& right, bool wantQuotient,
                         CBigInteger* quotient, CBigInteger* remainder) {
  const bool leftNegative = left.IsNegative();
  const bool rightNegative = right.IsNegative();
  CBigInteger dividend = leftNegative ? -left : left;
  CBigInteger divisor = rightNegative ? -right : right;
  dividend.Trim();
  divisor.Trim();
  CBigInteger q;
  CBigInteger r;
  if (dividend < divisor) {
    if (wantQuotient) quotient->CopyFrom(CBigInteger());
    if (!wantQuotient) remainder->CopyFrom(left);
    return;
  }
  if (divisor.length_ == 1) {
    DivideByWord(dividend, divisor.data_[0], &q, &r);
  } else {
    DivideByWords(dividend, divisor, &q, &r);
  }
  if (wantQuotient) quotient->CopyFrom(leftNegative != rightNegative ? -q : q);
  if (!wantQuotient) remainder->CopyFrom(leftNegative ? -r : r);
}

// Word by word from the top, with the running remainder in the word above. A zero divisor gives
// 0 for every word, quotient and remainder alike.
void CBigInteger::DivideByWord(const CBigInteger& dividend, uint32_t divisor, CBigInteger* quotient,
                               CBigInteger* remainder) {
  CBigInteger& rest = *remainder;
  rest.CopyFrom(dividend);
  rest.Trim();
  uint32_t words[kMaxLength];
  int32_t count = 0;
  int32_t position = rest.length_ - 1;
  const uint64_t top = rest.data_[position];
  if (top >= divisor) {
    words[count++] = divisor == 0 ? 0 : static_cast<uint32_t>(top / divisor);
    rest.data_[position] = divisor == 0 ? 0 : static_cast<uint32_t>(top % divisor);
  }
  for (--position; position >= 0; --position) {
    const uint64_t part =
        static_cast<uint64_t>(rest.data_[position + 1]) << 32 | rest.data_[position];
    words[count++] = divisor == 0 ? 0 : static_cast<uint32_t>(part / divisor);
    rest.data_[position + 1] = 0;
    rest.data_[position] = divisor == 0 ? 0 : static_cast<uint32_t>(part % divisor);
  }
  CBigInteger& result = *quotient;
  for (int32_t j = 0; j < count; ++j) result.data_[j] = words[count - 1 - j];
  result.length_ = std::max(count, 1);
  result.Trim();
  rest.Trim();
}

// Long division with a normalised divisor: each quotient word is estimated from the top two
// words of the running remainder, corrected against the divisor's second word, and settled by
// multiplying back. The settling loop never needs more than two rounds for a normalised divisor;
// the bound only matters for a divisor that normalising pushes into the sign bit (1024 words),
// whose results have no meaning anyway.
void CBigInteger::DivideByWords(const CBigInteger& dividend, const CBigInteger& divisor,
                                CBigInteger* quotient, CBigInteger* remainder) {
  const int32_t workLength = dividend.length_ + 1;
  uint32_t work[kMaxLength + 1];
  std::memcpy(work, dividend.data_, sizeof(uint32_t) * static_cast<size_t>(dividend.length_));
  work[dividend.length_] = 0;
  const int shift = __builtin_clz(divisor.data_[divisor.length_ - 1]);
  ShiftLeftWords(work, workLength, shift);
  const CBigInteger shifted = divisor << shift;
  const int32_t n = divisor.length_;
  const uint64_t first = shifted.data_[n - 1];
  const uint64_t second = shifted.data_[n - 2];
  uint32_t words[kMaxLength + 1];
  int32_t count = 0;
  for (int32_t top = workLength - 1; top >= n; --top) {
    const uint64_t part = static_cast<uint64_t>(work[top]) << 32 | work[top - 1];
    uint64_t q = part / first;
    uint64_t r = part % first;
    while (q == 0x100000000ull || q * second > ((r << 32) + work[top - 2])) {
      --q;
      r += first;
      if (r >= 0x100000000ull) break;
    }
    CBigInteger span;
    span.length_ = std::min(n + 1, kMaxLength);
    for (int32_t h = 0; h < span.length_; ++h) span.data_[h] = work[top - n + h];
    span.Trim();
    CBigInteger product = shifted * CBigInteger(q);
    for (int round = 0; round < 2 && product > span; ++round) {
      --q;
      product -= shifted;
    }
    const CBigInteger difference = span - product;
    for (int32_t h = 0; h <= n; ++h) {
      work[top - n + h] = h < kMaxLength ? difference.data_[h] : 0;
    }
    words[count++] = static_cast<uint32_t>(q);
  }
  CBigInteger& result = *quotient;
  const int32_t kept = std::min(count, kMaxLength);
  for (int32_t j = 0; j < kept; ++j) result.data_[j] = words[count - 1 - j];
  result.length_ = std::max(kept, 1);
  result.Trim();
  const int32_t restLength = std::min(ShiftRightWords(work, workLength, shift), kMaxLength);
  CBigInteger& rest = *remainder;
  std::memcpy(rest.data_, work, sizeof(uint32_t) * static_cast<size_t>(restLength));
  rest.length_ = restLength;
  rest.Trim();
}

}  // namespace vsm
