// The process-wide image slot, which stands where a clipboard would be on another platform: one
// packed DIB and one flag byte, guarded by a CRWLock. The kit itself never calls it; whoever
// shares pictures between callers does. All four functions are thread-safe.
#ifndef VSM_IMAGE_IMAGE_SLOT_H_
#define VSM_IMAGE_IMAGE_SLOT_H_

#include <cstdint>

namespace vsm {

// Replaces the slot's block by a copy of `dib` (TrackedSize bytes; `dib` stays the caller's).
// Null, or a block the tracked heap doesn't know, empties the slot.
void StoreClipboardDib(const void* dib);
// A new plain block the caller owns (NormaliseDib of the slot's block), or null when the slot is
// empty or its block can't be normalised. The slot keeps its block.
uint8_t* FetchClipboardDib();
// A byte stored beside the block; the kit gives it no meaning.
void SetClipboardFlag(uint8_t flag);
uint8_t GetClipboardFlag();

}  // namespace vsm

#endif  // VSM_IMAGE_IMAGE_SLOT_H_
