#include "support/mem_buffer.h"

#include <cstring>

#include "support/tracked_heap.h"

namespace vsm {

CMemBuffer::CMemBuffer(uint32_t growBytes)
    : growBytes_(growBytes),
      position_(0),
      capacity_(0),
      length_(0),
      buffer_(nullptr),
      ownsBuffer_(true),
      handle_(nullptr) {}

CMemBuffer::CMemBuffer(uint8_t* block, uint32_t size, bool ownsBuffer, uint32_t growBytes)
    : CMemBuffer(growBytes) {
  Attach(block, size, ownsBuffer, growBytes);
}

CMemBuffer::~CMemBuffer() {
  // Runs with this class's hooks, not a subclass's: by now the subclass part is gone.
  if (buffer_ != nullptr) Close();
}

uint8_t* CMemBuffer::Alloc(uint32_t size) {
  handle_ = TrackedAlloc(kTrackedMoveable, size);
  return static_cast<uint8_t*>(handle_);
}

uint8_t* CMemBuffer::Realloc(uint8_t* block, uint32_t size) {
  if (handle_ == nullptr) return nullptr;
  void* moved = TrackedRealloc(handle_, size, kTrackedMoveable);
  if (moved != nullptr) handle_ = moved;
  return static_cast<uint8_t*>(moved);
}

void CMemBuffer::Free(uint8_t* block) {
  if (block == nullptr) return;
  TrackedFree(handle_ != nullptr ? handle_ : block);
}

int CMemBuffer::GrowBuffer(uint32_t size) {
  if (capacity_ >= size) return 1;
  if (growBytes_ == 0) return 0;
  // Linear growth, never doubling; computed wide so that it can't wrap past 32 bits.
  uint64_t newCapacity = capacity_;
  while (newCapacity < size) newCapacity += growBytes_;
  if (newCapacity > 0xFFFFFFFFu) return 0;
  uint8_t* grown = buffer_ != nullptr ? Realloc(buffer_, static_cast<uint32_t>(newCapacity))
                                      : Alloc(static_cast<uint32_t>(newCapacity));
  if (grown == nullptr) return 0;
  buffer_ = grown;
  capacity_ = static_cast<uint32_t>(newCapacity);
  return 1;
}

uint32_t CMemBuffer::GetPosition() { return position_; }

uint32_t CMemBuffer::Seek(int64_t offset, uint32_t origin) {
  int64_t target;
  if (origin == 0) {
    target = offset;
  } else if (origin == 1) {
    target = static_cast<int64_t>(position_) + offset;
  } else if (origin == 2 && offset <= 0) {
    target = static_cast<int64_t>(length_) + offset;
  } else {
    return position_;
  }
  if (target < 0 || target > 0xFFFFFFFF) return position_;
  uint32_t newPosition = static_cast<uint32_t>(target);
  if (newPosition > length_ && GrowBuffer(newPosition) == 0) newPosition = length_;
  position_ = newPosition;
  return newPosition;
}

int CMemBuffer::SetLength(uint32_t newLength) {
  if (capacity_ < newLength && GrowBuffer(newLength) == 0) return 0;
  if (position_ > newLength) position_ = newLength;
  length_ = newLength;
  return 1;
}

uint32_t CMemBuffer::Read(void* target, uint32_t count) {
  if (target == nullptr || count == 0) return 0;
  if (position_ > length_) return 0;
  uint32_t available = length_ - position_;
  if (count > available) count = available;
  if (count == 0) return 0;
  std::memcpy(target, buffer_ + position_, count);
  position_ += count;
  return count;
}

uint32_t CMemBuffer::Write(const void* source, uint32_t count) {
  if (source == nullptr || count == 0) return 0;
  uint32_t end = position_ + count;
  if (end < position_) return 0;
  if (end > capacity_ && GrowBuffer(end) == 0) return 0;
  std::memcpy(buffer_ + position_, source, count);
  position_ = end;
  if (position_ > length_) length_ = position_;
  return count;
}

void CMemBuffer::Close() {
  position_ = 0;
  capacity_ = 0;
  length_ = 0;
  if (buffer_ != nullptr && ownsBuffer_) Free(buffer_);
  buffer_ = nullptr;
  handle_ = nullptr;
}

uint32_t CMemBuffer::GetLength() { return length_; }

void CMemBuffer::Attach(uint8_t* block, uint32_t size, bool ownsBuffer, uint32_t growBytes) {
  growBytes_ = growBytes;
  position_ = 0;
  capacity_ = size;
  length_ = growBytes != 0 ? 0 : size;
  buffer_ = block;
  ownsBuffer_ = ownsBuffer;
  handle_ = nullptr;
}

uint8_t* CMemBuffer::Detach() {
  uint8_t* block = buffer_;
  position_ = 0;
  capacity_ = 0;
  length_ = 0;
  buffer_ = nullptr;
  handle_ = nullptr;
  return block;
}

uint8_t* CMemBuffer::DetachCopy() {
  uint8_t* copy = static_cast<uint8_t*>(TrackedAlloc(0, length_ != 0 ? length_ : 1));
  if (copy == nullptr) return nullptr;
  if (length_ != 0) {
    std::memcpy(copy, buffer_, length_);
  } else {
    copy[0] = 0;
  }
  Close();
  return copy;
}

int CMemBuffer::WriteString(const char* text) {
  if (text == nullptr) return 0;
  size_t size = std::strlen(text);
  if (size > 0xFFFFFFFFu) return 0;
  return Write(text, static_cast<uint32_t>(size)) == size ? 1 : 0;
}

int CMemBuffer::WriteBlock(const void* source, uint32_t count) {
  // A count without its data would leave the stream unreadable.
  if (source == nullptr && count != 0) return 0;
  if (Write(&count, sizeof(count)) != sizeof(count)) return 0;
  if (count == 0) return 1;
  return Write(source, count) == count ? 1 : 0;
}

int CMemBuffer::WriteBlockString(const char* text) {
  if (text == nullptr) return WriteBlock(nullptr, 0);
  size_t size = std::strlen(text);
  if (size > 0xFFFFFFFFu) return 0;
  return WriteBlock(text, static_cast<uint32_t>(size));
}

uint32_t CMemBuffer::ReadBlock(uint8_t** block, uint32_t offset, uint32_t limit) {
  uint32_t count = 0;
  if (Read(&count, sizeof(count)) != sizeof(count) || count == 0 || block == nullptr) return 0;
  if (*block != nullptr) {
    if (limit != 0xFFFFFFFFu && limit < count) count = limit;
    return Read(*block + offset, count);
  }
  if (limit != 0xFFFFFFFFu || offset != 0) return 0;
  // A count larger than what is left can only come from a damaged stream; the block needs room
  // for no more than Read can deliver.
  uint32_t left = length_ > position_ ? length_ - position_ : 0;
  uint64_t size = static_cast<uint64_t>(count < left ? count : left) + 1;
  *block = static_cast<uint8_t*>(TrackedAlloc(kTrackedZeroFill, size));
  if (*block == nullptr) return 0;
  return Read(*block, count);
}

}  // namespace vsm
