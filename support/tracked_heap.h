// The tracked heap: malloc blocks that remember their size.
//
// Shaped after the Win32 global-memory calls: a flags argument, and lock/unlock calls that do
// nothing here. A process-wide map from block address to size, guarded by a CRWLock of its own,
// records every block. Thread-safe; the block operations themselves run outside the lock.
// Blocks from TrackedAlloc go back through TrackedFree. The map lives from load to exit; calls
// made later still allocate and free, but record nothing and give 0 sizes.
#ifndef VSM_SUPPORT_TRACKED_HEAP_H_
#define VSM_SUPPORT_TRACKED_HEAP_H_

#include <cstddef>
#include <cstdint>

namespace vsm {

// Flag of TrackedAlloc: zero the new block.
constexpr uint32_t kTrackedZeroFill = 64;
// Flag value CMemBuffer passes; it has no effect.
constexpr uint32_t kTrackedMoveable = 2;

// malloc(size); null on failure. Records the size; zeroes the block when `flags` has 64.
void* TrackedAlloc(uint32_t flags, size_t size);
// Null does nothing. Forgets the block, then frees it.
void TrackedFree(void* block);
// The recorded size; 0 for null. An unknown block is recorded with size 0 and gives 0.
uint64_t TrackedSize(void* block);
// realloc; null on failure, leaving the old block and its record alone. Records the new address
// with `size`, then forgets the old address. When realloc keeps the address both are the same
// record, which is then gone: TrackedSize gives 0 for that live block. Callers must not count on
// TrackedSize after a resize. `flags` is ignored. A `size` of 0 still keeps a one-byte block,
// so that null always means the old block is untouched.
void* TrackedRealloc(void* block, size_t size, uint32_t flags);
// Gives `block`.
void* TrackedLock(void* block);
// Gives 1.
int TrackedUnlock(void* block);

}  // namespace vsm

#endif  // VSM_SUPPORT_TRACKED_HEAP_H_
