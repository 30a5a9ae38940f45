#include "bigint/rsa_transform.h"

#include <algorithm>
#include <cstring>
#include <memory>

#include "bigint/big_integer.h"

namespace vsm {

namespace {

// The transformed block of `blockSize` bytes and the count of `data` bytes behind it.
struct Transformed {
  CBigInteger value;
  int32_t rest;
};

Transformed Transform(const uint8_t* exponent, int32_t exponentSize, const uint8_t* modulus,
                      int32_t modulusSize, const uint8_t* data, int32_t dataSize,
                      int32_t blockSize) {
  const CBigInteger e(exponent, exponentSize);
  const CBigInteger n(modulus, modulusSize);
  const CBigInteger m(data, blockSize);
  return {m.ModPow(e, n), dataSize - blockSize};
}

void CopyRest(const uint8_t* data, int32_t blockSize, int32_t rest, uint8_t* target) {
  if (rest > 0) std::memcpy(target, data + blockSize, static_cast<size_t>(rest));
}

}  // namespace

uint32_t RsaTransformFixed(const uint8_t* exponent, int32_t exponentSize, const uint8_t* modulus,
                           int32_t modulusSize, const uint8_t* data, int32_t dataSize,
                           uint8_t* output) {
  exponentSize = std::max(exponentSize, 0);
  dataSize = std::max(dataSize, 0);
  const int32_t blockSize = std::min(exponentSize, dataSize);
  const Transformed r =
      Transform(exponent, exponentSize, modulus, modulusSize, data, dataSize, blockSize);
  const int32_t byteCount = r.value.length() * 4;
  if (output == nullptr) return static_cast<uint32_t>(byteCount + r.rest);
  const std::unique_ptr<uint8_t[]> bytes(r.value.GetBytes());
  std::memcpy(output, bytes.get(), static_cast<size_t>(byteCount));
  CopyRest(data, blockSize, r.rest, output + byteCount);
  return static_cast<uint32_t>(byteCount);
}

uint32_t RsaTransformMinimal(const uint8_t* exponent, int32_t exponentSize, const uint8_t* modulus,
                             int32_t modulusSize, const uint8_t* data, int32_t dataSize,
                             uint8_t* output) {
  modulusSize = std::max(modulusSize, 0);
  dataSize = std::max(dataSize, 0);
  const int32_t blockSize = std::min(dataSize, modulusSize);
  Transformed r =
      Transform(exponent, exponentSize, modulus, modulusSize, data, dataSize, blockSize);
  const int32_t byteCount = r.value.length() * 4;
  if (output == nullptr) return static_cast<uint32_t>(byteCount + r.rest);
  const int32_t written = r.value.ExportMinimal(output, byteCount);
  CopyRest(data, blockSize, r.rest, output + written);
  return static_cast<uint32_t>(byteCount);
}

}  // namespace vsm
