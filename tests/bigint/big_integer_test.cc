// CBigInteger's lengths and corners: the ways of making a value, the sign cases whose length
// callers see, the width limit and the exports. bigint_oracle.py compares the arithmetic with
// Python's integers over thousands of numbers up to 4096 bits.
#include "bigint/big_integer.h"

#include <gtest/gtest.h>

#include <cstring>
#include <memory>
#include <random>
#include <sstream>
#include <string>
#include <vector>

#include "big_number_text.h"

namespace vsm {
namespace {

const std::string kMost = "-8" + std::string(8191, '0');  // -2^32767

TEST(BigIntegerTest, ValuesAndLengthsOfEachWayOfMakingANumber) {
  std::vector<uint8_t> full(4100, 0);
  full[3] = 0x7f;  // falls off with the first four bytes of 4100
  full[4] = 0x80;
  const uint8_t fiveBytes[] = {0, 0, 0, 1, 0};
  const uint32_t words[] = {0, 0, 5, 6};
  const CBigInteger minusThree(-3);
  const struct {
    const char* name;
    CBigInteger value;
    std::string expected;
  } cases[] = {
      {"int64 2^32", CBigInteger(int64_t{1} << 32), "100000000 L2"},
      {"int64 -5 fills every word", CBigInteger(-5), "-5 L1024"},
      {"negation keeps the source's length", -CBigInteger(5), "-5 L1"},
      {"uint64", CBigInteger(UINT64_MAX), "FFFFFFFFFFFFFFFF L2"},
      {"bytes 00 00 00 01 00", CBigInteger(fiveBytes, 5), "100 L1"},
      {"bytes, size 0", CBigInteger(fiveBytes, 0), "0 L1"},
      {"4096 bytes, top bit set", CBigInteger(full.data() + 4, 4096), kMost + " L1024"},
      {"4100 bytes keep the last 4096", CBigInteger(full.data(), 4100), kMost + " L1024"},
      {"words, most significant first", CBigInteger(words, 4), "500000006 L2"},
      {"text skips what isn't a digit of the radix", Text("1g-2_x3", 16), "123 L1"},
      {"text radix 36", Text("-zz", 36), "-50F L1"},
      {"text only a sign", Text("-", 16), "0 L1"},
      {"text wraps at the width", Text("1" + kMost.substr(1), 16), kMost + " L1024"},
      {"text just below it", Text("1" + std::string(8190, '0') + "F", 16),
       Describe((CBigInteger(1) << 32764) + CBigInteger(15))},
      // Division: the dividend itself when it is the smaller; signs as truncation gives them.
      {"-3 % 7", minusThree % CBigInteger(7), "-3 L1024"},
      {"-7 / 2", CBigInteger(-7) / CBigInteger(2), "-3 L1"},
      {"x / 0", CBigInteger(12345) / CBigInteger(0), "0 L1"},
      {"x % 0", CBigInteger(-12345) % CBigInteger(0), "0 L1"},
      {"3 - 5", CBigInteger(3) - CBigInteger(5), "-2 L1"},
      // A negation whose top word is 0 is trimmed; negating it again keeps that length, and
      // the word above it is then invisible to the word loops.
      {"-(2^64 - 2^32 + 1)", -(CBigInteger(UINT64_MAX) - CBigInteger(0xFFFFFFFEu)),
       "-FFFFFFFF00000001 L1"},
      {"its negation", -Text("-FFFFFFFF00000001", 16), "FFFFFFFF00000001 L1"},
      {"its negation + 1", -Text("-FFFFFFFF00000001", 16) + CBigInteger(1), "2 L1"},
      {"2^16383 * 2^16384", (CBigInteger(1) << 16383) * (CBigInteger(1) << 16384),
       kMost + " L1024"},
      {"2^32766 * 4 falls off", (CBigInteger(1) << 32766) * CBigInteger(4), "0 L1"},
      {"the most negative negates to itself", -Text(kMost, 16), kMost + " L1024"},
      {"... and sums with it wrap", Text(kMost, 16) - CBigInteger(1),
       "7" + std::string(8191, 'F') + " L1024"},
      {"... its remainder is itself", Text(kMost, 16) % CBigInteger(3), kMost + " L1024"},
      {"1 << 32767", CBigInteger(1) << 32767, kMost + " L1024"},
      {"1 << 32768", CBigInteger(1) << 32768, "0 L1"},
      {"-1 << 4 shifts all words, whatever the length", -CBigInteger(1) << 4, "-10 L1024"},
  };
  for (const auto& c : cases) EXPECT_EQ(Describe(c.value), c.expected) << c.name;
  char text[] = "-ab";
  CBigInteger(text, 16);
  EXPECT_STREQ(text, "-AB");  // upper-cased in the caller's string
  CBigInteger x(5);
  const CBigInteger sum = x += CBigInteger(-7);
  EXPECT_EQ(Describe(sum), Describe(x));
}

TEST(BigIntegerTest, EqualityComparesLengthFirst) {
  const CBigInteger made(-1), negated = -CBigInteger(1);
  EXPECT_EQ(0, std::memcmp(made.data(), negated.data(), 4096));
  EXPECT_TRUE(made != negated && !(made == negated) && !(made < negated) && !(made > negated));
  EXPECT_TRUE(CBigInteger(0) == CBigInteger());
}

TEST(BigIntegerTest, WordShiftsGrowWithinTheirCountAndLeaveTheWordsAbove) {
  const struct {
    std::vector<uint32_t> words;
    int32_t count, bits;
    std::vector<uint32_t> expected;
    int32_t length;
  } cases[] = {
      // a positive count of bits shifts left, a negative one right
      {{0x80000001, 0, 0, 0}, 4, 1, {2, 1, 0, 0}, 2},
      {{0x80000001, 0, 0, 0}, 4, 100, {0, 0, 0, 0x10}, 4},
      {{1, 2, 3, 0x80000000}, 4, 1, {2, 4, 6, 0}, 3},  // the top bit falls off
      {{0, 0, 0, 9}, 3, 7, {0, 0, 0, 9}, 1},
      {{1, 0xFFFFFFFF, 0, 0xEEEEEEEE}, 3, 4, {0x10, 0xFFFFFFF0, 0xF, 0xEEEEEEEE}, 3},
      {{0, 0, 1, 0}, 4, -33, {0x80000000, 0, 0, 0}, 1},
      {{7, 8, 0, 0xAAAAAAAA}, 3, -4, {0x80000000, 0, 0, 0xAAAAAAAA}, 1},
      {{7, 8, 9, 0}, 4, -200, {0, 0, 0, 0}, 1},
  };
  for (const auto& c : cases) {
    std::vector<uint32_t> words = c.words;
    const int32_t length = c.bits > 0
                               ? CBigInteger::ShiftLeftWords(words.data(), c.count, c.bits)
                               : CBigInteger::ShiftRightWords(words.data(), c.count, -c.bits);
    EXPECT_EQ(words, c.expected) << c.bits;
    EXPECT_EQ(length, c.length) << c.bits;
  }
}

TEST(BigIntegerTest, ExportsWriteTheWordsInUse) {
  const struct {
    CBigInteger value;
    const char *hex, *stream, *bytes, *minimal;
  } cases[] = {
      {CBigInteger(), "", "0", "00000000", ""},
      {CBigInteger(0x100), "100", "100", "00000100", "0100"},
      {CBigInteger(uint64_t{1} << 40 | 255), "100000000FF", "100ff", "00000100000000ff",
       "0100000000ff"},
      {-CBigInteger(5), "FFFFFFFB", "fffffffb", "fffffffb", "fffffffb"},
  };
  for (const auto& c : cases) {
    CBigInteger value = c.value;
    EXPECT_EQ(value.ToHexString(), c.hex);
    std::ostringstream stream;
    stream << value << 10;
    EXPECT_EQ(stream.str(), std::string(c.stream) + "10");  // decimal again afterwards
    const std::unique_ptr<uint8_t[]> bytes(value.GetBytes());
    EXPECT_EQ(Hex(bytes.get(), value.length() * 4), c.bytes);
    std::vector<uint8_t> target(12, 0xEE);
    EXPECT_EQ(value.GetBytes(target.data(), 12), value.length() * 4);
    EXPECT_EQ(Hex(target.data(), 12), c.bytes + std::string(24 - 8 * value.length(), '0'));
    std::fill(target.begin(), target.end(), 0xEE);
    const int32_t written = value.ExportMinimal(target.data(), 12);
    EXPECT_EQ(Hex(target.data(), 12), c.minimal + std::string(24 - 2 * written, '0'));
  }
  uint8_t small[4];
  EXPECT_EQ(CBigInteger(uint64_t{1} << 32).GetBytes(small, 4), -1);
  CBigInteger wide(uint64_t{1} << 40);
  EXPECT_EQ(wide.ExportMinimal(small, 4), 6);  // too small: zeroed, nothing written
  EXPECT_EQ(Hex(small, 4), "00000000");
}

// Values at and past the width through every operation: each call returns, stays inside its
// words (the sanitizer builds watch), and leaves a length from 1 to 1024.
TEST(BigIntegerTest, ExtremeValuesStayInsideTheirWords) {
  std::mt19937 random(1024);
  std::vector<uint32_t> words(1024);
  for (uint32_t& word : words) word = random();
  const CBigInteger most = CBigInteger(1) << 32767;
  const CBigInteger values[] = {CBigInteger(),
                                CBigInteger(1),
                                CBigInteger(-1),
                                -CBigInteger(1),
                                most,
                                most - CBigInteger(1),
                                CBigInteger(words.data(), 1024),
                                CBigInteger(words.data(), 512),
                                -CBigInteger(words.data(), 512),
                                -Text("-FFFFFFFF00000001", 16),
                                CBigInteger(1) << 16352};
  const auto check = [](const CBigInteger& result) {
    EXPECT_TRUE(result.length() >= 1 && result.length() <= CBigInteger::kMaxLength);
  };
  std::vector<uint8_t> buffer(4096);
  const CBigInteger prime(1000003);
  for (const CBigInteger& a : values) {
    for (const CBigInteger& b : values) {
      for (const CBigInteger& result : {a + b, a - b, a * b, a / b, a % b, a.ModPow(5, b),
                                        a.ModPowBarrett(5, b), b.ModPow(a, prime)}) {
        check(result);
      }
    }
    CBigInteger copy = a;
    copy.ExportMinimal(buffer.data(), 4096);
    copy.GetBytes(buffer.data(), 4096);
    EXPECT_LE(copy.BitCount() + copy.IsProbablePrime(), 32769);
    check(CBigInteger::Gcd(a, prime));
    check(CBigInteger::ModInverse(prime, a));
  }
}

}  // namespace
}  // namespace vsm
