// ModPow, Reduce, the Euclidean functions and the prime tests. ModPow's fast method is held to
// the word-for-word Barrett walk (value and length) over random inputs of every shape;
// bigint_oracle.py holds both to Python's pow, gcd and inverses, and to known primes.
#include <gtest/gtest.h>

#include <cstdlib>
#include <random>
#include <vector>

#include "big_number_text.h"
#include "bigint/big_integer.h"

namespace vsm {
namespace {

// A random number of `words` words, top word non-zero; `pattern` draws words from the values
// that trip carries and quotient estimates.
CBigInteger Random(std::mt19937& random, int words, bool pattern = false) {
  static const uint32_t kEdges[] = {0, 1, 0x7FFFFFFF, 0x80000000, 0xFFFFFFFF};
  std::vector<uint32_t> value(static_cast<size_t>(words));
  for (uint32_t& word : value) word = pattern ? kEdges[random() % 5] : random();
  value[0] |= value[0] == 0;
  return CBigInteger(value.data(), words);
}

CBigInteger TwoToThe(int bits, int minus) { return (CBigInteger(1) << bits) - CBigInteger(minus); }

// Odd and even moduli of 1 to 40 words (some negative), bases above and below them (some
// negative), exponents up to 320 bits; then a 511-word modulus, at the limit.
TEST(ModPowTest, FastMethodGivesTheBarrettWalksValueAndLength) {
  std::mt19937 random(7);
  for (int i = 0; i < 402; ++i) {
    const int words = i < 400 ? 1 + static_cast<int>(random() % 40) : 511;
    const bool pattern = i % 3 == 0;
    CBigInteger modulus = Random(random, words, pattern) + CBigInteger(i % 2);
    if (i % 7 == 0) modulus = -modulus;
    CBigInteger base = Random(random, 1 + static_cast<int>(random() % (words + 2)), pattern);
    if (i % 5 == 0) base = -base;
    const int exponentWords = i < 400 ? 1 + static_cast<int>(random() % 10) : 1;
    const CBigInteger exponent = Random(random, exponentWords, pattern);
    ASSERT_EQ(Describe(base.ModPow(exponent, modulus)),
              Describe(base.ModPowBarrett(exponent, modulus)))
        << Describe(base) << ", " << Describe(exponent) << ", " << Describe(modulus);
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
  // Far outside its range Reduce still ends: past three subtractions, one division.
  const CBigInteger x = (CBigInteger(1) << 200) + (CBigInteger(1) << 40) + CBigInteger(6);
  EXPECT_EQ(Describe(CBigInteger::Reduce(x, 7, 0)), "1 L1");  // x mod b^2 mod 7
  EXPECT_EQ(Describe(CBigInteger::Reduce(100, 0, 0)), "64 L1");
}

TEST(EuclidTest, TheIterationsSignsCoefficientsAndInverses) {
  const struct {
    CBigInteger a, b;
    const char *gcd, *x, *y;
  } cases[] = {
      {240, 46, "2 L1", "-9 L1", "2F L1"},
      {7, 0, "0 L1", "0 L1", "1 L1"},  // u % 0 is 0: the loop never runs
      {-4, 6, "2 L1", "1 L1", "1 L1"},
      {4, -6, "-2 L1", "1 L1", "1 L1"},
  };
  for (const auto& c : cases) {
    CBigInteger x, y;
    EXPECT_EQ(Describe(CBigInteger::ExtendedGcd(c.a, c.b, &x, &y)), c.gcd) << c.a << " " << c.b;
    EXPECT_EQ(Describe(x) + ", " + Describe(y), std::string(c.x) + ", " + c.y) << c.a << " " << c.b;
  }
  EXPECT_EQ(Describe(CBigInteger::ModInverse(3, 7)), "5 L1");
  EXPECT_EQ(Describe(CBigInteger::ModInverse(4, 8)), "1 L1");  // no inverse; not checked
  std::mt19937 random(5);
  for (int i = 0; i < 100; ++i) {
    const CBigInteger a = Random(random, 1 + static_cast<int>(random() % 20));
    const CBigInteger b = Random(random, 1 + static_cast<int>(random() % 20));
    CBigInteger x, y;
    const CBigInteger g = CBigInteger::ExtendedGcd(a, b, &x, &y);
    EXPECT_EQ(Describe(a * x + b * y), Describe(g)) << a << " " << b;
  }
}

TEST(PrimeTest, SmallPrimesAreReportedNotPrimeAndLargeOnesPass) {
  const CBigInteger m61 = TwoToThe(61, 1), m521 = TwoToThe(521, 1);
  EXPECT_EQ(CBigInteger(7).IsProbablePrime(), 0);
  EXPECT_EQ(CBigInteger(1999).IsProbablePrime(), 0);
  EXPECT_EQ(CBigInteger(1).IsProbablePrime(), 1);  // n - 1 is 0, and b == 1 passes
  EXPECT_EQ(m521.IsProbablePrime(), 1);
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
