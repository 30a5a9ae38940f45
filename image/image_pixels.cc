// Pixel and palette access: the readers and writers every other operation goes through, the
// nearest-colour search with its one-entry cache, and the fixed palettes.
#include <algorithm>
#include <cstring>

#include "image/image.h"
#include "image/image_layout.h"
#include "image/nearest_color.h"
#include "image/standard_palettes.h"

namespace vsm {

bool CImage::IsInside(int32_t x, int32_t y) const {
  return x >= 0 && x < info_.width && y >= 0 && y < info_.height;
}

uint8_t CImage::PixelIndexAt(int32_t x, int32_t y) {
  if (info_.bits == nullptr) return 0;
  // Outside, the first byte of the pixel array, whatever the depth: callers rely on this answer.
  if (!IsInside(x, y)) return info_.bits[0];
  return PixelIndexAtFast(x, y);
}

uint8_t CImage::PixelIndexAtFast(int32_t x, int32_t y) {
  return IndexInRow(info_.bits + static_cast<size_t>(y) * info_.stride, x, info_.bitCount);
}

void CImage::StorePixelIndex(int32_t x, int32_t y, uint8_t index) {
  if (info_.colorsUsed == 0 || info_.bits == nullptr || !IsInside(x, y)) return;
  StoreIndexInRow(info_.bits + static_cast<size_t>(y) * info_.stride, x, info_.bitCount, index);
}

namespace {

// Three pixel bytes at `offset` into the pixel array; bytes past the block read as 0, which only
// a 16-bit picture's last pixel can reach.
ColorValue ColorAtOffset(const ImageInfo& info, size_t offset) {
  const size_t available = info.dib + info.dibSize - info.bits;
  if (offset + 3 <= available) return ColorOfBytes(info.bits + offset);
  uint8_t pixel[3] = {0, 0, 0};
  for (size_t i = 0; offset + i < available && i < 3; ++i) pixel[i] = info.bits[offset + i];
  return ColorOfBytes(pixel);
}

}  // namespace

ColorValue CImage::PixelColorAt(int32_t x, int32_t y) {
  if (info_.bits == nullptr) return 0;
  if (!IsInside(x, y)) x = y = 0;
  if (!HasPalette()) {
    return ColorAtOffset(
        info_, static_cast<size_t>(y) * info_.stride + static_cast<size_t>(info_.bitCount / 8) * x);
  }
  return PaletteColorAt(PixelIndexAt(x, y));
}

ColorValue CImage::PixelColorAtFast(int32_t x, int32_t y) {
  if (HasPalette()) return PaletteColorAt(PixelIndexAtFast(x, y));
  return ColorOfBytes(info_.bits + static_cast<size_t>(y) * info_.stride +
                      3 * static_cast<size_t>(x));
}

void CImage::StorePixelColor(int32_t x, int32_t y, ColorValue color) {
  if (!IsValid() || !IsInside(x, y)) return;
  if (HasPalette()) {
    StorePixelIndex(x, y, NearestPaletteIndex(color));
    return;
  }
  const size_t offset =
      static_cast<size_t>(y) * info_.stride + static_cast<size_t>(info_.bitCount / 8) * x;
  if (offset + 3 > static_cast<size_t>(info_.dib + info_.dibSize - info_.bits)) return;
  uint8_t* pixel = info_.bits + offset;
  pixel[0] = static_cast<uint8_t>(color);
  pixel[1] = static_cast<uint8_t>(color >> 8);
  pixel[2] = static_cast<uint8_t>(color >> 16);
}

uint8_t* CImage::PixelAddress24(int32_t x, int32_t y) {
  if (HasPalette()) return nullptr;
  return info_.bits + static_cast<ptrdiff_t>(y) * info_.stride + 3 * static_cast<ptrdiff_t>(x);
}

ColorValue CImage::PaletteColorAt(uint32_t index) {
  if (!IsValid() || !HasPalette() || index >= info_.colorsUsed) return 0;
  return EntryColor(info_.dib + kDibHeaderSize + 4 * index);
}

void CImage::StorePaletteColor(uint32_t index, ColorValue color) {
  if (!IsValid() || index >= info_.colorsUsed) return;
  StoreEntry(info_.dib + kDibHeaderSize + 4 * index, color);
}

void CImage::StorePaletteRgb(uint32_t index, uint8_t red, uint8_t green, uint8_t blue) {
  StorePaletteColor(index, MakeColor(red, green, blue));
}

uint8_t* CImage::GetPalette() {
  if (!IsValid() || !HasPalette()) return nullptr;
  return info_.dib + kDibHeaderSize;
}

void CImage::SetPalette(const void* entries, uint32_t count) {
  if (entries == nullptr || !IsValid() || !HasPalette()) return;
  const uint64_t bytes = std::min<uint64_t>(4ull * count, GetPaletteBytes());
  std::memmove(info_.dib + kDibHeaderSize, entries, bytes);
}

bool CImage::IsGreyPalette() {
  if (!IsValid() || !HasPalette()) return false;
  for (uint32_t i = 0; i < info_.colorsUsed; ++i) {
    const uint8_t* entry = info_.dib + kDibHeaderSize + 4 * i;
    if (entry[0] != entry[1] || entry[1] != entry[2]) return false;
  }
  return true;
}

void CImage::SetGreyRamp() {
  const uint32_t count = info_.colorsUsed;
  if (info_.dib == nullptr || count == 0) return;
  const uint32_t step = count > 1 ? 255 / (count - 1) : 0;
  for (uint32_t i = 0; i < count; ++i) {
    uint8_t* entry = info_.dib + kDibHeaderSize + 4 * i;
    entry[0] = entry[1] = entry[2] = static_cast<uint8_t>(step * i);
  }
}

void CImage::SetStandardPalette() {
  const uint32_t* table;
  uint32_t count;
  if (info_.bitCount == 4) {
    table = kStandardPalette16;
    count = 16;
  } else if (info_.bitCount == 8) {
    table = kStandardPalette256;
    count = 256;
  } else {
    return;
  }
  uint8_t entries[256 * 4];
  for (uint32_t i = 0; i < count; ++i) StoreEntry(entries + 4 * i, table[i]);
  SetPalette(entries, count);
}

uint8_t CImage::NearestPaletteIndex(ColorValue color) {
  if (!IsValid() || !HasPalette()) return 0;
  if (info_.lastValid != 0 && info_.lastColor == color) return info_.lastIndex;
  info_.lastValid = 1;
  info_.lastColor = color;
  const uint32_t count = NearestSearchCount(info_);
  info_.lastIndex =
      count < 1 ? 0 : static_cast<uint8_t>(NearestEntry(info_.dib + kDibHeaderSize, count, color));
  return info_.lastIndex;
}

int32_t CImage::FindOrAddPaletteColor(ColorValue color, int32_t used) {
  if (!HasPalette() || info_.dib == nullptr) return 0;
  uint8_t* palette = info_.dib + kDibHeaderSize;
  const uint32_t slot = static_cast<uint32_t>(used);
  if (used < 1) {
    // Compared as unsigned: 0 takes entry 0, and a negative count never fits.
    if (info_.colorsUsed > slot) {
      StoreEntry(palette, color);
      return 0;
    }
    return NearestPaletteIndex(color);
  }
  const uint32_t searched = std::min(slot, (info_.dibSize - kDibHeaderSize) / 4);
  for (uint32_t i = 0; i < searched; ++i) {
    if (((EntryColor(palette + 4 * i) ^ color) & 0xFFFFFF) == 0) return static_cast<int32_t>(i);
  }
  if (slot < info_.colorsUsed) {
    StoreEntry(palette + 4 * slot, color);
    return used;
  }
  return NearestPaletteIndex(color);
}

ColorValue CImage::SwapRedBlue(ColorValue color) {
  return (color & 0xFF) << 16 | (color & 0xFF00) | (color >> 16 & 0xFF);
}

}  // namespace vsm
