// What the row loops of the geometry, tone, filter and drawing operations share: row addresses,
// the depth classes that have loops of their own, bounded reads of a block, and the percentage
// that progress reports. Internal to the image layer.
#ifndef VSM_IMAGE_PIXEL_WALK_H_
#define VSM_IMAGE_PIXEL_WALK_H_

#include <cstddef>
#include <cstdint>
#include <cstring>

#include "image/image.h"

namespace vsm {

inline uint8_t* RowAt(const ImageInfo& info, int32_t y) {
  return info.bits + static_cast<size_t>(y) * info.stride;
}

// Bytes of the pixel array that lie inside the block, at most imageSize.
inline size_t PixelBytesInBlock(const ImageInfo& info) {
  if (info.dib == nullptr || info.bits < info.dib) return 0;
  const size_t offset = static_cast<size_t>(info.bits - info.dib);
  if (offset >= info.dibSize) return 0;
  const size_t available = info.dibSize - offset;
  return available < info.imageSize ? available : info.imageSize;
}

// Whether the pixel rows (stride * height bytes behind `bits`) lie inside the block.
inline bool RowsInBlock(const ImageInfo& info) {
  if (info.dib == nullptr || info.bits < info.dib || info.height < 0) return false;
  const uint64_t offset = static_cast<uint64_t>(info.bits - info.dib);
  return offset + static_cast<uint64_t>(info.stride) * static_cast<uint32_t>(info.height) <=
         info.dibSize;
}

// 24-bit pixels with no palette: the loops read and write three bytes directly.
inline bool IsPlain24(const ImageInfo& info) { return info.bitCount == 24 && info.colorsUsed == 0; }

// 1, 4 or 8 bits with a palette: the loops move indices.
inline bool IsIndexed(const ImageInfo& info) {
  return (info.bitCount == 1 || info.bitCount == 4 || info.bitCount == 8) && info.colorsUsed != 0;
}

// Whether rows of `from` can be copied byte for byte into rows of `to`: one of the kit's own
// depths on both sides, and rows at least as long. (A 16- or 32-bit source has a 24-bit
// temporary, whose rows hold other bytes.)
inline bool RowsCopyAsBytes(const ImageInfo& from, const ImageInfo& to) {
  const uint32_t bits = from.bitCount;
  return (bits == 1 || bits == 4 || bits == 8 || bits == 24) && bits == to.bitCount &&
         from.stride <= to.stride;
}

// row * 100 / total in 32-bit signed arithmetic, wrapping as the hardware does; 0 for total 0.
inline uint32_t PercentOf(int32_t row, int32_t total) {
  const int32_t scaled = static_cast<int32_t>(static_cast<uint32_t>(row) * 100u);
  return total == 0 ? 0 : static_cast<uint32_t>(static_cast<int64_t>(scaled) / total);
}

// Copies `length` bytes from `offset` of a block of `size` bytes; what lies past the block reads
// as 0.
inline void CopyFromBlock(uint8_t* to, const uint8_t* block, uint64_t size, uint64_t offset,
                          uint64_t length) {
  const uint64_t present = offset >= size ? 0 : (size - offset < length ? size - offset : length);
  if (present != 0) std::memcpy(to, block + offset, present);
  std::memset(to + present, 0, length - present);
}

// The grey of a pixel with these channels; the weights sum to 1024.
inline uint8_t GreyOf(uint32_t blue, uint32_t green, uint32_t red) {
  return static_cast<uint8_t>((green * 601 + blue * 117 + red * 306) >> 10);
}

inline uint8_t GreyOfColor(ColorValue color) {
  return GreyOf(color & 0xFF, color >> 8 & 0xFF, color >> 16 & 0xFF);
}

}  // namespace vsm

#endif  // VSM_IMAGE_PIXEL_WALK_H_
