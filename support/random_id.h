// Random hexadecimal identifiers.
//
// Each byte comes from a fresh std::random_device("default") seeding a fresh std::mt19937, drawn
// uniformly from 0 to 255. That costs a 624-word generator per byte, which is of no concern: the
// identifier is made once at start-up. The std::random_device may throw std::runtime_error when
// the system has no random source; that is the only exception and it passes to the caller.
// Thread-safe; no state is kept between calls.
#ifndef VSM_SUPPORT_RANDOM_ID_H_
#define VSM_SUPPORT_RANDOM_ID_H_

#include <cstdint>
#include <string>

namespace vsm {

// 2 * count lower-case hexadecimal digits, two per byte, zero-padded. A count below 1 gives "".
std::string GenerateRandomHexString(int32_t count);
// Zeroes 1024 bytes of `output` and copies 32 random hexadecimal digits into it.
void GetRandomId(char* output);

}  // namespace vsm

#endif  // VSM_SUPPORT_RANDOM_ID_H_
