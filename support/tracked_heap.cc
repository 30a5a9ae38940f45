#include "support/tracked_heap.h"

#include <atomic>
#include <cstdlib>
#include <cstring>
#include <map>
#include <mutex>
#include <new>

#include "support/rw_lock.h"

namespace vsm {

namespace {

// Constant-initialised and trivially destroyed, so it can be read at any time, also after the
// heap's map has been destroyed at exit.
std::atomic<bool> heapDestroyed{false};

struct TrackedHeap {
  ~TrackedHeap() { heapDestroyed.store(true); }

  CRWLock lock;
  // TrackedSize enters unknown blocks while it holds only the read side, as it always has; this
  // mutex keeps two such callers from changing the map at the same time.
  std::mutex readSideMutex;
  std::map<void*, uint64_t> sizes;
};

// Null once the heap has been destroyed at exit: blocks freed by destructors that run later
// still go back to the C heap, they are just no longer recorded.
TrackedHeap* Heap() {
  if (heapDestroyed.load()) return nullptr;
  static TrackedHeap heap;
  return &heap;
}

// Built while the library loads, so that it is destroyed after every object built later.
[[maybe_unused]] const bool heapBuiltAtLoad = Heap() != nullptr;

}  // namespace

void* TrackedAlloc(uint32_t flags, size_t size) {
  void* block = std::malloc(size);
  if (block == nullptr) return nullptr;
  if (TrackedHeap* heap = Heap()) {
    ScopedWriteLock guard(heap->lock);
    if (guard.locked()) {
      try {
        heap->sizes[block] = size;
      } catch (const std::bad_alloc&) {
        std::free(block);
        return nullptr;
      }
    }
  }
  if ((flags & kTrackedZeroFill) != 0) std::memset(block, 0, size);
  return block;
}

void TrackedFree(void* block) {
  if (block == nullptr) return;
  if (TrackedHeap* heap = Heap()) {
    ScopedWriteLock guard(heap->lock);
    if (guard.locked()) heap->sizes.erase(block);
  }
  std::free(block);
}

uint64_t TrackedSize(void* block) {
  if (block == nullptr) return 0;
  TrackedHeap* heap = Heap();
  if (heap == nullptr) return 0;
  ScopedReadLock guard(heap->lock);
  std::lock_guard<std::mutex> entering(heap->readSideMutex);
  try {
    return heap->sizes[block];
  } catch (const std::bad_alloc&) {
    return 0;
  }
}

void* TrackedRealloc(void* block, size_t size, uint32_t flags) {
  // Never realloc to 0 bytes: that frees the block and gives null, which callers would read as
  // "failed, old block still there".
  void* moved = std::realloc(block, size == 0 ? 1 : size);
  if (moved == nullptr) return nullptr;
  if (TrackedHeap* heap = Heap()) {
    ScopedWriteLock guard(heap->lock);
    if (guard.locked()) {
      // Deliberately enter the new address first and then forget the old one: when realloc kept
      // the address the entry is gone, and callers have always had to live without a size
      // after a resize.
      try {
        heap->sizes[moved] = size;
      } catch (const std::bad_alloc&) {
      }
      heap->sizes.erase(block);
    }
  }
  return moved;
}

void* TrackedLock(void* block) { return block; }

int TrackedUnlock(void* block) { return 1; }

}  // namespace vsm
