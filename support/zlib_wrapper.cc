#include "support/zlib_wrapper.h"

#include <zlib.h>

#include <cstdlib>
#include <cstring>

namespace vsm {

const char kZlibStreamVersion[] = "1.2.6";

namespace {

constexpr uint64_t kLargestBlock = 0xFFFFFFFF;  // zlib counts in 32 bits

void StoreSize(uint64_t* targetSize, uint64_t size) {
  if (targetSize != nullptr) *targetSize = size;
}

}  // namespace

CZlibWrapper::~CZlibWrapper() = default;

uint8_t* CZlibWrapper::Uncompress(const uint8_t* source, int64_t sourceSize,
                                  uint64_t targetCapacity, uint64_t* targetSize) {
  StoreSize(targetSize, 0);
  // The sizes are checked before the block is taken, so that an absurd capacity never reaches
  // the allocator.
  if (sourceSize < 0 || static_cast<uint64_t>(sourceSize) > kLargestBlock ||
      targetCapacity > kLargestBlock || (source == nullptr && sourceSize > 0)) {
    return nullptr;
  }
  auto* target = static_cast<uint8_t*>(std::malloc(targetCapacity));
  if (target == nullptr) return nullptr;

  z_stream stream;
  std::memset(&stream, 0, sizeof(stream));
  stream.next_in = const_cast<Bytef*>(source);
  stream.avail_in = static_cast<uInt>(sourceSize);
  stream.next_out = target;
  stream.avail_out = static_cast<uInt>(targetCapacity);
  if (inflateInit_(&stream, kZlibStreamVersion, static_cast<int>(sizeof(z_stream))) != Z_OK) {
    std::free(target);
    return nullptr;
  }
  // The stream must end within the block: a target that is too small is a failure.
  const bool finished = inflate(&stream, Z_FINISH) == Z_STREAM_END;
  if (inflateEnd(&stream) != Z_OK || !finished) {
    std::free(target);
    return nullptr;
  }
  StoreSize(targetSize, stream.total_out);
  return target;
}

uint8_t* CZlibWrapper::Compress(const uint8_t* source, uint64_t sourceSize, int level,
                                uint64_t* targetSize) {
  StoreSize(targetSize, 0);
  if (sourceSize > kLargestBlock || (source == nullptr && sourceSize > 0)) return nullptr;
  const uint64_t workSize = (sourceSize >> 14) + (sourceSize >> 12) + sourceSize + 11;
  auto* work = static_cast<uint8_t*>(std::malloc(workSize));
  if (work == nullptr) return nullptr;

  z_stream stream;
  std::memset(&stream, 0, sizeof(stream));
  if (deflateInit_(&stream, level, kZlibStreamVersion, static_cast<int>(sizeof(z_stream))) !=
      Z_OK) {
    std::free(work);
    return nullptr;
  }
  stream.next_in = const_cast<Bytef*>(source);
  stream.avail_in = static_cast<uInt>(sourceSize);
  stream.next_out = work;
  // The work size passes 32 bits only for sources within a few MiB of 4 GiB; the room is then
  // cut to 32 bits, and a stream that doesn't fit fails like any other.
  stream.avail_out = static_cast<uInt>(workSize > kLargestBlock ? kLargestBlock : workSize);
  const bool finished = deflate(&stream, Z_FINISH) == Z_STREAM_END;
  if (deflateEnd(&stream) != Z_OK || !finished) {
    std::free(work);
    return nullptr;
  }
  // The work block is sized for the worst case; the caller gets a block of the exact length.
  const uint64_t length = stream.total_out;
  auto* target = static_cast<uint8_t*>(std::malloc(length));
  if (target != nullptr) std::memcpy(target, work, length);
  std::free(work);
  if (target != nullptr) StoreSize(targetSize, length);
  return target;
}

}  // namespace vsm
