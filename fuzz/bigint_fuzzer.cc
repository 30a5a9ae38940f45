// CBigInteger from text and from bytes, and its arithmetic held to identities.
//
// Operands come from big-endian bytes (at most 256 bytes, so that no product comes near the
// sign bit), negated by a flag, or from text in a radix of the input. Checked:
// (a / b) * b + a % b == a for b != 0 with |a % b| < |b| and the dividend's sign; a + b - b == a;
// exactly one of a < b, a > b, a == b in value; a << k == a * 2^k; ModPow against repeated
// multiplication for exponents up to 16, and against the plain Barrett walk, value and length,
// for exponents of up to 256 bits; a * x + b * y == ExtendedGcd(a, b, x, y); the byte exports
// and the hexadecimal text give back the bytes and digits they came from.
#include <fuzzer/FuzzedDataProvider.h>

#include <algorithm>
#include <cctype>
#include <cstdint>
#include <string>
#include <vector>

#include "bigint/big_integer.h"
#include "fuzz_support.h"

namespace {

using vsm::CBigInteger;
using vsm::fuzz::FuzzCheck;

// Operands of up to 64 words: products stay far below the sign bit, and a run stays short.
constexpr size_t kMostBytes = 256;
// Euclid's iteration divides once per step, and the Barrett walk reduces once per exponent bit:
// small operands keep a run short.
constexpr size_t kMostGcdBytes = 16;
constexpr size_t kMostExponentBytes = 32;

// Negation keeps its operand's length and then trims it, and the number's contract keeps that:
// so a negative result can come with a length that cuts off a word its value needs (the
// negation of 0xFFFFFFFF_FEFF0000 has length 1), and the next operation, which reads `length`
// words, sees another number. Every result is brought to a length that holds its words before it
// is used again, so that the identities check the arithmetic on the words: the shortest length
// whose top word carries the sign, or all 1024 words.
CBigInteger Full(const CBigInteger& value) {
  uint32_t words[CBigInteger::kMaxLength];
  for (int32_t i = 0; i < CBigInteger::kMaxLength; ++i) {
    words[CBigInteger::kMaxLength - 1 - i] = value.data()[i];
  }
  const CBigInteger wide(words, CBigInteger::kMaxLength);
  if (!wide.IsNegative()) return wide;
  const CBigInteger narrow = -(-wide);
  bool holdsSign = (narrow.data()[narrow.length() - 1] & 0x80000000u) != 0;
  for (int32_t i = narrow.length(); i < CBigInteger::kMaxLength && holdsSign; ++i) {
    holdsSign = narrow.data()[i] == 0xFFFFFFFFu;
  }
  return holdsSign ? narrow : wide;
}

// A zero difference always reads as zero: a negation whose low words are all zero carries into
// its top word.
bool IsZero(CBigInteger value) { return value.BitCount() == 0; }
bool SameValue(const CBigInteger& a, const CBigInteger& b) { return IsZero(Full(a) - Full(b)); }

std::string Hex(const std::vector<uint8_t>& bytes) {
  static const char kDigits[] = "0123456789ABCDEF";
  std::string text;
  for (uint8_t byte : bytes) {
    text += kDigits[byte >> 4];
    text += kDigits[byte & 15];
  }
  return text;
}

CBigInteger FromBytes(const std::vector<uint8_t>& bytes) {
  return CBigInteger(bytes.data(), static_cast<int32_t>(bytes.size()));
}

void CheckBytes(const std::vector<uint8_t>& bytes) {
  CBigInteger value = FromBytes(bytes);
  std::vector<uint8_t> exported(value.length() * 4 + 4);
  const int32_t written = value.GetBytes(exported.data(), static_cast<int32_t>(exported.size()));
  FuzzCheck(written == value.length() * 4, "GetBytes writes length * 4 bytes", Hex(bytes));
  exported.resize(written);
  FuzzCheck(SameValue(FromBytes(exported), value), "GetBytes reads back", Hex(bytes));
  const size_t first =
      std::find_if(bytes.begin(), bytes.end(), [](uint8_t b) { return b; }) - bytes.begin();
  const std::vector<uint8_t> minimal(bytes.begin() + first, bytes.end());
  std::vector<uint8_t> out(bytes.size() + 1);
  const int32_t length = value.ExportMinimal(out.data(), static_cast<int32_t>(out.size()));
  out.resize(length);
  FuzzCheck(out == minimal, "ExportMinimal drops the leading zeros only", Hex(bytes));
  std::string hex = Hex(minimal);
  hex.erase(0, std::min(hex.find_first_not_of('0'), hex.size()));
  FuzzCheck(value.ToHexString() == hex, "ToHexString shows the digits", Hex(bytes));
  std::string text = Hex(bytes);
  FuzzCheck(SameValue(CBigInteger(text.data(), 16), value), "hexadecimal text reads back", text);
}

std::string Describe(CBigInteger value) {
  std::string hex = value.ToHexString();
  if (hex.size() > 64) hex = "..." + hex.substr(hex.size() - 64);
  return hex + " (length " + std::to_string(value.length()) +
         (value.IsNegative() ? ", negative" : "") + ", " + std::to_string(value.BitCount()) +
         " bits)";
}

// FuzzCheck with the two operands shown, described only when the check fails.
void CheckValues(bool holds, const char* what, const CBigInteger& a, const CBigInteger& b,
                 const std::string& more = std::string()) {
  if (!holds) FuzzCheck(false, what, "a=" + Describe(a) + "\nb=" + Describe(b) + more);
}

void CheckArithmetic(const CBigInteger& a, const CBigInteger& b, int32_t shift) {
  CheckValues(SameValue(Full(a + b) - b, a), "a + b - b == a", a, b);
  CBigInteger sum = a;
  sum += b;
  sum = Full(sum);
  sum -= b;
  CheckValues(SameValue(sum, a), "a += b; a -= b gives a", a, b);
  const int order = (a < b ? 1 : 0) + (a > b ? 1 : 0) + (SameValue(a, b) ? 1 : 0);
  CheckValues(order == 1, "one of <, > and == holds", a, b);
  CheckValues(SameValue(-Full(-a), a), "-(-a) == a", a, b);
  CheckValues(SameValue(a << shift, a * Full(CBigInteger(1) << shift)), "a << k == a * 2^k", a, b,
              "\nk=" + std::to_string(shift));
  if (IsZero(b)) return;
  const CBigInteger quotient = Full(a / b);
  const CBigInteger remainder = Full(a % b);
  CheckValues(SameValue(Full(quotient * b) + remainder, a), "(a / b) * b + a % b == a", a, b);
  const CBigInteger magnitude = b.IsNegative() ? Full(-b) : b;
  const CBigInteger absolute = remainder.IsNegative() ? Full(-remainder) : remainder;
  CheckValues(absolute < magnitude, "|a % b| < |b|", a, b);
  CheckValues(IsZero(remainder) || remainder.IsNegative() == a.IsNegative(),
              "the remainder takes the dividend's sign", a, b);
}

void CheckModPow(const CBigInteger& base, uint32_t exponent, const CBigInteger& modulus) {
  if (IsZero(modulus)) return;  // a zero modulus gives a number without meaning
  const CBigInteger positive = modulus.IsNegative() ? Full(-modulus) : modulus;
  const CBigInteger reduced = Full((base.IsNegative() ? Full(-base) : base) % positive);
  CBigInteger expected(1);
  for (uint32_t i = 0; i < exponent; ++i) expected = Full(Full(expected * reduced) % positive);
  if (base.IsNegative() && exponent % 2 == 1) expected = Full(-expected);
  const CBigInteger power = base.ModPow(CBigInteger(exponent), modulus);
  CheckValues(SameValue(power, expected), "ModPow agrees with repeated multiplication", base,
              modulus, "\ne=" + std::to_string(exponent));
  FuzzCheck(power == base.ModPowBarrett(CBigInteger(exponent), modulus),
            "both walks give the same value and length");
}

// The fast ModPow (windows, Montgomery for odd moduli) against the plain walk, for a real
// exponent: the same value and the same length.
void CheckFastModPow(const CBigInteger& base, const CBigInteger& exponent,
                     const CBigInteger& modulus) {
  CheckValues(base.ModPow(exponent, modulus) == base.ModPowBarrett(exponent, modulus),
              "the fast ModPow gives what the plain walk gives", base, modulus);
}

// Euclid's iteration runs on the number's own operators, so a negation inside it can take a
// length that cuts a word (see Full) and the iteration goes on with another number. Operands of
// one word below 2^31 keep every intermediate value in one such word, and there the identity
// must hold; wider ones run for the sanitizers alone.
void CheckGcd(const CBigInteger& a, const CBigInteger& b) {
  CBigInteger x, y;
  const CBigInteger divisor = CBigInteger::ExtendedGcd(a, b, &x, &y);
  const CBigInteger limit = CBigInteger(1) << 31;
  auto small = [&limit](const CBigInteger& v) { return (v.IsNegative() ? Full(-v) : v) < limit; };
  if (IsZero(b) || !small(a) || !small(b)) return;
  CheckValues(SameValue(Full(Full(a * x) + Full(b * y)), divisor), "a * x + b * y is the divisor",
              a, b);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  FuzzedDataProvider input(data, size);
  const bool negateA = input.ConsumeBool(), negateB = input.ConsumeBool();
  const int32_t shift = input.ConsumeIntegralInRange<int32_t>(0, 64);
  const uint32_t exponent = input.ConsumeIntegralInRange<uint32_t>(0, 16);
  const int32_t radix = input.ConsumeIntegralInRange<int32_t>(0, 40);
  const auto bytesA =
      input.ConsumeBytes<uint8_t>(input.ConsumeIntegralInRange<size_t>(0, kMostBytes));
  const auto bytesB =
      input.ConsumeBytes<uint8_t>(input.ConsumeIntegralInRange<size_t>(0, kMostBytes));
  const auto bytesE = input.ConsumeBytes<uint8_t>(kMostExponentBytes);
  std::string text = input.ConsumeRandomLengthString(kMostBytes * 2);

  CheckBytes(bytesA);
  CBigInteger a = FromBytes(bytesA), b = FromBytes(bytesB);
  if (negateA) a = Full(-a);
  if (negateB) b = Full(-b);
  CheckArithmetic(a, b, shift);
  CheckModPow(a, exponent, b);
  if (bytesA.size() <= kMostGcdBytes && bytesB.size() <= kMostGcdBytes) {
    CheckGcd(a, b);
    if (!bytesE.empty()) CheckFastModPow(a, FromBytes(bytesE), b);
  }
  // Any text in any radix makes some number; it joins the arithmetic when small enough.
  CBigInteger fromText = Full(CBigInteger(text.data(), radix));
  CBigInteger magnitude = fromText.IsNegative() ? Full(-fromText) : fromText;
  if (magnitude.BitCount() <= static_cast<int32_t>(kMostBytes * 8)) {
    CheckArithmetic(fromText, a, shift);
  }
  return 0;
}
