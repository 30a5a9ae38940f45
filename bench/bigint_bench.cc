// CBigInteger::ModPow at 2048 bits (2048-bit exponent, odd 2048-bit modulus) beside OpenSSL's
// BN_mod_exp and GMP's mpz_powm on the same numbers, measured in the same run. The word-for-word
// Barrett walk, which ModPow replaces for such inputs, runs too, to show what the fast method
// saves. Numbers come from a fixed seed.
#include <benchmark/benchmark.h>
#include <gmp.h>
#include <openssl/bn.h>

#include <cstdint>
#include <random>
#include <vector>

#include "bigint/big_integer.h"

namespace {

struct Operands {
  std::vector<uint8_t> base, exponent, modulus;
};

const Operands& Numbers2048() {
  static const Operands operands = [] {
    std::mt19937_64 random(2048);
    auto bytes = [&random](size_t count) {
      std::vector<uint8_t> result(count);
      for (uint8_t& byte : result) byte = static_cast<uint8_t>(random());
      result[0] |= 0x80;
      return result;
    };
    Operands o{bytes(256), bytes(256), bytes(256)};
    o.modulus.back() |= 1;
    o.base[0] &= 0x7f;  // below the modulus's top bit
    return o;
  }();
  return operands;
}

vsm::CBigInteger FromBytes(const std::vector<uint8_t>& bytes) {
  return vsm::CBigInteger(bytes.data(), static_cast<int32_t>(bytes.size()));
}

void BM_ModPow2048(benchmark::State& state) {
  const Operands& o = Numbers2048();
  const vsm::CBigInteger base = FromBytes(o.base), exponent = FromBytes(o.exponent),
                         modulus = FromBytes(o.modulus);
  for (auto _ : state) benchmark::DoNotOptimize(base.ModPow(exponent, modulus));
}

void BM_ModPowBarrett2048(benchmark::State& state) {
  const Operands& o = Numbers2048();
  const vsm::CBigInteger base = FromBytes(o.base), exponent = FromBytes(o.exponent),
                         modulus = FromBytes(o.modulus);
  for (auto _ : state) benchmark::DoNotOptimize(base.ModPowBarrett(exponent, modulus));
}

void BM_OpenSslModExp2048(benchmark::State& state) {
  const Operands& o = Numbers2048();
  BN_CTX* context = BN_CTX_new();
  BIGNUM* base = BN_bin2bn(o.base.data(), static_cast<int>(o.base.size()), nullptr);
  BIGNUM* exponent = BN_bin2bn(o.exponent.data(), static_cast<int>(o.exponent.size()), nullptr);
  BIGNUM* modulus = BN_bin2bn(o.modulus.data(), static_cast<int>(o.modulus.size()), nullptr);
  BIGNUM* result = BN_new();
  for (auto _ : state) BN_mod_exp(result, base, exponent, modulus, context);
  BN_free(result);
  BN_free(modulus);
  BN_free(exponent);
  BN_free(base);
  BN_CTX_free(context);
}

void BM_GmpPowm2048(benchmark::State& state) {
  const Operands& o = Numbers2048();
  mpz_t base, exponent, modulus, result;
  mpz_inits(base, exponent, modulus, result, nullptr);
  mpz_import(base, o.base.size(), 1, 1, 1, 0, o.base.data());
  mpz_import(exponent, o.exponent.size(), 1, 1, 1, 0, o.exponent.data());
  mpz_import(modulus, o.modulus.size(), 1, 1, 1, 0, o.modulus.data());
  for (auto _ : state) mpz_powm(result, base, exponent, modulus);
  mpz_clears(base, exponent, modulus, result, nullptr);
}

BENCHMARK(BM_ModPow2048)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_OpenSslModExp2048)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_GmpPowm2048)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_ModPowBarrett2048)->Unit(benchmark::kMillisecond)->Iterations(3);

}  // namespace
