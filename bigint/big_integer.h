// CBigInteger: a signed integer of fixed width, 1024 words of 32 bits (32768 bits) in two's
// complement with the sign in the top bit of word 1023, made for modular exponentiation.
//
// Callers see two things: the value and `length`, the number of words in use. `length` is
// normally minimal (the top word in use is non-zero, or `length` is 1), but some ways of making a
// negative value leave it otherwise, and operator== compares `length` first. So CBigInteger(-1)
// (length 1024) and -CBigInteger(1) (length 1) hold the same words and compare unequal. Code
// elsewhere depends on these lengths (byte exports are `length * 4` bytes long); keep them.
//
// Nothing throws and nothing traps: results are cut to 1024 words, invalid digits are skipped,
// and a zero divisor gives 0 for both quotient and remainder, a number without meaning that the
// caller must avoid. The most negative value, -2^32767, has no positive counterpart: negating it
// gives itself, and sums and differences with it wrap in two's complement.
//
// Instances aren't shared between threads. The prime functions seed and draw from the C
// library's rand(), which is process-wide.
#ifndef VSM_BIGINT_BIG_INTEGER_H_
#define VSM_BIGINT_BIG_INTEGER_H_

#include <cstdint>
#include <iosfwd>
#include <string>

namespace vsm {

class CBigInteger {
 public:
  static constexpr int32_t kMaxLength = 1024;

  // Zero, `length` 1.
  CBigInteger();
  // Stores the low word and shifts right (keeping the sign) until the rest is 0 or all 1024 words
  // are written: a negative value fills all 1024 words, so its `length` is 1024.
  CBigInteger(int64_t value);
  // The words the value needs, at least one.
  CBigInteger(uint64_t value);
  CBigInteger(int value) : CBigInteger(static_cast<int64_t>(value)) {}
  CBigInteger(unsigned value) : CBigInteger(static_cast<uint64_t>(value)) {}
  CBigInteger(const CBigInteger& other);
  // Reads digits `0`-`9`, `A`-`Z` (10 to 35) from the last character to the first; a digit not
  // below `radix`, and any other character, is skipped. A leading `-` negates the result. The
  // caller's text is upper-cased in place.
  CBigInteger(char* text, int32_t radix);
  // Big-endian bytes: the last 4 make word 0; 1 to 3 bytes left over at the front make the top
  // word. Only a full 4096-byte input can be negative. A longer input keeps its last 4096 bytes;
  // a size of 0 or less gives zero.
  CBigInteger(const uint8_t* bytes, int32_t size);
  // `count` words, most significant first, trimmed. More than 1024 keep the last 1024; a count
  // of 0 or less gives zero.
  CBigInteger(const uint32_t* words, int32_t count);

  // Copies `length` and all 1024 words, then gives a copy of the result (not a reference).
  CBigInteger operator=(const CBigInteger& other);

  // Each operator gives a new value; `+=` and `-=` assign and give a copy.
  CBigInteger operator-() const;
  CBigInteger operator+(const CBigInteger& right) const;
  CBigInteger operator-(const CBigInteger& right) const;
  CBigInteger operator*(const CBigInteger& right) const;
  // Truncating division: the quotient rounds toward zero, the remainder takes the dividend's
  // sign (-7 / 2 is -3, -7 % 2 is -1). A dividend below the divisor in magnitude gives the
  // quotient 0 and the dividend itself, `length` and all, as the remainder.
  CBigInteger operator/(const CBigInteger& right) const;
  CBigInteger operator%(const CBigInteger& right) const;
  CBigInteger operator+=(const CBigInteger& right);
  CBigInteger operator-=(const CBigInteger& right);
  // Shifts a copy of all 1024 words (trimmed first, whatever `length` says); bits past word
  // 1023 fall off. A negative value thus shifts as two's complement and keeps `length` 1024.
  CBigInteger operator<<(int32_t bits) const;

  // Different signs decide at once; equal signs compare the words as unsigned numbers from the
  // larger `length` down.
  bool operator>(const CBigInteger& right) const;
  bool operator<(const CBigInteger& right) const;
  // Equal `length` and equal words up to it.
  bool operator==(const CBigInteger& right) const;
  bool operator!=(const CBigInteger& right) const;

  // Trims `length` in place, then gives 32 * (length - 1) plus the position of the top set bit
  // of the top word, counted from 1. Zero gives 0.
  int32_t BitCount();

  // this^exponent mod modulus. A negative exponent gives 0, an exponent of 0 gives 1 (whatever
  // the modulus). The base is reduced by its magnitude, and a negative base with an odd exponent
  // gives the negated result. A negative modulus counts by its magnitude. A modulus of 512 words
  // or more (above 16352 bits) is past the width the Barrett constant needs: the result is 0.
  // A zero modulus gives a number without meaning.
  CBigInteger ModPow(const CBigInteger& exponent, const CBigInteger& modulus) const;
  // The same, always by the word-for-word Barrett walk: one Reduce per bit of the exponent, each
  // with its own temporaries. ModPow gives exactly its values and `length`; tests compare them.
  CBigInteger ModPowBarrett(const CBigInteger& exponent, const CBigInteger& modulus) const;
  // Barrett reduction of x by n, with constant = b^(2k) / n for k = n.length and b = 2^32. Exact
  // for 0 <= x < b^(2k) and a positive n below 512 words; otherwise a number without meaning.
  static CBigInteger Reduce(const CBigInteger& x, const CBigInteger& n,
                            const CBigInteger& constant);

  // The extended Euclidean iteration on truncating division: gives the last non-zero remainder
  // (its sign follows the iteration; a zero b gives 0) and the coefficients of a and b. Either
  // pointer may be null. The most negative value ends the iteration where it appears.
  static CBigInteger ExtendedGcd(const CBigInteger& a, const CBigInteger& b, CBigInteger* x,
                                 CBigInteger* y);
  static CBigInteger Gcd(const CBigInteger& a, const CBigInteger& b);
  // The coefficient of `a` from ExtendedGcd, plus `modulus` when negative. It doesn't check that
  // an inverse exists.
  static CBigInteger ModInverse(const CBigInteger& a, const CBigInteger& modulus);

  // One Miller-Rabin round with a base of 151 words of rand() after srand(time): all calls within
  // one second use the same base. 1 means probably prime.
  int32_t MillerRabinRound() const;
  // 0 when a prime below 2000 divides the value, so that those primes themselves are reported
  // as not prime; otherwise one MillerRabinRound.
  int32_t IsProbablePrime() const;
  // After srand(time), 303 words of rand() with bit 0 set, then += 2 until IsProbablePrime: a
  // probable prime of at most 9696 bits. Slow: seconds to minutes.
  static CBigInteger GeneratePrime();

  // A new array of `length * 4` big-endian bytes, leading zero bytes kept; free it with delete[].
  uint8_t* GetBytes() const;
  // -1 when `length * 4` exceeds `size`; otherwise zeroes `size` bytes, writes the `length * 4`
  // bytes at the start and gives that count.
  int32_t GetBytes(uint8_t* target, int32_t size) const;
  // Zeroes `size` bytes and writes the words in use big-endian without leading zero bytes;
  // gives that byte count, (BitCount() + 7) / 8, and trims `length` as BitCount does. Zero
  // writes nothing and gives 0; a value that needs more than `size` bytes writes nothing either.
  int32_t ExportMinimal(uint8_t* target, int32_t size);
  // Upper-case hexadecimal of the words in use: the top word unpadded, the others with 8 digits.
  // A top word of zero adds nothing, so zero gives "".
  std::string ToHexString() const;

  int32_t length() const { return length_; }
  const uint32_t* data() const { return data_; }
  bool IsNegative() const { return (data_[kMaxLength - 1] & 0x80000000u) != 0; }

  // Word-array shifts in place on `count` words: trim first, shift, and give the new (trimmed)
  // length. The left shift grows into the words above while `count` allows and drops what falls
  // off; words above the length that no shifted word reaches keep their content.
  static int32_t ShiftLeftWords(uint32_t* words, int32_t count, int32_t bits);
  static int32_t ShiftRightWords(uint32_t* words, int32_t count, int32_t bits);

 private:
  void Trim();
  bool IsZeroWord() const { return length_ == 1 && data_[0] == 0; }
  bool IsMostNegative() const;
  // Non-zero words at or above `length` (a positive value made by a negation keeps the length
  // of its source, which may be shorter than its words).
  bool HasWordsAbove() const;
  void CopyFrom(const CBigInteger& other);
  // b^index: word `index` set to 1 and `length` index + 1; zero when the word would fall off.
  static CBigInteger PowerOfWordBase(int32_t index);
  static CBigInteger AddMagnitudes(const CBigInteger& a, const CBigInteger& b);
  static CBigInteger SubtractMagnitudes(const CBigInteger& a, const CBigInteger& b);
  static CBigInteger WrappingSum(const CBigInteger& a, const CBigInteger& b, bool subtract);
  static void Divide(const CBigInteger& left, const CBigInteger& right, bool wantQuotient,
                     CBigInteger* quotient, CBigInteger* remainder);
  static void DivideByWord(const CBigInteger& dividend, uint32_t divisor, CBigInteger* quotient,
                           CBigInteger* remainder);
  static void DivideByWords(const CBigInteger& dividend, const CBigInteger& divisor,
                            CBigInteger* quotient, CBigInteger* remainder);
  // ModPow's shared start: steps that both walks take before the exponent's bits. Gives true
  // when the result is already decided (in *result).
  bool StartModPow(const CBigInteger& exponent, const CBigInteger& modulus, CBigInteger* temp,
                   CBigInteger* positiveModulus, bool* negativeBase, CBigInteger* result) const;
  // srand(time), then `words` words of rand() from word 0; `length` up to the last non-zero one.
  static CBigInteger SeededRandom(int32_t words);
  static CBigInteger BarrettWalk(CBigInteger temp, const CBigInteger& exponent,
                                 const CBigInteger& modulus);
  static CBigInteger FastPower(const CBigInteger& base, const CBigInteger& exponent,
                               const CBigInteger& modulus);

  int32_t length_;
  uint32_t data_[kMaxLength];
};

// Each word in use from the top down, in lower-case hexadecimal, unpadded and unseparated.
std::ostream& operator<<(std::ostream& out, const CBigInteger& value);

}  // namespace vsm

#endif  // VSM_BIGINT_BIG_INTEGER_H_
