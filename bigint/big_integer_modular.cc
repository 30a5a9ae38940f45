// Barrett reduction, the modular power and the Euclidean functions.
//
// ModPow has two walks over the exponent. The Barrett walk follows the method step by step: the
// exponent's bits from the bottom, one Reduce per product, an early end once the running square
// is 1. For a base below a non-zero modulus of up to 511 words (both without words above their
// length) its result is exactly base^exponent mod modulus with a minimal `length`: every
// product stays below b^(2k), where Barrett's bound holds. ModPow computes that number by the
// faster method of modular_power.h instead and keeps the Barrett walk for the inputs outside
// that range, whose results it alone defines.
#include <algorithm>
#include <vector>

#include "bigint/big_integer.h"
#include "bigint/modular_power.h"

namespace vsm {

namespace {

// A Barrett constant needs word 2k of the numbers; 2k stays below 1024.
constexpr int32_t kModPowMaxModulusWords = 511;

}  // namespace

CBigInteger CBigInteger::Reduce(const CBigInteger& x, const CBigInteger& n,
                                const CBigInteger& constant) {
  const int32_t k = n.length_;
  CBigInteger q1;
  if (x.length_ > k - 1) {
    q1.length_ = x.length_ - (k - 1);
    std::copy(x.data_ + (k - 1), x.data_ + x.length_, q1.data_);
    q1.Trim();
  }
  const CBigInteger q2 = q1 * constant;
  CBigInteger q3;
  if (q2.length_ > k + 1) {
    q3.length_ = q2.length_ - (k + 1);
    std::copy(q2.data_ + (k + 1), q2.data_ + q2.length_, q3.data_);
    q3.Trim();
  }
  const int32_t low = std::min(k + 1, kMaxLength);
  CBigInteger r1;
  std::copy(x.data_, x.data_ + low, r1.data_);
  r1.length_ = low;
  r1.Trim();
  CBigInteger r2;
  for (int32_t i = 0; i < q3.length_ && i < low; ++i) {
    uint64_t carry = 0;
    int32_t j = 0;
    for (; j < n.length_ && i + j < low; ++j) {
      const uint64_t word =
          static_cast<uint64_t>(q3.data_[i]) * n.data_[j] + r2.data_[i + j] + carry;
      r2.data_[i + j] = static_cast<uint32_t>(word);
      carry = word >> 32;
    }
    if (i + j < low) r2.data_[i + j] = static_cast<uint32_t>(carry);
  }
  r2.length_ = low;
  r2.Trim();
  CBigInteger r = r1 - r2;
  if (r.IsNegative()) r += PowerOfWordBase(k + 1);
  // Subtracting a zero or negative n would never end. For the inputs Barrett is made for, two
  // subtractions are enough; past three, one division gives what the rest of them would.
  if (n.IsNegative() || n.IsZeroWord()) return r;
  for (int round = 0; r == n || r > n; ++round) {
    if (round == 3) return r % n;
    r -= n;
  }
  return r;
}

bool CBigInteger::StartModPow(const CBigInteger& exponent, const CBigInteger& modulus,
                              CBigInteger* temp, CBigInteger* positiveModulus, bool* negativeBase,
                              CBigInteger* result) const {
  if (exponent.IsNegative()) {
    result->CopyFrom(CBigInteger());
    return true;
  }
  *negativeBase = IsNegative();
  temp->CopyFrom(*negativeBase ? (-*this) % modulus : *this % modulus);
  positiveModulus->CopyFrom(modulus.IsNegative() ? -modulus : modulus);
  if (positiveModulus->length_ > kModPowMaxModulusWords) {
    result->CopyFrom(CBigInteger());
    return true;
  }
  return false;
}

CBigInteger CBigInteger::BarrettWalk(CBigInteger temp, const CBigInteger& exponent,
                                     const CBigInteger& modulus) {
  const CBigInteger constant = PowerOfWordBase(2 * modulus.length_) / modulus;
  CBigInteger bits = exponent;
  const int32_t bitCount = bits.BitCount();
  CBigInteger result(1);
  for (int32_t bit = 0; bit < bitCount; ++bit) {
    if ((exponent.data_[bit / 32] >> (bit % 32) & 1) != 0) {
      result.CopyFrom(Reduce(result * temp, modulus, constant));
    }
    temp.CopyFrom(Reduce(temp * temp, modulus, constant));
    if (temp.length_ == 1 && temp.data_[0] == 1) break;  // further squares change nothing
  }
  return result;
}

CBigInteger CBigInteger::ModPowBarrett(const CBigInteger& exponent,
                                       const CBigInteger& modulus) const {
  CBigInteger temp;
  CBigInteger n;
  CBigInteger result;
  bool negativeBase = false;
  if (StartModPow(exponent, modulus, &temp, &n, &negativeBase, &result)) return result;
  result.CopyFrom(BarrettWalk(temp, exponent, n));
  if (negativeBase && (exponent.data_[0] & 1) != 0) return -result;
  return result;
}

CBigInteger CBigInteger::ModPow(const CBigInteger& exponent, const CBigInteger& modulus) const {
  CBigInteger temp;
  CBigInteger n;
  CBigInteger result;
  bool negativeBase = false;
  if (StartModPow(exponent, modulus, &temp, &n, &negativeBase, &result)) return result;
  CBigInteger bits = exponent;
  // A positive value made by negating a negative one can hold words above its `length`, which
  // the walk's word loops ignore; only values without such words take the fast method.
  const bool exact = !n.IsZeroWord() && !temp.IsNegative() && temp < n && !temp.HasWordsAbove() &&
                     !n.HasWordsAbove();
  if (!exact) {
    result.CopyFrom(BarrettWalk(temp, exponent, n));
  } else if (bits.BitCount() == 0) {
    result.CopyFrom(CBigInteger(1));
  } else {
    result.CopyFrom(FastPower(temp, exponent, n));
  }
  if (negativeBase && (exponent.data_[0] & 1) != 0) return -result;
  return result;
}

// base^exponent mod modulus by modular_power.h, for 0 <= base < modulus, 1 <= modulus < b^511
// and a non-zero exponent; the result has its minimal length.
CBigInteger CBigInteger::FastPower(const CBigInteger& base, const CBigInteger& exponent,
                                   const CBigInteger& modulus) {
  const int32_t k = modulus.length_;
  if (k == 1 && modulus.data_[0] == 1) return CBigInteger();
  CBigInteger bits = exponent;
  const std::vector<uint32_t> e(exponent.data_, exponent.data_ + (bits.BitCount() + 31) / 32);
  const std::vector<uint32_t> n(modulus.data_, modulus.data_ + k);
  std::vector<uint32_t> power;
  if ((modulus.data_[0] & 1) != 0) {
    // The base in Montgomery form, base * 2^(64 * limbs) mod n; it stays below 2^32736.
    const int32_t limbs = (k + 1) / 2;
    const CBigInteger lifted = (base << (64 * limbs)) % modulus;
    const std::vector<uint32_t> liftedWords(lifted.data_, lifted.data_ + k);
    power = MontgomeryPower(n, liftedWords, e);
  } else {
    const CBigInteger constant = PowerOfWordBase(2 * k) / modulus;
    const std::vector<uint32_t> constantWords(constant.data_, constant.data_ + constant.length_);
    const std::vector<uint32_t> baseWords(base.data_, base.data_ + k);
    power = BarrettPower(n, constantWords, baseWords, e);
  }
  CBigInteger result;
  std::copy(power.begin(), power.end(), result.data_);
  result.length_ = k;
  result.Trim();
  return result;
}

bool CBigInteger::HasWordsAbove() const {
  for (int32_t i = length_; i < kMaxLength; ++i) {
    if (data_[i] != 0) return true;
  }
  return false;
}

CBigInteger CBigInteger::ExtendedGcd(const CBigInteger& a, const CBigInteger& b, CBigInteger* x,
                                     CBigInteger* y) {
  CBigInteger lastX(1);
  CBigInteger lastY(0);
  CBigInteger curX(0);
  CBigInteger curY(1);
  CBigInteger u(a);
  CBigInteger v(b);
  const CBigInteger zero;
  // With the most negative value the remainders stop shrinking: it has no magnitude to divide by.
  while (!u.IsMostNegative() && !v.IsMostNegative() && u % v != zero) {
    const CBigInteger q = u / v;
    const CBigInteger nextX = lastX - q * curX;
    const CBigInteger nextY = lastY - q * curY;
    const CBigInteger nextV = u - q * v;
    lastX.CopyFrom(curX);
    lastY.CopyFrom(curY);
    u.CopyFrom(v);
    curX.CopyFrom(nextX);
    curY.CopyFrom(nextY);
    v.CopyFrom(nextV);
  }
  if (x != nullptr) x->CopyFrom(curX);
  if (y != nullptr) y->CopyFrom(curY);
  return v;
}

CBigInteger CBigInteger::Gcd(const CBigInteger& a, const CBigInteger& b) {
  return ExtendedGcd(a, b, nullptr, nullptr);
}

CBigInteger CBigInteger::ModInverse(const CBigInteger& a, const CBigInteger& modulus) {
  CBigInteger x;
  ExtendedGcd(a, modulus, &x, nullptr);
  return x.IsNegative() ? x + modulus : x;
}

}  // namespace vsm
