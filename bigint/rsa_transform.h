// The raw RSA block transformation m^e mod n on big-endian byte strings, in two output forms.
//
// Both read the exponent, the modulus and the first part of `data` as CBigInteger byte numbers,
// raise the block to the exponent modulo the modulus, and give an unsigned byte count. There is
// no padding, no block type and no check of any structure. A null `output` asks for the size:
// the transformed block's `length * 4` plus the bytes of `data` behind the block. With an
// `output` of that size, the result is the block's `length * 4` alone.
//
// The two forms disagree on purpose, and callers depend on each:
//   - RsaTransformFixed takes as the block the first min(exponentSize, dataSize) bytes (the
//     exponent's size, not the modulus's) and writes the result word-aligned, up to three leading
//     zero bytes kept, with the rest of `data` right behind those `length * 4` bytes.
//   - RsaTransformMinimal takes min(dataSize, modulusSize) bytes and writes the result without
//     leading zero bytes (the rest of the `length * 4` bytes stay zero), with the rest of `data`
//     right behind the value's own bytes. Its result is still `length * 4`: a caller learns the
//     real size only from the number.
// A negative size counts as 0. A zero modulus gives a number without meaning; a modulus of more
// than 16352 bits gives 0 (see CBigInteger::ModPow). Thread-safe: all state is local.
#ifndef VSM_BIGINT_RSA_TRANSFORM_H_
#define VSM_BIGINT_RSA_TRANSFORM_H_

#include <cstdint>

namespace vsm {

uint32_t RsaTransformFixed(const uint8_t* exponent, int32_t exponentSize, const uint8_t* modulus,
                           int32_t modulusSize, const uint8_t* data, int32_t dataSize,
                           uint8_t* output);
uint32_t RsaTransformMinimal(const uint8_t* exponent, int32_t exponentSize, const uint8_t* modulus,
                             int32_t modulusSize, const uint8_t* data, int32_t dataSize,
                             uint8_t* output);

}  // namespace vsm

#endif  // VSM_BIGINT_RSA_TRANSFORM_H_
