// CBigInteger's values and lengths at the corners: the ways of making a value, the sign cases of
// the operators, the shifts at the width limit, and the exports. bigint_oracle.py compares the
// arithmetic with Python's integers over thousands of numbers up to 4096 bits.
#include "bigint/big_integer.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <memory>
#include <random>
#include <sstream>
#include <string>
#include <vector>

#include "big_number_text.h"

namespace vsm {
namespace {

// The value when the words above word 1 only extend its sign, else INT64_MIN.
int64_t ToInt64(const CBigInteger& value) {
  const uint32_t* w = value.data();
  const int64_t result = static_cast<int64_t>(uint64_t{w[1]} << 32 | w[0]);
  for (int i = 2; i < CBigInteger::kMaxLength; ++i) {
    if (w[i] != (result < 0 ? 0xFFFFFFFFu : 0u)) return INT64_MIN;
  }
  return result;
}

TEST(BigIntegerTest, EachConstructorGivesItsValueAndLength) {
  std::vector<uint8_t> full(4096, 0);
  full[0] = 0x80;
  std::vector<uint8_t> longer(4100, 0);
  longer[3] = 0x7f;  // falls off with the first four bytes
  longer[4099] = 9;
  const uint8_t fiveBytes[] = {0, 0, 0, 1, 0};
  const uint32_t words[] = {0, 0, 5, 6};
  const struct {
    const char* name;
    CBigInteger value;
    std::string expected;
  } cases[] = {
      {"default", CBigInteger(), "0 L1"},
      {"int64 0", CBigInteger(int64_t{0}), "0 L1"},
      {"int64 2^32", CBigInteger(int64_t{1} << 32), "100000000 L2"},
      {"int64 -1 fills every word", CBigInteger(int64_t{-1}), "-1 L1024"},
      {"int64 -5", CBigInteger(-5), "-5 L1024"},
      {"negation keeps the source's length", -CBigInteger(5), "-5 L1"},
      {"uint64 max", CBigInteger(UINT64_MAX), "FFFFFFFFFFFFFFFF L2"},
      {"uint64 0", CBigInteger(uint64_t{0}), "0 L1"},
      {"bytes 00 00 00 01 00", CBigInteger(fiveBytes, 5), "100 L1"},
      {"bytes, size 0", CBigInteger(fiveBytes, 0), "0 L1"},
      {"4096 bytes, top bit set", CBigInteger(full.data(), 4096),
       "-8" + std::string(8191, '0') + " L1024"},
      {"4100 bytes keep the last 4096", CBigInteger(longer.data(), 4100), "9 L1"},
      {"words, most significant first", CBigInteger(words, 4), "500000006 L2"},
      {"words, count 0", CBigInteger(words, 0), "0 L1"},
      {"text hex", Text("-fF", 16), "-FF L1"},
      {"text skips what isn't a digit of the radix", Text("1g-2_x3", 16), "123 L1"},
      {"text radix 36", Text("zz", 36), "50F L1"},
      {"text radix 10", Text("-4294967296", 10), "-100000000 L2"},
      {"text empty", Text("", 16), "0 L1"},
      {"text only a sign", Text("-", 16), "0 L1"},
  };
  for (const auto& c : cases) EXPECT_EQ(Describe(c.value), c.expected) << c.name;
  char text[] = "-ab";
  CBigInteger parsed(text, 16);
  EXPECT_STREQ(text, "-AB");  // upper-cased in the caller's string
}

TEST(BigIntegerTest, LongTextWrapsAtTheWidthLikeTheOperators) {
  // 8192 hex digits reach the sign bit; the last in-place step and the operator steps that
  // follow must agree with a value built by shifting.
  std::string digits = "1" + std::string(8190, '0') + "F";
  EXPECT_EQ(Describe(Text(digits, 16)), Describe((CBigInteger(1) << 32764) + CBigInteger(15)));
  std::string high = "8" + std::string(8191, '0');
  EXPECT_EQ(Describe(Text(high, 16)), "-8" + std::string(8191, '0') + " L1024");
  EXPECT_EQ(Describe(Text("1" + high, 16)), Describe(Text(high, 16)));  // the 1 falls off
}

TEST(BigIntegerTest, EqualityComparesLengthFirst) {
  const CBigInteger made = CBigInteger(-1);
  const CBigInteger negated = -CBigInteger(1);
  EXPECT_EQ(std::string(reinterpret_cast<const char*>(made.data()), 4096),
            std::string(reinterpret_cast<const char*>(negated.data()), 4096));
  EXPECT_FALSE(made == negated);
  EXPECT_TRUE(made != negated);
  EXPECT_FALSE(made < negated);
  EXPECT_FALSE(made > negated);
  EXPECT_TRUE(CBigInteger(0) == CBigInteger());
}

// Sign cases of the operators, with the lengths they leave.
TEST(BigIntegerTest, OperatorsFollowTheSignRulesAndLeaveTheirLengths) {
  const CBigInteger minusThreeMade(-3);
  const struct {
    const char* name;
    CBigInteger value;
    std::string expected;
  } cases[] = {
      {"7 % 7", CBigInteger(7) % CBigInteger(7), "0 L1"},
      {"3 / 7", CBigInteger(3) / CBigInteger(7), "0 L1"},
      {"-3 % 7 is the dividend as given", minusThreeMade % CBigInteger(7), "-3 L1024"},
      {"-7 / 2", CBigInteger(-7) / CBigInteger(2), "-3 L1"},
      {"-7 % 2", CBigInteger(-7) % CBigInteger(2), "-1 L1"},
      {"7 / -2", CBigInteger(7) / CBigInteger(-2), "-3 L1"},
      {"7 % -2", CBigInteger(7) % CBigInteger(-2), "1 L1"},
      {"-7 / -2", CBigInteger(-7) / CBigInteger(-2), "3 L1"},
      {"x / 0", CBigInteger(12345) / CBigInteger(0), "0 L1"},
      {"x % 0", CBigInteger(-12345) % CBigInteger(0), "0 L1"},
      {"-3 + 5", CBigInteger(-3) + CBigInteger(5), "2 L1"},
      {"3 + -5", CBigInteger(3) + CBigInteger(-5), "-2 L1"},
      {"-3 + -5", CBigInteger(-3) + CBigInteger(-5), "-8 L1"},
      {"3 - 5", CBigInteger(3) - CBigInteger(5), "-2 L1"},
      {"-3 - 5", CBigInteger(-3) - CBigInteger(5), "-8 L1"},
      {"-3 - -5", CBigInteger(-3) - CBigInteger(-5), "2 L1"},
      {"-5 - -3", CBigInteger(-5) - CBigInteger(-3), "-2 L1"},
      {"2^32 - 1", (CBigInteger(1) << 32) - CBigInteger(1), "FFFFFFFF L1"},
      // The negation's top word is 0 and is trimmed; negating again keeps that length, so
      // the positive value has a word above its length, which word loops then ignore.
      {"-(2^64 - 2^32 + 1)", -(CBigInteger(UINT64_MAX) - CBigInteger(uint64_t{0xFFFFFFFE})),
       "-FFFFFFFF00000001 L1"},
      {"-(-(2^64 - 2^32 + 1))", -Text("-FFFFFFFF00000001", 16), "FFFFFFFF00000001 L1"},
      {"... + 1 sees one word", -Text("-FFFFFFFF00000001", 16) + CBigInteger(1), "2 L1"},
      {"-3 * 5", CBigInteger(-3) * CBigInteger(5), "-F L1"},
      {"-3 * -5", CBigInteger(-3) * CBigInteger(-5), "F L1"},
      {"2^16383 * 2^16384 reaches the sign bit",
       (CBigInteger(1) << 16383) * (CBigInteger(1) << 16384),
       "-8" + std::string(8191, '0') + " L1024"},
      {"2^32767 * 2 falls off", (CBigInteger(1) << 32766) * CBigInteger(4), "0 L1"},
      {"+= gives and stores the sum",
       [] {
         CBigInteger x(5);
         const CBigInteger copy = x += CBigInteger(-7);
         return copy == x ? x : CBigInteger(99);
       }(),
       "-2 L1"},
  };
  for (const auto& c : cases) EXPECT_EQ(Describe(c.value), c.expected) << c.name;
}

// The most negative value negates to itself, and sums with it wrap instead of recursing.
TEST(BigIntegerTest, MostNegativeValueWrapsAndEndsEveryLoop) {
  const CBigInteger most = Text("-8" + std::string(8191, '0'), 16);
  const std::string text = "-8" + std::string(8191, '0');
  EXPECT_EQ(Describe(-most), text + " L1024");
  EXPECT_EQ(Describe(most + CBigInteger(-1)), "7" + std::string(8191, 'F') + " L1024");
  EXPECT_EQ(Describe(most - CBigInteger(1)), "7" + std::string(8191, 'F') + " L1024");
  EXPECT_EQ(Describe(CBigInteger(1) + most), "-7" + std::string(8191, 'F') + " L1024");
  EXPECT_EQ(Describe(most % CBigInteger(3)), text + " L1024");
  EXPECT_EQ(Describe(CBigInteger(5) / most), "0 L1");
  CBigInteger x;
  CBigInteger::ExtendedGcd(most, CBigInteger(3), &x, nullptr);
  CBigInteger::ExtendedGcd(CBigInteger(3), most, &x, nullptr);
  EXPECT_EQ(Describe(most.ModPow(CBigInteger(3), CBigInteger(7))), "0 L1");
  EXPECT_EQ(Describe(most.ModPowBarrett(CBigInteger(3), CBigInteger(7))), "0 L1");
}

TEST(BigIntegerTest, ShiftsGrowWithinTheirCountAndLeaveTheWordsAbove) {
  // Words above `count`, and above the length in use, are never touched.
  const struct {
    std::vector<uint32_t> words;
    int32_t count, bits;
    bool left;
    std::vector<uint32_t> expected;
    int32_t length;
  } cases[] = {
      {{0x80000001, 0, 0, 0}, 4, 1, true, {2, 1, 0, 0}, 2},
      {{0x80000001, 0, 0, 0}, 4, 64, true, {0, 0, 0x80000001, 0}, 3},
      {{0x80000001, 0, 0, 0}, 4, 100, true, {0, 0, 0, 0x10}, 4},
      {{1, 2, 3, 0x80000000}, 4, 1, true, {2, 4, 6, 0}, 3},  // the top bit falls off
      {{5, 0, 0, 0}, 4, 200, true, {0, 0, 0, 0}, 1},
      {{0, 0, 0, 9}, 3, 7, true, {0, 0, 0, 9}, 1},
      {{1, 0xFFFFFFFF, 0, 0xEEEEEEEE}, 3, 4, true, {0x10, 0xFFFFFFF0, 0xF, 0xEEEEEEEE}, 3},
      {{1, 2, 0, 0}, 4, -3, true, {1, 2, 0, 0}, 2},
      {{0, 0, 1, 0}, 4, 33, false, {0x80000000, 0, 0, 0}, 1},
      {{7, 8, 0, 0xAAAAAAAA}, 3, 4, false, {0x80000000, 0, 0, 0xAAAAAAAA}, 1},
      {{7, 8, 9, 0}, 4, 200, false, {0, 0, 0, 0}, 1},
  };
  for (const auto& c : cases) {
    std::vector<uint32_t> words = c.words;
    const int32_t length = c.left ? CBigInteger::ShiftLeftWords(words.data(), c.count, c.bits)
                                  : CBigInteger::ShiftRightWords(words.data(), c.count, c.bits);
    EXPECT_EQ(words, c.expected) << c.bits << (c.left ? " left" : " right");
    EXPECT_EQ(length, c.length) << c.bits << (c.left ? " left" : " right");
  }
  EXPECT_EQ(Describe(CBigInteger(1) << 32767), "-8" + std::string(8191, '0') + " L1024");
  EXPECT_EQ(Describe(CBigInteger(1) << 32768), "0 L1");
  EXPECT_EQ(Describe(CBigInteger(3) << INT32_MAX), "0 L1");
  // `<<` trims all 1024 words first, so a negative value shifts whole, whatever its length.
  EXPECT_EQ(Describe(-CBigInteger(1) << 4), "-10 L1024");
  EXPECT_EQ(Describe(CBigInteger(-1) << 4), "-10 L1024");
}

TEST(BigIntegerTest, ExportsWriteTheWordsInUse) {
  const struct {
    const char* name;
    CBigInteger value;
    const char* hex;
    const char* stream;
    const char* bytes;
    const char* minimal;
  } cases[] = {
      {"zero", CBigInteger(), "", "0", "00000000", ""},
      {"0x0100", CBigInteger(0x100), "100", "100", "00000100", "0100"},
      {"2^32", CBigInteger(uint64_t{1} << 32), "100000000", "10", "0000000100000000", "0100000000"},
      {"-5 by negation", -CBigInteger(5), "FFFFFFFB", "fffffffb", "fffffffb", "fffffffb"},
      {"2^40 + 255", CBigInteger(uint64_t{1} << 40 | 255), "100000000FF", "100ff",
       "00000100000000ff", "0100000000ff"},
  };
  for (const auto& c : cases) {
    CBigInteger value = c.value;
    EXPECT_EQ(value.ToHexString(), c.hex) << c.name;
    std::ostringstream stream;
    stream << value << 10;
    EXPECT_EQ(stream.str(), std::string(c.stream) + "10") << c.name;  // decimal again after
    const std::unique_ptr<uint8_t[]> bytes(value.GetBytes());
    EXPECT_EQ(Hex(bytes.get(), value.length() * 4), c.bytes) << c.name;
    std::vector<uint8_t> target(12, 0xEE);
    EXPECT_EQ(value.GetBytes(target.data(), 12), value.length() * 4) << c.name;
    EXPECT_EQ(Hex(target.data(), 12).substr(2 * value.length() * 4),
              std::string(24 - 8 * value.length(), '0'))
        << c.name;
    std::fill(target.begin(), target.end(), 0xEE);
    const int32_t written = value.ExportMinimal(target.data(), 12);
    EXPECT_EQ(Hex(target.data(), written), c.minimal) << c.name;
    EXPECT_EQ(Hex(target.data() + written, 12 - written), std::string(24 - 2 * written, '0'));
  }
  uint8_t small[4];
  EXPECT_EQ(CBigInteger(uint64_t{1} << 32).GetBytes(small, 4), -1);
  CBigInteger wide(uint64_t{1} << 40);
  EXPECT_EQ(wide.ExportMinimal(small, 4), 6);  // too small: zeroed, nothing written
  EXPECT_EQ(Hex(small, 4), "00000000");
}

TEST(BigIntegerTest, BitCountTrimsInPlace) {
  const uint32_t words[] = {0, 0, 0, 1};
  CBigInteger one(words, 4);
  EXPECT_EQ(one.BitCount(), 1);
  CBigInteger made(-5);
  EXPECT_EQ(made.BitCount(), 32768);
  CBigInteger negated = -CBigInteger(5);
  EXPECT_EQ(negated.BitCount(), 32);
  CBigInteger zero;
  EXPECT_EQ(zero.BitCount(), 0);
}

// Values at and past the width, through every operation: each call returns, stays inside its
// words (the sanitizer builds watch), and leaves a length from 1 to 1024.
TEST(BigIntegerTest, ExtremeValuesStayInsideTheirWords) {
  std::mt19937 random(1024);
  std::vector<uint32_t> full(1024), half(512);
  for (uint32_t& word : full) word = random();
  for (uint32_t& word : half) word = random();
  const CBigInteger most = CBigInteger(1) << 32767;
  const CBigInteger values[] = {
      CBigInteger(),
      CBigInteger(1),
      CBigInteger(-1),
      -CBigInteger(1),
      most,
      most - CBigInteger(1),
      CBigInteger(full.data(), 1024),
      CBigInteger(half.data(), 512),
      -CBigInteger(half.data(), 512),
      -Text("-FFFFFFFF00000001", 16),
      CBigInteger(1) << 16352,
  };
  auto check = [](const CBigInteger& result) {
    EXPECT_GE(result.length(), 1);
    EXPECT_LE(result.length(), CBigInteger::kMaxLength);
  };
  std::vector<uint8_t> buffer(4096);
  for (const CBigInteger& a : values) {
    for (const CBigInteger& b : values) {
      check(a + b);
      check(a - b);
      check(a * b);
      check(a / b);
      check(a % b);
      check(a.ModPow(CBigInteger(5), b));
      check(a.ModPowBarrett(CBigInteger(5), b));
      check(b.ModPow(a, CBigInteger(1000003)));
    }
    check(a << 31);
    check(-a);
    CBigInteger copy = a;
    copy.ExportMinimal(buffer.data(), 4096);
    copy.GetBytes(buffer.data(), 4096);
    EXPECT_LE(copy.BitCount(), 32768);
    check(CBigInteger::Gcd(a, CBigInteger(1000003)));
    check(CBigInteger::ModInverse(CBigInteger(1000003), a));
    EXPECT_GE(copy.IsProbablePrime(), 0);
  }
}

// Small values against the machine's own 64-bit arithmetic, which truncates the same way.
TEST(BigIntegerTest, SmallValuesAgreeWithMachineArithmetic) {
  std::mt19937_64 random(11);
  for (int i = 0; i < 3000; ++i) {
    const int bits = 1 + static_cast<int>(random() % 62);
    const int64_t a = static_cast<int64_t>(random() >> (64 - bits)) * (random() % 2 ? 1 : -1);
    const int64_t b =
        static_cast<int64_t>(random() >> (64 - 1 - random() % bits)) * (random() % 2 ? 1 : -1);
    const CBigInteger x(a), y(b);
    EXPECT_EQ(ToInt64(x + y), a + b) << a << " + " << b;
    EXPECT_EQ(ToInt64(x - y), a - b) << a << " - " << b;
    if ((a > 0 ? a : -a) < (int64_t{1} << 31) && (b > 0 ? b : -b) < (int64_t{1} << 31)) {
      EXPECT_EQ(ToInt64(x * y), a * b) << a << " * " << b;
    }
    if (b != 0) {
      EXPECT_EQ(ToInt64(x / y), a / b) << a << " / " << b;
      EXPECT_EQ(ToInt64(x % y), a % b) << a << " % " << b;
    }
    EXPECT_EQ(x < y, a < b) << a << " < " << b;
    EXPECT_EQ(x > y, a > b) << a << " > " << b;
  }
}

}  // namespace
}  // namespace vsm
