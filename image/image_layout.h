// Byte-level helpers shared by the image sources: row sizes, header fields, and colour packing.
// Internal to the image layer.
#ifndef VSM_IMAGE_IMAGE_LAYOUT_H_
#define VSM_IMAGE_IMAGE_LAYOUT_H_

#include <cstdint>
#include <cstring>

#include "image/image.h"

namespace vsm {

// Bytes of one row padded to four bytes: ((width * bits + 31) / 32) * 4, truncating towards zero.
inline int64_t RowBytes(int64_t width, int64_t bits) { return (width * bits + 31) / 32 * 4; }

// Source pixels per destination pixel, width / newWidth and height / newHeight, in 32-bit floats
// as every resizing loop takes them.
inline float ScaleOf(int32_t size, int32_t newSize) {
  return static_cast<float>(size) / static_cast<float>(newSize);
}

// The fields of a 40-byte header that sizes depend on.
struct DibHeaderFields {
  uint32_t headerSize;
  int32_t width;
  int32_t height;
  uint16_t bitCount;
  uint32_t colorsUsed;
};

inline DibHeaderFields ReadDibHeader(const void* header) {
  const uint8_t* bytes = static_cast<const uint8_t*>(header);
  DibHeaderFields fields;
  std::memcpy(&fields.headerSize, bytes, 4);
  std::memcpy(&fields.width, bytes + 4, 4);
  std::memcpy(&fields.height, bytes + 8, 4);
  std::memcpy(&fields.bitCount, bytes + 14, 2);
  std::memcpy(&fields.colorsUsed, bytes + 32, 4);
  return fields;
}

// A colour from its three channels; byte 3 is 0.
inline ColorValue MakeColor(uint32_t red, uint32_t green, uint32_t blue) {
  return red << 16 | green << 8 | blue;
}

// The colour of three pixel bytes (blue, green, red).
inline ColorValue ColorOfBytes(const uint8_t* pixel) {
  return MakeColor(pixel[2], pixel[1], pixel[0]);
}

// A palette entry read as a little-endian word.
inline ColorValue EntryColor(const uint8_t* entry) {
  return static_cast<ColorValue>(entry[0]) | entry[1] << 8 | entry[2] << 16 |
         static_cast<ColorValue>(entry[3]) << 24;
}

inline void StoreEntry(uint8_t* entry, ColorValue color) {
  entry[0] = static_cast<uint8_t>(color);
  entry[1] = static_cast<uint8_t>(color >> 8);
  entry[2] = static_cast<uint8_t>(color >> 16);
  entry[3] = static_cast<uint8_t>(color >> 24);
}

// The index of pixel x in a row of 1, 4 or 8 bits.
inline uint8_t IndexInRow(const uint8_t* row, int32_t x, uint32_t bits) {
  switch (bits) {
    case 8:
      return row[x];
    case 4:
      return (x & 1) != 0 ? row[x >> 1] & 0x0F : row[x >> 1] >> 4;
    case 1:
      return (row[x >> 3] >> (7 - (x & 7))) & 1;
    default:
      return 0;
  }
}

// Writes the index of pixel x into a row of 1, 4 or 8 bits, keeping the rest of the byte.
inline void StoreIndexInRow(uint8_t* row, int32_t x, uint32_t bits, uint8_t index) {
  switch (bits) {
    case 8:
      row[x] = index;
      break;
    case 4: {
      uint8_t& byte = row[x >> 1];
      byte = (x & 1) != 0 ? (byte & 0xF0) | (index & 0x0F)
                          : static_cast<uint8_t>((byte & 0x0F) | (index & 0x0F) << 4);
      break;
    }
    case 1: {
      uint8_t& byte = row[x >> 3];
      const uint8_t bit = static_cast<uint8_t>(0x80 >> (x & 7));
      byte = (index & 1) != 0 ? byte | bit : byte & static_cast<uint8_t>(~bit);
      break;
    }
    default:
      break;
  }
}

// Whether operations may take their specialised loops. They are on; tests turn them off to
// compare each specialised loop with the plain per-pixel one on the same pictures.
bool FastLoopsEnabled();
void EnableFastLoops(bool enabled);

}  // namespace vsm

#endif  // VSM_IMAGE_IMAGE_LAYOUT_H_
