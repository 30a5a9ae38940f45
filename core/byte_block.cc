#include "core/byte_block.h"

#include <cstring>
#include <new>
#include <utility>

namespace vsm {

ByteBlock::ByteBlock(ByteBlock&& other) noexcept
    : data_(std::move(other.data_)), length_(std::exchange(other.length_, 0)) {}

ByteBlock& ByteBlock::operator=(ByteBlock&& other) noexcept {
  data_ = std::move(other.data_);
  length_ = std::exchange(other.length_, 0);
  return *this;
}

ByteBlock ByteBlock::CopyOf(const void* data, uint32_t length) {
  ByteBlock block;
  if (data == nullptr) return block;
  block.data_.reset(static_cast<uint8_t*>(std::malloc(length > 0 ? length : 1)));
  if (!block.data_) throw std::bad_alloc();
  if (length > 0) std::memcpy(block.data_.get(), data, length);
  block.length_ = length;
  return block;
}

void ByteBlock::reset() {
  data_.reset();
  length_ = 0;
}

}  // namespace vsm
