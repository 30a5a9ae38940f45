// Pictures for the image tests: random pixels and palettes at any depth, and byte comparison of
// whole blocks.
#ifndef VSM_TESTS_IMAGE_TEST_PICTURES_H_
#define VSM_TESTS_IMAGE_TEST_PICTURES_H_

#include <cstring>
#include <random>
#include <string>

#include "image/image.h"
#include "image/image_layout.h"

namespace vsm {

// A `width` x `height` image at `bits` with random bytes: palette entries, and pixels with
// their padding. With `levels` above 0 every palette channel and every byte of a 24-bit picture
// takes one of that many values spread over 0..255, for pictures with few colours.
inline void FillRandom(CImage& image, int32_t width, int32_t height, uint32_t bits,
                       std::mt19937& random, uint32_t levels = 0) {
  auto byte = [&]() -> uint8_t {
    return levels == 0 ? random() & 0xFF : random() % levels * 255 / (levels > 1 ? levels - 1 : 1);
  };
  CImage blank;
  image.Destroy();  // Create doesn't release an old block
  image.Create(width, height, blank.GetInfo(), bits);
  ImageInfo* info = image.GetInfo();
  for (uint32_t i = 0; i < info->colorsUsed; ++i) image.StorePaletteRgb(i, byte(), byte(), byte());
  for (uint32_t i = 0; i < info->imageSize; ++i) {
    info->bits[i] = info->colorsUsed != 0 ? random() & 0xFF : byte();
  }
}

// The whole block and the record's header part, for comparing two results byte for byte.
inline std::string BlockBytes(CImage& image) {
  const ImageInfo* info = image.GetInfo();
  if (info->dib == nullptr) return "(empty)";
  return std::string(reinterpret_cast<const char*>(info->dib), info->dibSize) +
         std::string(reinterpret_cast<const char*>(info), kDibHeaderSize);
}

// Runs `operation` on two copies of `source`, one with the specialised loops and one with the
// plain per-pixel ones, and gives both results' bytes and records' cache fields.
template <typename Operation>
std::pair<std::string, std::string> FastAndPlain(CImage& source, Operation operation) {
  std::string results[2];
  for (int plain = 0; plain < 2; ++plain) {
    CImage copy(source.GetInfo()->dib);
    const ImageInfo* from = source.GetInfo();
    ImageInfo* to = copy.GetInfo();
    to->lastColor = from->lastColor;
    to->lastIndex = from->lastIndex;
    to->lastValid = from->lastValid;
    EnableFastLoops(plain == 0);
    operation(copy);
    EnableFastLoops(true);
    results[plain] = BlockBytes(copy) + " cache " + std::to_string(to->lastValid) + ":" +
                     std::to_string(to->lastColor) + ":" + std::to_string(to->lastIndex);
  }
  return {results[0], results[1]};
}

}  // namespace vsm

#endif  // VSM_TESTS_IMAGE_TEST_PICTURES_H_
