// Checks of foreign packed DIBs before the kit walks them. Internal to the image layer.
//
// The kit takes a block's header at its word only where it must: a block the tracked heap
// knows is held to its recorded size, and a header the kit can't hold (sizes below 1, a header
// other than 40 bytes, a depth the kit has no reading for, more than 256 colours, a layout past
// 4 GB) is refused whatever the block.
#ifndef VSM_IMAGE_DIB_IMPORT_H_
#define VSM_IMAGE_DIB_IMPORT_H_

#include <cstdint>

namespace vsm {

// Bytes the header at `dib` lays out (header, palette, rows), or 0 when the kit can't hold it.
uint64_t HoldableDibSize(const void* dib);
// Whether `dib` can be attached: a holdable header whose layout fits the block when the tracked
// heap knows the block's size. An unknown block (size 0) is taken at its header's word.
bool TrackedDibFits(const void* dib);

}  // namespace vsm

#endif  // VSM_IMAGE_DIB_IMPORT_H_
