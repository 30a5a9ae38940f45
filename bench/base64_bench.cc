// CBase64 on 16 MiB of random bytes beside OpenSSL's EVP_EncodeBlock and EVP_DecodeBlock, in
// the same run. Each codec keeps its buffers between rounds, as a caller that reuses an object
// does. A subclass that overrides nothing runs the step-by-step path, for comparison.
#include <benchmark/benchmark.h>
#include <openssl/evp.h>

#include <cstdint>
#include <random>
#include <vector>

#include "support/base64.h"

namespace {

constexpr size_t kSize = 16 << 20;

const std::vector<uint8_t>& Plain() {
  static const std::vector<uint8_t> plain = [] {
    std::mt19937_64 random(64);
    std::vector<uint8_t> bytes(kSize);
    for (uint8_t& byte : bytes) byte = static_cast<uint8_t>(random());
    return bytes;
  }();
  return plain;
}

const std::vector<uint8_t>& Text() {
  static const std::vector<uint8_t> text = [] {
    std::vector<uint8_t> out(kSize / 3 * 4 + 8);
    const int length = EVP_EncodeBlock(out.data(), Plain().data(), static_cast<int>(kSize));
    out.resize(static_cast<size_t>(length));
    return out;
  }();
  return text;
}

class StepByStep : public vsm::CBase64 {};

template <typename Codec>
void BM_Encode(benchmark::State& state) {
  Codec codec;
  for (auto _ : state) benchmark::DoNotOptimize(codec.Encode(Plain().data(), kSize));
  state.SetBytesProcessed(static_cast<int64_t>(state.iterations() * kSize));
}

template <typename Codec>
void BM_Decode(benchmark::State& state) {
  Codec codec;
  const auto* text = reinterpret_cast<const char*>(Text().data());
  const auto size = static_cast<uint32_t>(Text().size());
  for (auto _ : state) benchmark::DoNotOptimize(codec.Decode(text, size));
  state.SetBytesProcessed(static_cast<int64_t>(state.iterations() * kSize));
}

void BM_OpenSslEncode(benchmark::State& state) {
  std::vector<uint8_t> out(kSize / 3 * 4 + 8);
  for (auto _ : state) {
    benchmark::DoNotOptimize(EVP_EncodeBlock(out.data(), Plain().data(), static_cast<int>(kSize)));
  }
  state.SetBytesProcessed(static_cast<int64_t>(state.iterations() * kSize));
}

void BM_OpenSslDecode(benchmark::State& state) {
  std::vector<uint8_t> out(kSize + 8);
  for (auto _ : state) {
    benchmark::DoNotOptimize(
        EVP_DecodeBlock(out.data(), Text().data(), static_cast<int>(Text().size())));
  }
  state.SetBytesProcessed(static_cast<int64_t>(state.iterations() * kSize));
}

BENCHMARK_TEMPLATE(BM_Encode, vsm::CBase64)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_OpenSslEncode)->Unit(benchmark::kMillisecond);
BENCHMARK_TEMPLATE(BM_Encode, StepByStep)->Unit(benchmark::kMillisecond);
BENCHMARK_TEMPLATE(BM_Decode, vsm::CBase64)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_OpenSslDecode)->Unit(benchmark::kMillisecond);
BENCHMARK_TEMPLATE(BM_Decode, StepByStep)->Unit(benchmark::kMillisecond);

}  // namespace
