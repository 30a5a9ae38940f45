#include "bigint/rsa_transform.h"

#include <algorithm>
#include <cstring>
#include <memory>

#include "bigint/big_integer.h"

namespace vsm {

namespace {

// m^e mod n for the block at the start of `data`, and where the rest of `data` begins.
struct Transformed {
  CBigInteger value;
  int32_t blockSize;
  int32_t rest;
  int32_t byteCount;  // value.length() * 4
};

// The block is min(exponentSize, dataSize) bytes when `exponentLimitsBlock`, otherwise
// min(dataSize, modulusSize).
Transformed TransformBlock(const uint8_t* exponent, int32_t exponentSize, const uint8_t* modulus,
                           int32_t modulusSize, const uint8_t* data, int32_t dataSize,
                           bool exponentLimitsBlock) {
  exponentSize = std::max(exponentSize, 0);
  modulusSize = std::max(modulusSize, 0);
  dataSize = std::max(dataSize, 0);
  const int32_t blockSize = std::min(exponentLimitsBlock ? exponentSize : modulusSize, dataSize);
  const CBigInteger e(exponent, exponentSize);
  const CBigInteger n(modulus, modulusSize);
  const CBigInteger m(data, blockSize);
  Transformed result{m.ModPow(e, n), blockSize, dataSize - blockSize, 0};
  result.byteCount = result.value.length() * 4;
  return result;
}

void CopyRest(const uint8_t* data, const Transformed& block, uint8_t* target) {
  if (block.rest > 0) std::memcpy(target, data + block.blockSize, static_cast<size_t>(block.rest));
}

}  // namespace

uint32_t RsaTransformFixed(const uint8_t* exponent, int32_t exponentSize, const uint8_t* modulus,
                           int32_t modulusSize, const uint8_t* data, int32_t dataSize,
                           uint8_t* output) {
  const Transformed block =
      TransformBlock(exponent, exponentSize, modulus, modulusSize, data, dataSize, true);
  if (output == nullptr) return static_cast<uint32_t>(block.byteCount + block.rest);
  const std::unique_ptr<uint8_t[]> bytes(block.value.GetBytes());
  std::memcpy(output, bytes.get(), static_cast<size_t>(block.byteCount));
  CopyRest(data, block, output + block.byteCount);
  return static_cast<uint32_t>(block.byteCount);
}

uint32_t RsaTransformMinimal(const uint8_t* exponent, int32_t exponentSize, const uint8_t* modulus,
                             int32_t modulusSize, const uint8_t* data, int32_t dataSize,
                             uint8_t* output) {
  Transformed block =
      TransformBlock(exponent, exponentSize, modulus, modulusSize, data, dataSize, false);
  if (output == nullptr) return static_cast<uint32_t>(block.byteCount + block.rest);
  const int32_t written = block.value.ExportMinimal(output, block.byteCount);
  CopyRest(data, block, output + written);
  return static_cast<uint32_t>(block.byteCount);
}

}  // namespace vsm
