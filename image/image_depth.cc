// Depth change between 1, 4, 8 and 24 bits: raising keeps indices or turns them into colours,
// reducing maps colours to a palette, optionally with error diffusion.
#include <algorithm>
#include <cstring>

#include "image/image.h"
#include "image/image_layout.h"
#include "image/nearest_color.h"
#include "image/quantizer.h"
#include "support/tracked_heap.h"

namespace vsm {

namespace {

template <uint32_t kFrom, uint32_t kTo>
void CopyIndexRow(const uint8_t* from, uint8_t* to, int32_t width) {
  for (int32_t x = 0; x < width; ++x) StoreIndexInRow(to, x, kTo, IndexInRow(from, x, kFrom));
}

using IndexRowCopier = void (*)(const uint8_t*, uint8_t*, int32_t);

IndexRowCopier IndexCopierFor(uint32_t from, uint32_t to) {
  if (to == 4) return from == 1 ? CopyIndexRow<1, 4> : CopyIndexRow<4, 4>;
  return from == 1 ? CopyIndexRow<1, 8> : from == 4 ? CopyIndexRow<4, 8> : CopyIndexRow<8, 8>;
}

// The colours of indices 0 to 255 as PaletteColorAt gives them: 0 past the palette.
void PaletteColors(CImage& image, ColorValue* colors) {
  for (uint32_t i = 0; i < 256; ++i) colors[i] = image.PaletteColorAt(i);
}

// Error diffusion by tables: the share error * weight / 16 (truncating towards zero) of each
// weight, and the clamp to 0..255 of every sum a pixel can reach.
struct DiffusionTables {
  DiffusionTables() {
    const int32_t weights[4] = {7, 2, 4, 1};
    for (int w = 0; w < 4; ++w) {
      for (int32_t error = -255; error <= 255; ++error) {
        share[w][error + 255] = static_cast<int16_t>(error * weights[w] / 16);
      }
    }
    for (int32_t value = -kClampLow; value < 1024 - kClampLow; ++value) {
      clamp[value + kClampLow] = static_cast<uint8_t>(std::min(std::max(value, 0), 255));
    }
  }
  static constexpr int32_t kClampLow = 256;
  int16_t share[4][511];
  uint8_t clamp[1024];
};

const DiffusionTables& Tables() {
  static const DiffusionTables tables;
  return tables;
}

// Adds one weight's share of the error to each channel of a pixel, clamped to 0..255.
inline void Diffuse(uint8_t* pixel, const int32_t* error, int32_t weight) {
  for (int c = 0; c < 3; ++c) {
    const int32_t value = pixel[c] + error[c] * weight / 16;
    pixel[c] = static_cast<uint8_t>(std::min(std::max(value, 0), 255));
  }
}

inline void Diffuse(uint8_t* pixel, const int32_t* error, const int16_t* share,
                    const uint8_t* clamp) {
  for (int c = 0; c < 3; ++c) pixel[c] = clamp[pixel[c] + share[error[c]]];
}

// ReduceBitDepth's walk for a 24-bit source, on rows and for one target depth: the same stores,
// reads and clamps in the same order as the per-pixel walk, with the target's palette search
// indexed once. The target searches at least one entry.
template <uint32_t kBits>
void ReduceRows24(ImageInfo& source, ImageInfo& target, bool diffuse) {
  const uint8_t* palette = target.dib + kDibHeaderSize;
  NearestColorIndex search(palette, NearestSearchCount(target));
  NearestCache cache(target);
  const DiffusionTables& tables = Tables();
  const uint8_t* clamp = tables.clamp + DiffusionTables::kClampLow;
  const int32_t width = source.width, height = source.height;
  for (int32_t y = 0; y < height; ++y) {
    uint8_t* row = source.bits + static_cast<size_t>(y) * source.stride;
    uint8_t* below = y + 1 < height ? row + source.stride : nullptr;
    uint8_t* out = target.bits + static_cast<size_t>(y) * target.stride;
    for (int32_t x = 0; x < width; ++x) {
      uint8_t* pixel = row + 3 * static_cast<size_t>(x);
      StoreIndexInRow(out, x, kBits, cache.Lookup(ColorOfBytes(pixel), search));
      if (!diffuse) continue;
      // The stored index, read back: a cached answer may not fit the target's depth. The
      // target has all 1 << kBits entries, so the index names one of them.
      const uint8_t* entry = palette + 4 * IndexInRow(out, x, kBits);
      const int32_t error[3] = {pixel[0] - entry[0], pixel[1] - entry[1], pixel[2] - entry[2]};
      const bool right = x + 1 < width;
      if (right) Diffuse(pixel + 3, error, tables.share[0] + 255, clamp);
      if (below == nullptr) continue;
      uint8_t* under = below + 3 * static_cast<size_t>(x);
      if (x > 0) Diffuse(under - 3, error, tables.share[1] + 255, clamp);
      Diffuse(under, error, tables.share[2] + 255, clamp);
      if (right) Diffuse(under + 3, error, tables.share[3] + 255, clamp);
    }
  }
  cache.StoreInto(&target);
}

}  // namespace

bool CImage::RaiseBitDepth(uint32_t bits) {
  if (bits != 4 && bits != 8 && bits != 24) return false;
  if (!IsValid() || bits < info_.bitCount) return false;
  CImage temp;
  if (temp.Create(info_.width, info_.height, &info_, bits) == nullptr) return false;
  const int32_t width = info_.width, height = info_.height;
  const bool fast = FastLoopsEnabled();
  if (bits != 24) {
    temp.SetPalette(GetPalette(), GetColorCount());
    const uint32_t from = info_.bitCount;
    const bool rows = fast && (from == 1 || from == 4 || from == 8);
    for (int32_t y = 0; y < height; ++y) {
      if (rows) {
        IndexCopierFor(from, bits)(info_.bits + static_cast<size_t>(y) * info_.stride,
                                   temp.info_.bits + static_cast<size_t>(y) * temp.info_.stride,
                                   width);
        continue;
      }
      for (int32_t x = 0; x < width; ++x) temp.StorePixelIndex(x, y, PixelIndexAt(x, y));
    }
  } else if (fast && (HasPalette() || info_.bitCount == 24)) {
    ColorValue colors[256];
    if (HasPalette()) PaletteColors(*this, colors);
    for (int32_t y = 0; y < height; ++y) {
      const uint8_t* from = info_.bits + static_cast<size_t>(y) * info_.stride;
      uint8_t* to = temp.info_.bits + static_cast<size_t>(y) * temp.info_.stride;
      if (!HasPalette()) {
        std::memcpy(to, from, 3 * static_cast<size_t>(width));
        continue;
      }
      for (int32_t x = 0; x < width; ++x, to += 3) {
        const ColorValue color = colors[IndexInRow(from, x, info_.bitCount)];
        to[0] = static_cast<uint8_t>(color);
        to[1] = static_cast<uint8_t>(color >> 8);
        to[2] = static_cast<uint8_t>(color >> 16);
      }
    }
  } else {
    for (int32_t y = 0; y < height; ++y) {
      for (int32_t x = 0; x < width; ++x) temp.StorePixelColor(x, y, PixelColorAt(x, y));
    }
  }
  TakeOver(temp);
  return true;
}

bool CImage::ReduceBitDepth(uint32_t bits, bool diffuse, const void* palette, uint32_t colorLimit) {
  if (!IsValid() || info_.bitCount < bits) return false;
  if (info_.bitCount == bits &&
      (colorLimit == 0 || (info_.colorsImportant != 0 && colorLimit > info_.colorsImportant))) {
    return true;
  }
  CImage temp;
  if (temp.Create(info_.width, info_.height, &info_, bits) == nullptr) return false;
  if (bits == 4 || bits == 8) {
    if (palette != nullptr) {
      temp.SetPalette(palette, bits == 4 ? 16 : 256);
    } else {
      temp.SetStandardPalette();
    }
  } else if (bits == 1) {
    if (palette != nullptr) {
      temp.SetPalette(palette, 2);
    } else {
      temp.StorePaletteColor(0, 0x000000);
      temp.StorePaletteColor(1, 0xFFFFFF);
    }
  } else {
    return false;
  }
  const int32_t width = info_.width, height = info_.height;
  if (FastLoopsEnabled() && info_.bitCount == 24 && !HasPalette() &&
      NearestSearchCount(temp.info_) >= 1) {
    if (bits == 8) ReduceRows24<8>(info_, temp.info_, diffuse);
    if (bits == 4) ReduceRows24<4>(info_, temp.info_, diffuse);
    if (bits == 1) ReduceRows24<1>(info_, temp.info_, diffuse);
  } else {
    for (int32_t y = 0; y < height; ++y) {
      for (int32_t x = 0; x < width; ++x) {
        const ColorValue color = PixelColorAt(x, y);
        temp.StorePixelColor(x, y, color);
        if (!diffuse) continue;
        const ColorValue stored = temp.PixelColorAt(x, y);
        int32_t error[3];
        for (int k = 0; k < 3; ++k) {
          error[k] = static_cast<int32_t>(color >> 8 * k & 0xFF) -
                     static_cast<int32_t>(stored >> 8 * k & 0xFF);
        }
        // The error goes to four neighbours of the source itself, in this order; the weights
        // sum to 14 of 16, and that loss of an eighth of the error is deliberate. On a source
        // with a palette every write snaps to the source's nearest entry.
        static const int32_t kNeighbours[4][3] = {{1, 0, 7}, {-1, 1, 2}, {0, 1, 4}, {1, 1, 1}};
        for (const auto& neighbour : kNeighbours) {
          const int32_t nx = x + neighbour[0], ny = y + neighbour[1];
          uint8_t pixel[3];
          const ColorValue old = PixelColorAt(nx, ny);
          pixel[0] = static_cast<uint8_t>(old);
          pixel[1] = static_cast<uint8_t>(old >> 8);
          pixel[2] = static_cast<uint8_t>(old >> 16);
          Diffuse(pixel, error, neighbour[2]);
          StorePixelColor(nx, ny, ColorOfBytes(pixel));
        }
      }
    }
  }
  if (info_.bitCount == 1) {
    temp.StorePaletteColor(0, 0x000000);
    temp.StorePaletteColor(1, 0xFFFFFF);
  }
  TakeOver(temp);
  return true;
}

bool CImage::ConvertBitDepth(uint32_t bits, bool optimise) {
  if (!IsValid()) return false;
  if (bits == info_.bitCount) return true;
  if (bits > info_.bitCount) return RaiseBitDepth(bits);
  if (!optimise) return ReduceBitDepth(bits, false, nullptr, 0);
  if (bits != 4 && bits != 8) return ReduceBitDepth(bits, true, nullptr, 1u << bits);
  const uint32_t colors = 1u << bits;
  // A finer tree for few colours: 8 levels up to 16 colours, else 7.
  uint8_t* palette = static_cast<uint8_t*>(TrackedAlloc(kTrackedZeroFill, 4 * colors));
  if (palette == nullptr) {
    info_.lastError = kImageNoMemory;
    return false;
  }
  {
    CQuantizer quantizer(colors, colors < 17 ? 8 : 7);
    quantizer.AddImage(GetDib());
    quantizer.WritePalette(palette);
  }
  const bool reduced = ReduceBitDepth(bits, true, palette, colors);
  TrackedFree(palette);
  return reduced;
}

}  // namespace vsm
