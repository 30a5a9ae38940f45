// Exact modular powers on plain word arrays: the fast method behind CBigInteger::ModPow.
//
// Numbers are little-endian vectors of 32-bit words. Both functions need a base below the
// modulus, a modulus of at least 2 whose top word is non-zero, and an exponent with at least one
// set bit; they give base^exponent mod modulus in as many words as the modulus has. The exponent
// is read in sliding windows and every buffer is allocated once per call. Thread-safe: no state.
#ifndef VSM_BIGINT_MODULAR_POWER_H_
#define VSM_BIGINT_MODULAR_POWER_H_

#include <cstdint>
#include <vector>

namespace vsm {

// For an odd modulus, by Montgomery multiplication on 64-bit limbs. `lifted` is the base in
// Montgomery form: base * 2^(64 * limbs) mod modulus, with limbs = (modulus words + 1) / 2.
std::vector<uint32_t> MontgomeryPower(const std::vector<uint32_t>& modulus,
                                      const std::vector<uint32_t>& lifted,
                                      const std::vector<uint32_t>& exponent);

// For any modulus, by Barrett reduction on 32-bit words. `constant` is 2^(64 * k) / modulus
// rounded down, for k the modulus's words.
std::vector<uint32_t> BarrettPower(const std::vector<uint32_t>& modulus,
                                   const std::vector<uint32_t>& constant,
                                   const std::vector<uint32_t>& base,
                                   const std::vector<uint32_t>& exponent);

}  // namespace vsm

#endif  // VSM_BIGINT_MODULAR_POWER_H_
