// ModPow, Reduce, the Euclidean functions and the prime tests. ModPow's fast method is held to
// the word-for-word Barrett walk (value and length) over random inputs of every shape;
// bigint_oracle.py holds both to Python's pow.
#include <gtest/gtest.h>

#include <cstdlib>
#include <random>
#include <string>
#include <vector>

#include "big_number_text.h"
#include "bigint/big_integer.h"

namespace vsm {
namespace {

// A random number of `words` words, top word non-zero; `pattern` draws words from the values
// that trip carries and quotient estimates (0, 1, 0x7FFFFFFF, 0x80000000, 0xFFFFFFFF).
CBigInteger Random(std::mt19937& random, int words, bool pattern = false) {
  static const uint32_t kEdges[] = {0, 1, 0x7FFFFFFF, 0x80000000, 0xFFFFFFFF};
  std::vector<uint32_t> value(static_cast<size_t>(words));
  for (uint32_t& word : value) word = pattern ? kEdges[random() % 5] : random();
  if (value[0] == 0) value[0] = 1;
  return CBigInteger(value.data(), words);
}

CBigInteger PowerOfTwoMinus(int bits, int minus) {
  return (CBigInteger(1) << bits) - CBigInteger(minus);
}

TEST(ModPowTest, RulesForSignsZeroAndTheWidthLimit) {
  const CBigInteger wide = CBigInteger(1) << (32 * 511);  // 512 words
  const struct {
    const char* name;
    CBigInteger base, exponent, modulus;
    const char* expected;
  } cases[] = {
      {"5^3 mod 7", 5, 3, 7, "6 L1"},
      {"negative exponent", 5, -3, 7, "0 L1"},
      {"exponent 0", 5, 0, 7, "1 L1"},
      {"exponent 0, modulus 1", 5, 0, 1, "1 L1"},
      {"modulus 1", 5, 3, 1, "0 L1"},
      {"(-2)^3 mod 7", -2, 3, 7, "-1 L1"},
      {"(-2)^2 mod 7", -2, 2, 7, "4 L1"},
      {"negative modulus", 5, 3, -7, "6 L1"},
      {"base above the modulus", 12, 3, 7, "6 L1"},
      {"zero modulus", 5, 3, 0, "0 L1"},
      {"zero modulus, exponent 0", 5, 0, 0, "1 L1"},
      {"even modulus", 3, 5, 16, "3 L1"},
      {"512-word modulus", 3, 5, wide + CBigInteger(1), "0 L1"},
      {"511-word modulus", 3, 5, (CBigInteger(1) << (32 * 510)) + CBigInteger(1), "F3 L1"},
      {"2^127 - 1 is a Fermat witness of itself", 2, PowerOfTwoMinus(127, 2),
       PowerOfTwoMinus(127, 1), "1 L1"},
  };
  for (const auto& c : cases) {
    EXPECT_EQ(Describe(c.base.ModPow(c.exponent, c.modulus)), c.expected) << c.name;
    EXPECT_EQ(Describe(c.base.ModPowBarrett(c.exponent, c.modulus)), c.expected) << c.name;
  }
}

// The fast method must give the Barrett walk's value and length for every input: odd and even
// moduli of 1 to 40 words, bases above and below them and negative, exponents up to 300 bits.
TEST(ModPowTest, FastMethodGivesTheBarrettWalksValueAndLength) {
  std::mt19937 random(7);
  for (int i = 0; i < 400; ++i) {
    const int words = 1 + static_cast<int>(random() % 40);
    const bool pattern = i % 3 == 0;
    CBigInteger modulus = Random(random, words, pattern);
    if (i % 2 == 0) modulus = modulus + CBigInteger(1 - static_cast<int>(modulus.data()[0] & 1));
    if (i % 7 == 0) modulus = -modulus;
    CBigInteger base = Random(random, 1 + static_cast<int>(random() % (words + 2)), pattern);
    if (i % 5 == 0) base = -base;
    const CBigInteger exponent = Random(random, 1 + static_cast<int>(random() % 10), pattern);
    const CBigInteger fast = base.ModPow(exponent, modulus);
    const CBigInteger plain = base.ModPowBarrett(exponent, modulus);
    ASSERT_EQ(Describe(fast), Describe(plain))
        << Describe(base) << ", " << Describe(exponent) << ", " << Describe(modulus);
  }
  // At the width limit: a 511-word modulus, odd and even.
  for (int parity = 0; parity < 2; ++parity) {
    const CBigInteger modulus = Random(random, 511) + CBigInteger(parity);
    const CBigInteger base = Random(random, 600);
    EXPECT_EQ(Describe(base.ModPow(CBigInteger(0x1F), modulus)),
              Describe(base.ModPowBarrett(CBigInteger(0x1F), modulus)));
  }
}

TEST(ModPowTest, ReduceIsTheRemainderBelowTwiceTheModulusWidth) {
  std::mt19937 random(3);
  for (int i = 0; i < 200; ++i) {
    const int k = 1 + static_cast<int>(random() % 30);
    const CBigInteger n = Random(random, k, i % 2 == 0);
    const CBigInteger x = Random(random, 1 + static_cast<int>(random() % (2 * k)), i % 3 == 0);
    const CBigInteger constant = (CBigInteger(1) << (64 * k)) / n;
    EXPECT_EQ(Describe(CBigInteger::Reduce(x, n, constant)), Describe(x % n)) << x << " " << n;
  }
  // Far outside its range Reduce still ends: the subtractions give way to one division.
  const CBigInteger n(7);
  const CBigInteger x = (CBigInteger(1) << 200) + (CBigInteger(1) << 40) + CBigInteger(6);
  EXPECT_EQ(Describe(CBigInteger::Reduce(x, n, CBigInteger(0))), "1 L1");  // x mod b^2 mod 7
  EXPECT_EQ(Describe(CBigInteger::Reduce(CBigInteger(100), CBigInteger(0), CBigInteger(0))),
            "64 L1");
}

TEST(EuclidTest, GcdCoefficientsAndInverses) {
  const struct {
    CBigInteger a, b;
    const char* gcd;
    const char* x;
    const char* y;
  } cases[] = {
      {240, 46, "2 L1", "-9 L1", "2F L1"}, {46, 240, "2 L1", "2F L1", "-9 L1"},
      {7, 0, "0 L1", "0 L1", "1 L1"},  // u % 0 is 0: the loop never runs
      {-4, 6, "2 L1", "1 L1", "1 L1"},     {4, -6, "-2 L1", "1 L1", "1 L1"},
      {12, 4, "4 L1", "0 L1", "1 L1"},
  };
  for (const auto& c : cases) {
    CBigInteger x, y;
    EXPECT_EQ(Describe(CBigInteger::ExtendedGcd(c.a, c.b, &x, &y)), c.gcd) << c.a << " " << c.b;
    EXPECT_EQ(Describe(x), c.x) << c.a << " " << c.b;
    EXPECT_EQ(Describe(y), c.y) << c.a << " " << c.b;
    EXPECT_EQ(Describe(CBigInteger::Gcd(c.a, c.b)), c.gcd);
  }
  EXPECT_EQ(Describe(CBigInteger::ModInverse(3, 7)), "5 L1");
  EXPECT_EQ(Describe(CBigInteger::ModInverse(5, 7)), "3 L1");
  EXPECT_EQ(Describe(CBigInteger::ModInverse(4, 8)), "1 L1");  // no inverse; not checked
  std::mt19937 random(5);
  for (int i = 0; i < 100; ++i) {
    const CBigInteger a = Random(random, 1 + static_cast<int>(random() % 20));
    const CBigInteger b = Random(random, 1 + static_cast<int>(random() % 20));
    CBigInteger x, y;
    const CBigInteger g = CBigInteger::ExtendedGcd(a, b, &x, &y);
    EXPECT_EQ(Describe(a * x + b * y), Describe(g)) << a << " " << b;
    EXPECT_EQ(Describe(a % g), "0 L1");
  }
}

TEST(PrimeTest, SmallPrimesAreReportedNotPrimeAndLargeOnesPass) {
  const CBigInteger m61 = PowerOfTwoMinus(61, 1);
  const CBigInteger m89 = PowerOfTwoMinus(89, 1);
  const CBigInteger m521 = PowerOfTwoMinus(521, 1);
  const struct {
    const char* name;
    CBigInteger n;
    int32_t expected;
  } cases[] = {
      {"0", 0, 0},
      {"1 passes (n - 1 is 0)", 1, 1},
      {"2", 2, 0},
      {"7", 7, 0},
      {"1999", 1999, 0},
      {"2001 = 3 * 23 * 29", 2001, 0},
      {"2^61 - 1", m61, 1},
      {"2^89 - 1", m89, 1},
      {"2^521 - 1", m521, 1},
      {"2^255 - 19", PowerOfTwoMinus(255, 19), 1},
      {"(2^61 - 1)(2^89 - 1)", m61 * m89, 0},
      {"(2^89 - 1)(2^521 - 1)", m89 * m521, 0},
      {"2003 * 2011", 2003 * 2011, 0},
      {"2^64 + 1 = 274177 * 67280421310721", CBigInteger(1) + (CBigInteger(1) << 64), 0},
  };
  for (const auto& c : cases) EXPECT_EQ(c.n.IsProbablePrime(), c.expected) << c.name;
  EXPECT_EQ(m521.MillerRabinRound(), 1);
  EXPECT_EQ((m61 * m521).MillerRabinRound(), 0);
}

// Minutes of work: run with VSM_LONG_TESTS=1.
TEST(PrimeTest, GeneratePrimeGivesAnOddProbablePrimeOfAtMost9696Bits) {
  if (std::getenv("VSM_LONG_TESTS") == nullptr) GTEST_SKIP() << "set VSM_LONG_TESTS=1";
  CBigInteger prime = CBigInteger::GeneratePrime();
  EXPECT_EQ(prime.data()[0] & 1, 1u);
  EXPECT_LE(prime.BitCount(), 9696);
  EXPECT_EQ(prime.IsProbablePrime(), 1);
}

}  // namespace
}  // namespace vsm
