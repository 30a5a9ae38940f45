// Tone operations: threshold, grey, negative, and table mapping with gamma and light.
#include <cmath>
#include <cstring>

#include "image/image.h"
#include "image/image_layout.h"
#include "image/pixel_walk.h"

namespace vsm {

namespace {

// Palette entries that lie inside the block, at most colorsUsed.
uint32_t EntriesInBlock(const ImageInfo& info) {
  const uint32_t inBlock = info.dibSize > kDibHeaderSize ? (info.dibSize - kDibHeaderSize) / 4 : 0;
  return info.colorsUsed < inBlock ? info.colorsUsed : inBlock;
}

// A table value: 255 from 255 up, 0 below 1 (and for NaN), else truncated.
uint8_t TableValue(double value) {
  if (value >= 255) return 255;
  if (!(value >= 1)) return 0;
  return static_cast<uint8_t>(value);
}

}  // namespace

bool CImage::Threshold(ImageRect rect, int32_t level) {
  if (!HasWholeRows()) return false;
  if (info_.bitCount == 1) return Crop(rect);
  ImageRect region;
  if (!ReadRegion(rect, &region)) return false;
  CImage temp;
  if (temp.Create(region.right - region.left, region.bottom - region.top, &info_, 1) == nullptr) {
    return false;
  }
  const uint32_t bits = info_.bitCount;
  const bool rows = FastLoopsEnabled() && (IsPlain24(info_) || IsIndexed(info_));
  // Per palette index, whether the entry's grey lies above the level.
  bool above[256];
  for (uint32_t i = 0; rows && IsIndexed(info_) && i < 256; ++i) {
    above[i] = level < GreyOfColor(PaletteColorAt(i));
  }
  bool stopped = false;
  for (int32_t y = region.top; y < region.bottom; ++y) {
    if (StopAtRow(y, region.bottom)) {
      stopped = true;
      break;
    }
    const uint8_t* from = RowAt(info_, y);
    uint8_t* to = RowAt(temp.info_, y - region.top);
    for (int32_t x = region.left; x < region.right; ++x) {
      bool white;
      if (!rows) {
        white = level < GreyOfColor(PixelColorAt(x, y));
      } else if (bits == 24) {
        const uint8_t* pixel = from + 3 * static_cast<size_t>(x);
        white = level < GreyOf(pixel[0], pixel[1], pixel[2]);
      } else {
        white = above[IndexInRow(from, x, bits)];
      }
      if (white) StoreIndexInRow(to, x - region.left, 1, 1);
    }
  }
  temp.StorePaletteRgb(0, 0, 0, 0);
  temp.StorePaletteRgb(1, 255, 255, 255);
  // A cancel keeps the rows done so far as the new picture, and isn't an error.
  stopped = stopped || __atomic_load_n(&info_.cancelled, __ATOMIC_RELAXED) != 0;
  TakeOver(temp);
  if (!stopped) {
    info_.cancelled = 0;
    info_.progress = 0;
  }
  return true;
}

bool CImage::ToGrey(ImageRect rect, bool* resized) {
  if (resized != nullptr) *resized = false;
  if (!HasWholeRows()) return false;
  ImageRect region;
  CImage temp;
  if (info_.bitCount > 8) {
    if (!ReadRegion(rect, &region)) return false;
    const int32_t width = region.right - region.left, height = region.bottom - region.top;
    if (temp.Create(width, height, &info_, 8) == nullptr) return false;
    temp.SetGreyRamp();
    // Row j and byte `left` + 3 * i of the source, whatever the region's top and the depth: a
    // displaced window outside the origin, which callers have relied on. At 24 and 32 bits it
    // stays inside the row; bytes past the pixel array read as 0.
    const bool inRow = info_.bitCount == 24 || info_.bitCount == 32;
    const size_t limit = PixelBytesInBlock(info_);
    for (int32_t j = 0; j < height; ++j) {
      const size_t start = static_cast<size_t>(j) * info_.stride + region.left;
      uint8_t* to = RowAt(temp.info_, j);
      for (int32_t i = 0; i < width; ++i) {
        const size_t at = start + 3 * static_cast<size_t>(i);
        uint8_t pixel[3] = {0, 0, 0};
        for (size_t k = 0; k < 3; ++k) {
          if (inRow || at + k < limit) pixel[k] = info_.bits[at + k];
        }
        to[i] = GreyOf(pixel[0], pixel[1], pixel[2]);
      }
    }
  } else {
    // The blue byte of every entry becomes the entry's grey first.
    uint8_t* palette = info_.dib + kDibHeaderSize;
    const uint32_t entries = EntriesInBlock(info_);
    for (uint32_t i = 0; i < entries; ++i) {
      uint8_t* entry = palette + 4 * i;
      entry[0] = GreyOf(entry[0], entry[1], entry[2]);
    }
    // An index past the palette gives 0.
    uint8_t greys[256] = {};
    for (uint32_t i = 0; i < entries && i < 256; ++i) greys[i] = palette[4 * i];
    if (info_.bitCount == 8) {
      // The whole array, padding included, in place; the region isn't looked at.
      const size_t bytes = PixelBytesInBlock(info_);
      for (size_t i = 0; i < bytes; ++i) info_.bits[i] = greys[info_.bits[i]];
      SetGreyRamp();
      return true;
    }
    if (!ReadRegion(rect, &region)) return false;
    if (temp.Create(region.right - region.left, region.bottom - region.top, &info_, 8) == nullptr) {
      return false;
    }
    temp.SetGreyRamp();
    for (int32_t y = region.top; y < region.bottom; ++y) {
      uint8_t* to = RowAt(temp.info_, y - region.top);
      for (int32_t x = region.left; x < region.right; ++x) {
        to[x - region.left] = greys[PixelIndexAt(x, y)];
      }
    }
  }
  TakeOver(temp);
  if (resized != nullptr) *resized = true;
  return true;
}

bool CImage::Negate() {
  if (!HasWholeRows()) return false;
  if (info_.bitCount > 8) {
    const size_t bytes = PixelBytesInBlock(info_);
    for (size_t i = 0; i < bytes; ++i) info_.bits[i] = static_cast<uint8_t>(~info_.bits[i]);
    return true;
  }
  if (!IsGreyPalette()) {
    uint8_t* palette = info_.dib + kDibHeaderSize;
    const uint32_t entries = EntriesInBlock(info_);
    for (uint32_t i = 0; i < 4 * entries; ++i) {
      if (i % 4 != 3) palette[i] = static_cast<uint8_t>(~palette[i]);
    }
    return true;
  }
  // A grey palette stays; the indices turn over.
  const uint32_t bits = info_.bitCount;
  const bool rows = FastLoopsEnabled() && IsIndexed(info_);
  for (int32_t y = 0; y < info_.height; ++y) {
    uint8_t* row = RowAt(info_, y);
    for (int32_t x = 0; x < info_.width; ++x) {
      if (rows) {
        StoreIndexInRow(row, x, bits, static_cast<uint8_t>(~IndexInRow(row, x, bits)));
      } else {
        StorePixelIndex(x, y, static_cast<uint8_t>(~PixelIndexAt(x, y)));
      }
    }
  }
  return true;
}

bool CImage::ApplyLut(const uint8_t* table) {
  if (!HasWholeRows()) return false;
  if (table == nullptr) {
    info_.lastError = kImageBadValue;
    return false;
  }
  if (HasPalette()) {
    uint8_t* palette = info_.dib + kDibHeaderSize;
    const uint32_t entries = EntriesInBlock(info_);
    for (uint32_t i = 0; i < 4 * entries; ++i) {
      if (i % 4 != 3) palette[i] = table[palette[i]];
    }
    return true;
  }
  // Byte i takes the entry of byte i + 1, read before that byte is itself rewritten: the
  // picture moves one byte towards the start, and callers have built on that. The last step
  // reads the byte behind the pixel array, which is 0 when the block ends there.
  const size_t bytes = PixelBytesInBlock(info_);
  if (bytes == 0) return true;
  uint8_t* pixels = info_.bits;
  const size_t behind = static_cast<size_t>(pixels - info_.dib) + bytes;
  const uint8_t last = behind < info_.dibSize ? info_.dib[behind] : 0;
  for (size_t i = 0; i + 1 < bytes; ++i) pixels[i] = table[pixels[i + 1]];
  pixels[bytes - 1] = table[last];
  return true;
}

bool CImage::ApplyGamma(float gamma) {
  const float exponent = 1.0f / gamma;
  const double k = std::pow(255.0, static_cast<double>(exponent)) / 255.0;
  uint8_t table[256];
  for (int i = 0; i < 256; ++i) {
    table[i] = TableValue(std::pow(static_cast<double>(i), static_cast<double>(exponent)) / k);
  }
  return ApplyLut(table);
}

void CImage::ApplyLight(float brightness, float contrast) {
  if (!IsValid()) return;
  const float scale = (contrast + 100) / 100;
  const float base = brightness + 128;
  uint8_t table[256];
  for (int i = -128; i < 128; ++i) {
    table[i + 128] = TableValue(std::fma(static_cast<float>(i), scale, base));
  }
  ApplyLut(table);
}

void CImage::AdjustBrightness(float value) { ApplyLight(value, 0); }

void CImage::AdjustContrast(float value) { ApplyLight(0, value); }

}  // namespace vsm
