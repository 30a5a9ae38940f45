#include "bigint/modular_power.h"

#include <algorithm>
#include <utility>

namespace vsm {

namespace {

using Limb = uint64_t;
using Wide = unsigned __int128;

int ExponentBits(const std::vector<uint32_t>& exponent) {
  for (int i = static_cast<int>(exponent.size()) - 1; i >= 0; --i) {
    if (exponent[i] != 0) return 32 * i + 32 - __builtin_clz(exponent[i]);
  }
  return 0;
}

int ExponentBit(const std::vector<uint32_t>& exponent, int bit) {
  return exponent[bit / 32] >> (bit % 32) & 1;
}

// Window widths that keep the table small against the squarings it saves.
int WindowBits(int exponentBits) {
  if (exponentBits > 671) return 6;
  if (exponentBits > 239) return 5;
  if (exponentBits > 79) return 4;
  if (exponentBits > 23) return 3;
  return 1;
}

// t[0..n) += a[0..n) * m; gives the carry out of t[n - 1].
inline Limb MultiplyAddRow(Limb* __restrict t, const Limb* __restrict a, size_t n, Limb m) {
  Limb carry = 0;
#pragma GCC unroll 4
  for (size_t j = 0; j < n; ++j) {
    const Wide sum = static_cast<Wide>(a[j]) * m + t[j] + carry;
    t[j] = static_cast<Limb>(sum);
    carry = static_cast<Limb>(sum >> 64);
  }
  return carry;
}

// Left-to-right sliding windows over the odd powers base^1, base^3, ... The field gives
// Multiply(a, b, out) and Square(a, out) on values of field.size() limbs; out may alias an input.
template <typename Field, typename Value>
Value SlidingWindowPower(Field& field, const Value& base, const std::vector<uint32_t>& exponent) {
  const int bits = ExponentBits(exponent);
  const int window = WindowBits(bits);
  std::vector<Value> odd(size_t{1} << (window - 1), base);
  if (odd.size() > 1) {
    Value square(base.size());
    field.Square(base, square);
    for (size_t i = 1; i < odd.size(); ++i) field.Multiply(odd[i - 1], square, odd[i]);
  }
  Value result;
  for (int top = bits - 1; top >= 0;) {
    if (ExponentBit(exponent, top) == 0) {
      field.Square(result, result);
      --top;
      continue;
    }
    int bottom = std::max(top - window + 1, 0);
    while (ExponentBit(exponent, bottom) == 0) ++bottom;
    size_t value = 0;
    for (int bit = top; bit >= bottom; --bit) value = value << 1 | ExponentBit(exponent, bit);
    if (result.empty()) {
      result = odd[value >> 1];
    } else {
      for (int bit = top; bit >= bottom; --bit) field.Square(result, result);
      field.Multiply(result, odd[value >> 1], result);
    }
    top = bottom - 1;
  }
  return result;
}

// Multiplication modulo an odd n in Montgomery form (a * b / 2^(64 * limbs) mod n): the full
// product (a square takes each cross product once and doubles the sum), then word-by-word
// Montgomery reduction; values stay fully reduced below n.
class MontgomeryField {
 public:
  explicit MontgomeryField(std::vector<Limb> modulus)
      : modulus_(std::move(modulus)), limbs_(modulus_.size()), product_(2 * limbs_ + 1) {
    // Newton's iteration doubles the correct low bits of n^-1 from the 3 that n itself gives.
    Limb inverse = modulus_[0];
    for (int i = 0; i < 5; ++i) inverse *= 2 - modulus_[0] * inverse;
    negativeInverse_ = 0 - inverse;
  }

  size_t size() const { return limbs_; }

  void Multiply(const std::vector<Limb>& a, const std::vector<Limb>& b, std::vector<Limb>& out) {
    Limb* t = product_.data();
    const size_t n = limbs_;
    std::fill(product_.begin(), product_.end(), 0);
    for (size_t i = 0; i < n; ++i) t[i + n] = MultiplyAddRow(t + i, b.data(), n, a[i]);
    Reduce(out);
  }

  void Square(const std::vector<Limb>& a, std::vector<Limb>& out) {
    Limb* t = product_.data();
    const size_t n = limbs_;
    std::fill(product_.begin(), product_.end(), 0);
    for (size_t i = 0; i + 1 < n; ++i) {
      t[i + n] = MultiplyAddRow(t + 2 * i + 1, a.data() + i + 1, n - i - 1, a[i]);
    }
    Limb top = 0;  // doubling the cross products, then adding the squares
    for (size_t k = 0; k < 2 * n; ++k) {
      const Limb doubled = t[k] << 1 | top;
      top = t[k] >> 63;
      t[k] = doubled;
    }
    Limb carry = 0;
    for (size_t i = 0; i < n; ++i) {
      const Wide square = static_cast<Wide>(a[i]) * a[i];
      Wide sum = static_cast<Wide>(t[2 * i]) + static_cast<Limb>(square) + carry;
      t[2 * i] = static_cast<Limb>(sum);
      sum = static_cast<Wide>(t[2 * i + 1]) + static_cast<Limb>(square >> 64) + (sum >> 64);
      t[2 * i + 1] = static_cast<Limb>(sum);
      carry = static_cast<Limb>(sum >> 64);
    }
    Reduce(out);
  }

 private:
  // product_ (2 * limbs words, below n * 2^(64 * limbs)) times 2^(-64 * limbs) mod n.
  void Reduce(std::vector<Limb>& out) {
    Limb* t = product_.data();
    const Limb* n = modulus_.data();
    const size_t size = limbs_;
    Limb extra = 0;  // the carry out of word i + size, owed to the next row's top word
    for (size_t i = 0; i < size; ++i) {
      const Limb carry = MultiplyAddRow(t + i, n, size, t[i] * negativeInverse_);
      const Wide top = static_cast<Wide>(t[i + size]) + carry + extra;
      t[i + size] = static_cast<Limb>(top);
      extra = static_cast<Limb>(top >> 64);
    }
    t[2 * size] = extra;
    Limb* r = t + size;  // below 2n
    if (r[size] != 0 || !Below(r, n)) {
      Limb borrow = 0;
      for (size_t j = 0; j < size; ++j) {
        const Wide difference = static_cast<Wide>(r[j]) - n[j] - borrow;
        r[j] = static_cast<Limb>(difference);
        borrow = static_cast<Limb>(difference >> 64) & 1;
      }
    }
    out.assign(r, r + size);
  }

  bool Below(const Limb* r, const Limb* n) const {
    for (size_t j = limbs_; j-- > 0;) {
      if (r[j] != n[j]) return r[j] < n[j];
    }
    return false;
  }

  std::vector<Limb> modulus_;
  size_t limbs_;
  std::vector<Limb> product_;
  Limb negativeInverse_;
};

std::vector<Limb> ToLimbs(const std::vector<uint32_t>& words, size_t limbs) {
  std::vector<Limb> result(limbs, 0);
  for (size_t i = 0; i < words.size() && i / 2 < limbs; ++i) {
    result[i / 2] |= static_cast<Limb>(words[i]) << (32 * (i % 2));
  }
  return result;
}

// Multiplication modulo any n of k words by Barrett's method with b = 2^32: the quotient is
// estimated from the top of the product, and at most two subtractions remain.
class BarrettField {
 public:
  BarrettField(const std::vector<uint32_t>& modulus, const std::vector<uint32_t>& constant)
      : modulus_(modulus),
        constant_(constant),
        k_(modulus.size()),
        product_(2 * k_),
        estimate_(k_ + 1 + constant.size()),
        rest_(k_ + 1) {}

  size_t size() const { return k_; }

  void Multiply(const std::vector<uint32_t>& a, const std::vector<uint32_t>& b,
                std::vector<uint32_t>& out) {
    MultiplyInto(a.data(), k_, b.data(), k_, product_.data(), 2 * k_);
    // q = floor(floor(x / b^(k-1)) * constant / b^(k+1)), then r = x - q * n mod b^(k+1).
    MultiplyInto(product_.data() + k_ - 1, k_ + 1, constant_.data(), constant_.size(),
                 estimate_.data(), estimate_.size());
    const uint32_t* q = estimate_.data() + k_ + 1;
    const size_t qLength = estimate_.size() - (k_ + 1);
    std::fill(rest_.begin(), rest_.end(), 0);
    for (size_t i = 0; i < qLength && i <= k_; ++i) {
      uint64_t carry = 0;
      size_t j = 0;
      for (; j < k_ && i + j <= k_; ++j) {
        const uint64_t sum = static_cast<uint64_t>(q[i]) * modulus_[j] + rest_[i + j] + carry;
        rest_[i + j] = static_cast<uint32_t>(sum);
        carry = sum >> 32;
      }
      if (i + j <= k_) rest_[i + j] += static_cast<uint32_t>(carry);
    }
    uint64_t borrow = 0;
    for (size_t j = 0; j <= k_; ++j) {
      const uint64_t difference = static_cast<uint64_t>(product_[j]) - rest_[j] - borrow;
      rest_[j] = static_cast<uint32_t>(difference);
      borrow = (difference >> 32) & 1;
    }
    while (!Below(rest_, modulus_)) {
      borrow = 0;
      for (size_t j = 0; j <= k_; ++j) {
        const uint64_t difference =
            static_cast<uint64_t>(rest_[j]) - (j < k_ ? modulus_[j] : 0) - borrow;
        rest_[j] = static_cast<uint32_t>(difference);
        borrow = (difference >> 32) & 1;
      }
    }
    out.assign(rest_.begin(), rest_.begin() + k_);
  }

  void Square(const std::vector<uint32_t>& a, std::vector<uint32_t>& out) { Multiply(a, a, out); }

 private:
  static void MultiplyInto(const uint32_t* a, size_t aLength, const uint32_t* b, size_t bLength,
                           uint32_t* out, size_t outLength) {
    std::fill(out, out + outLength, 0);
    for (size_t i = 0; i < aLength; ++i) {
      uint64_t carry = 0;
      for (size_t j = 0; j < bLength; ++j) {
        const uint64_t sum = static_cast<uint64_t>(a[i]) * b[j] + out[i + j] + carry;
        out[i + j] = static_cast<uint32_t>(sum);
        carry = sum >> 32;
      }
      if (i + bLength < outLength) out[i + bLength] = static_cast<uint32_t>(carry);
    }
  }

  // rest_ (k + 1 words) below n (k words).
  bool Below(const std::vector<uint32_t>& rest, const std::vector<uint32_t>& n) const {
    if (rest[k_] != 0) return false;
    for (size_t j = k_; j-- > 0;) {
      if (rest[j] != n[j]) return rest[j] < n[j];
    }
    return false;
  }

  std::vector<uint32_t> modulus_;
  std::vector<uint32_t> constant_;
  size_t k_;
  std::vector<uint32_t> product_;
  std::vector<uint32_t> estimate_;
  std::vector<uint32_t> rest_;
};

}  // namespace

std::vector<uint32_t> MontgomeryPower(const std::vector<uint32_t>& modulus,
                                      const std::vector<uint32_t>& lifted,
                                      const std::vector<uint32_t>& exponent) {
  const size_t limbs = (modulus.size() + 1) / 2;
  MontgomeryField field(ToLimbs(modulus, limbs));
  std::vector<Limb> power = SlidingWindowPower(field, ToLimbs(lifted, limbs), exponent);
  std::vector<Limb> one(limbs, 0);
  one[0] = 1;
  field.Multiply(power, one, power);  // leaves Montgomery form
  std::vector<uint32_t> result(modulus.size());
  for (size_t i = 0; i < result.size(); ++i) {
    result[i] = static_cast<uint32_t>(power[i / 2] >> (32 * (i % 2)));
  }
  return result;
}

std::vector<uint32_t> BarrettPower(const std::vector<uint32_t>& modulus,
                                   const std::vector<uint32_t>& constant,
                                   const std::vector<uint32_t>& base,
                                   const std::vector<uint32_t>& exponent) {
  BarrettField field(modulus, constant);
  return SlidingWindowPower(field, base, exponent);
}

}  // namespace vsm
