// The two fixed palettes of the kit, as 0xRRGGBB with spare byte 0: 16 entries for 4-bit
// pictures and 256 for 8-bit ones. SetStandardPalette installs them, and ReduceBitDepth maps to
// them when it is given no palette.
#ifndef VSM_IMAGE_STANDARD_PALETTES_H_
#define VSM_IMAGE_STANDARD_PALETTES_H_

#include <cstdint>

namespace vsm {

extern const uint32_t kStandardPalette16[16];
extern const uint32_t kStandardPalette256[256];

}  // namespace vsm

#endif  // VSM_IMAGE_STANDARD_PALETTES_H_
