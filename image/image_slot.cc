#include "image/image_slot.h"

#include <cstring>

#include "image/image.h"
#include "support/rw_lock.h"
#include "support/tracked_heap.h"

namespace vsm {

namespace {

struct ImageSlot {
  CRWLock lock;
  uint8_t* block = nullptr;
  uint8_t flag = 0;
};

// Made on first use and never destroyed, so that callers running while the process ends still
// find the lock.
ImageSlot& Slot() {
  static ImageSlot* slot = new ImageSlot;
  return *slot;
}

// The write side for the length of a scope.
class SlotWriter {
 public:
  SlotWriter() : slot_(Slot()) { slot_.lock.WriteLock(INFINITE_WAIT); }
  ~SlotWriter() { slot_.lock.WriteUnlock(); }
  SlotWriter(const SlotWriter&) = delete;
  SlotWriter& operator=(const SlotWriter&) = delete;
  ImageSlot& slot() { return slot_; }

 private:
  ImageSlot& slot_;
};

}  // namespace

void StoreClipboardDib(const void* dib) {
  SlotWriter writer;
  ImageSlot& slot = writer.slot();
  TrackedFree(slot.block);
  slot.block = nullptr;
  const uint64_t size = dib == nullptr ? 0 : TrackedSize(const_cast<void*>(dib));
  if (size == 0) return;
  slot.block = static_cast<uint8_t*>(TrackedAlloc(kTrackedZeroFill, size));
  if (slot.block != nullptr) std::memcpy(slot.block, dib, size);
}

uint8_t* FetchClipboardDib() {
  SlotWriter writer;
  if (writer.slot().block == nullptr) return nullptr;
  CImage normaliser;
  return normaliser.NormaliseDib(writer.slot().block);
}

void SetClipboardFlag(uint8_t flag) {
  SlotWriter writer;
  writer.slot().flag = flag;
}

uint8_t GetClipboardFlag() {
  Slot().lock.ReadLock(INFINITE_WAIT);
  const uint8_t flag = Slot().flag;
  Slot().lock.ReadUnlock();
  return flag;
}

}  // namespace vsm
