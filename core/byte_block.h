// ByteBlock: a malloc block of bytes with its length and exactly one owner.
//
// The blocks a command carries across the host boundary (the body that came with it, the
// binary that goes back with its answer) come from malloc and go back with free(). A ByteBlock
// moves from owner to owner and is never copied; a moved-from or reset block is empty (null,
// length 0). A copy of a zero-length but non-null block is non-null, so that a host that passed
// an empty block still sees one. Not thread-safe: one owner at a time.
#ifndef VSM_CORE_BYTE_BLOCK_H_
#define VSM_CORE_BYTE_BLOCK_H_

#include <cstdint>
#include <cstdlib>
#include <memory>

namespace vsm {

class ByteBlock {
 public:
  ByteBlock() = default;
  ByteBlock(ByteBlock&& other) noexcept;
  ByteBlock& operator=(ByteBlock&& other) noexcept;

  // `length` bytes copied from `data`; empty for a null `data`. Raises std::bad_alloc.
  static ByteBlock CopyOf(const void* data, uint32_t length);

  const uint8_t* data() const { return data_.get(); }
  uint32_t length() const { return length_; }
  void reset();

 private:
  struct Free {
    void operator()(uint8_t* block) const { std::free(block); }
  };
  std::unique_ptr<uint8_t, Free> data_;
  uint32_t length_ = 0;
};

}  // namespace vsm

#endif  // VSM_CORE_BYTE_BLOCK_H_
