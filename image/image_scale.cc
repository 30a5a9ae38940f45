// Scale and its engine ResampleCore: nearest by truncation, B-spline on 4 x 4 taps, the exact
// box average and bilinear, with their own method numbers and pixel alignment (source x is
// xScale * x, or xScale * x - 0.5 for the B-spline). The integer area shrink is in
// image_shrink.cc.
//
// Each method has a plain per-pixel form through the accessors and, for 24-bit pictures (or
// palette pictures where the nearest search can be indexed), a row form that hoists per-column
// and per-row terms. The row forms do the same float operations in the same order on the same
// values, so every byte agrees; tests compare the two.
#include <algorithm>
#include <cmath>
#include <new>
#include <vector>

#include "image/image.h"
#include "image/image_layout.h"
#include "image/kernels.h"
#include "image/nearest_color.h"

namespace vsm {

namespace {

// Four floats in one register; each operation is an IEEE single-precision operation per lane,
// exactly what the scalar code does per channel.
typedef float Float4 __attribute__((vector_size(16)));

inline Float4 Splat(float value) { return Float4{value, value, value, value}; }

inline Float4 LoadPixel(const uint8_t* pixel) {
  return Float4{static_cast<float>(pixel[0]), static_cast<float>(pixel[1]),
                static_cast<float>(pixel[2]), 0.0f};
}

inline void StoreTruncated(uint8_t* pixel, Float4 value) {
  for (int k = 0; k < 3; ++k) pixel[k] = static_cast<uint8_t>(TruncToInt(value[k]));
}

int32_t Clamp(int32_t value, int32_t high) { return value < 0 ? 0 : value > high ? high : value; }

// Stores colours into a palette image the way StorePixelColor does (nearest entry, through the
// image's one-entry cache), with the search indexed once for the whole picture.
class PaletteWriter {
 public:
  explicit PaletteWriter(ImageInfo& target)
      : target_(target),
        search_(target.dib + kDibHeaderSize, NearestSearchCount(target)),
        cache_(target) {}
  ~PaletteWriter() { cache_.StoreInto(&target_); }
  void Store(uint8_t* row, int32_t x, ColorValue color) {
    StoreIndexInRow(row, x, target_.bitCount, cache_.Lookup(color, search_));
  }

 private:
  ImageInfo& target_;
  NearestColorIndex search_;
  NearestCache cache_;
};

// Whether the row forms can serve a palette image: an index depth, and a nearest search with
// entries to index.
bool RowsServe(const ImageInfo& info) {
  return (info.bitCount == 1 || info.bitCount == 4 || info.bitCount == 8) &&
         NearestSearchCount(info) >= 1;
}

}  // namespace

bool CImage::Scale(int32_t newWidth, int32_t newHeight, int32_t method) {
  if (!IsValid() || newWidth < 1 || newHeight < 1) return false;
  if (newWidth == info_.width && newHeight == info_.height) return true;
  if (method != 5) return ResampleCore(newWidth, newHeight, method);
  if (newWidth < info_.width || newHeight < info_.height) {
    // The box reads three bytes a pixel, so a picture it can't bring to 24 bits stays as it is.
    if (!ConvertBitDepth(24, false) || info_.bitCount != 24) return false;
    return ResampleCore(newWidth, newHeight, 5);
  }
  const bool large = info_.width >= 2 && info_.height >= 2 && newWidth >= 2 && newHeight >= 2;
  return ResampleCore(newWidth, newHeight, large ? 3 : 1);
}

bool CImage::ResampleCore(int32_t newWidth, int32_t newHeight, int32_t method) {
  CImage temp;
  if (temp.Create(newWidth, newHeight, &info_, info_.bitCount) == nullptr) return false;
  temp.SetPalette(GetPalette(), 256);
  try {
    if (method == 1) {
      ScaleNearest(temp);
    } else if (method == 2) {
      ScaleBSpline(temp);
    } else if (method == 5) {
      ScaleBox(temp);
    } else if (newWidth < info_.width && newHeight < info_.height && info_.bitCount == 24) {
      ShrinkByArea(temp);
    } else {
      ScaleBilinear(temp);
    }
  } catch (const std::bad_alloc&) {
    info_.lastError = kImageNoMemory;
    return false;
  }
  TakeOver(temp);
  return true;
}

void CImage::ScaleNearest(CImage& target) {
  const int32_t newWidth = target.info_.width, newHeight = target.info_.height;
  const float xScale = ScaleOf(info_.width, newWidth), yScale = ScaleOf(info_.height, newHeight);
  std::vector<int32_t> columns(newWidth), rows(newHeight);
  bool inside = true;
  for (int32_t x = 0; x < newWidth; ++x) {
    columns[x] = TruncToInt(xScale * static_cast<float>(x));
    inside = inside && columns[x] >= 0 && columns[x] < info_.width;
  }
  for (int32_t y = 0; y < newHeight; ++y) {
    rows[y] = TruncToInt(yScale * static_cast<float>(y));
    inside = inside && rows[y] >= 0 && rows[y] < info_.height;
  }
  const bool plain24 = !HasPalette() && info_.bitCount == 24 && !target.HasPalette();
  const bool indexed =
      HasPalette() && RowsServe(info_) && target.HasPalette() && RowsServe(target.info_);
  if (!FastLoopsEnabled() || !inside || !(plain24 || indexed)) {
    for (int32_t y = 0; y < newHeight; ++y) {
      for (int32_t x = 0; x < newWidth; ++x) {
        target.StorePixelColor(x, y, PixelColorAt(columns[x], rows[y]));
      }
    }
    return;
  }
  if (plain24) {
    for (int32_t y = 0; y < newHeight; ++y) {
      const uint8_t* from = info_.bits + static_cast<size_t>(rows[y]) * info_.stride;
      uint8_t* to = target.info_.bits + static_cast<size_t>(y) * target.info_.stride;
      for (int32_t x = 0; x < newWidth; ++x, to += 3) {
        std::copy(from + 3 * static_cast<size_t>(columns[x]),
                  from + 3 * static_cast<size_t>(columns[x]) + 3, to);
      }
    }
    return;
  }
  ColorValue colors[256];
  for (uint32_t i = 0; i < 256; ++i) colors[i] = PaletteColorAt(i);
  PaletteWriter writer(target.info_);
  for (int32_t y = 0; y < newHeight; ++y) {
    const uint8_t* from = info_.bits + static_cast<size_t>(rows[y]) * info_.stride;
    uint8_t* to = target.info_.bits + static_cast<size_t>(y) * target.info_.stride;
    for (int32_t x = 0; x < newWidth; ++x) {
      writer.Store(to, x, colors[IndexInRow(from, columns[x], info_.bitCount)]);
    }
  }
}

void CImage::ScaleBilinear(CImage& target) {
  const int32_t width = info_.width, height = info_.height;
  const int32_t newWidth = target.info_.width, newHeight = target.info_.height;
  const float xScale = ScaleOf(width, newWidth), yScale = ScaleOf(height, newHeight);
  // Per destination column and row: the two source positions and the fraction.
  struct Axis {
    int32_t first, second;
    float fraction;
  };
  auto axis = [](int32_t i, float scale, int32_t size) {
    const float position = static_cast<float>(i) * scale;
    const int32_t first = TruncToInt(position);
    return Axis{first, std::min(first + 1, size - 1), position - static_cast<float>(first)};
  };
  std::vector<Axis> columns(newWidth), rows(newHeight);
  bool inside = true;
  for (int32_t x = 0; x < newWidth; ++x) {
    columns[x] = axis(x, xScale, width);
    inside = inside && columns[x].first >= 0 && columns[x].first < width;
  }
  for (int32_t y = 0; y < newHeight; ++y) {
    rows[y] = axis(y, yScale, height);
    inside = inside && rows[y].first >= 0 && rows[y].first < height;
  }
  if (!FastLoopsEnabled() || !inside || HasPalette() || info_.bitCount != 24) {
    for (int32_t y = 0; y < newHeight; ++y) {
      const Axis& r = rows[y];
      for (int32_t x = 0; x < newWidth; ++x) {
        const Axis& c = columns[x];
        const ColorValue c00 = PixelColorAt(c.first, r.first),
                         c01 = PixelColorAt(c.first, r.second);
        const ColorValue c10 = PixelColorAt(c.second, r.first),
                         c11 = PixelColorAt(c.second, r.second);
        uint32_t channels[3];
        for (int k = 0; k < 3; ++k) {
          const int shift = 8 * k;
          const float value =
              (1 - c.fraction) * ((1 - r.fraction) * static_cast<float>(c00 >> shift & 0xFF) +
                                  r.fraction * static_cast<float>(c01 >> shift & 0xFF)) +
              c.fraction * ((1 - r.fraction) * static_cast<float>(c10 >> shift & 0xFF) +
                            r.fraction * static_cast<float>(c11 >> shift & 0xFF));
          channels[k] = TruncToInt(value) & 0xFF;
        }
        target.StorePixelColor(x, y, MakeColor(channels[2], channels[1], channels[0]));
      }
    }
    return;
  }
  // (1 - dy) * c0 + dy * c1 depends on the source column and the destination row only, so it is
  // worked out once per source column and row and shared by every destination pixel using it.
  std::vector<Float4> blend(width);
  for (int32_t y = 0; y < newHeight; ++y) {
    const Axis& r = rows[y];
    const uint8_t* top = info_.bits + static_cast<size_t>(r.first) * info_.stride;
    const uint8_t* under = info_.bits + static_cast<size_t>(r.second) * info_.stride;
    const Float4 keep = Splat(1 - r.fraction), take = Splat(r.fraction);
    for (int32_t sx = 0; sx < width; ++sx) {
      blend[sx] = keep * LoadPixel(top + 3 * sx) + take * LoadPixel(under + 3 * sx);
    }
    uint8_t* out = target.info_.bits + static_cast<size_t>(y) * target.info_.stride;
    for (int32_t x = 0; x < newWidth; ++x, out += 3) {
      const Axis& c = columns[x];
      StoreTruncated(out,
                     Splat(1 - c.fraction) * blend[c.first] + Splat(c.fraction) * blend[c.second]);
    }
  }
}

void CImage::ScaleBSpline(CImage& target) {
  const int32_t width = info_.width, height = info_.height;
  const int32_t newWidth = target.info_.width, newHeight = target.info_.height;
  const float xScale = ScaleOf(width, newWidth), yScale = ScaleOf(height, newHeight);
  // Per destination column: the four clamped source columns and BSplineWeight(dx - n); per row
  // the four clamped rows and BSplineWeight(m - dy). Note the opposite signs.
  struct Taps {
    int32_t at[4];
    float weight[4];
  };
  auto taps = [](int32_t i, float scale, int32_t size, bool column) {
    const float position = scale * static_cast<float>(i) - 0.5f;
    const int32_t base = static_cast<int32_t>(std::floor(position));
    const float fraction = position - static_cast<float>(base);
    Taps result;
    for (int k = 0; k < 4; ++k) {
      result.at[k] = Clamp(base + k - 1, size - 1);
      result.weight[k] = column ? BSplineWeight(fraction - static_cast<float>(k - 1))
                                : BSplineWeight(static_cast<float>(k - 1) - fraction);
    }
    return result;
  };
  std::vector<Taps> columns(newWidth), rows(newHeight);
  for (int32_t x = 0; x < newWidth; ++x) columns[x] = taps(x, xScale, width, true);
  for (int32_t y = 0; y < newHeight; ++y) rows[y] = taps(y, yScale, height, false);
  const bool palette = HasPalette();
  if (!FastLoopsEnabled() || palette || info_.bitCount != 24) {
    for (int32_t y = 0; y < newHeight; ++y) {
      const Taps& r = rows[y];
      for (int32_t x = 0; x < newWidth; ++x) {
        const Taps& c = columns[x];
        float sums[3] = {0, 0, 0};
        for (int m = 0; m < 4; ++m) {
          for (int n = 0; n < 4; ++n) {
            const float weight = r.weight[m] * c.weight[n];
            const ColorValue color = PixelColorAt(c.at[n], r.at[m]);
            for (int k = 0; k < 3; ++k) {
              sums[k] += weight * static_cast<float>(color >> (8 * k) & 0xFF);
            }
          }
        }
        // Truncated, not clamped.
        const ColorValue color = MakeColor(TruncToInt(sums[2]) & 0xFF, TruncToInt(sums[1]) & 0xFF,
                                           TruncToInt(sums[0]) & 0xFF);
        if (palette) {
          target.StorePixelColor(x, y, color);
        } else {
          uint8_t* pixel = target.PixelAddress24(x, y);
          pixel[0] = static_cast<uint8_t>(color);
          pixel[1] = static_cast<uint8_t>(color >> 8);
          pixel[2] = static_cast<uint8_t>(color >> 16);
        }
      }
    }
    return;
  }
  // Source rows as floats, four at a time: row r lives in slot r % 4, which holds the four
  // clamped rows of one destination row without collision.
  std::vector<Float4> slots(4 * static_cast<size_t>(width));
  int32_t held[4] = {-1, -1, -1, -1};
  for (int32_t y = 0; y < newHeight; ++y) {
    const Taps& r = rows[y];
    const Float4* source[4];
    for (int m = 0; m < 4; ++m) {
      const int32_t row = r.at[m];
      Float4* slot = &slots[static_cast<size_t>(row % 4) * width];
      if (held[row % 4] != row) {
        const uint8_t* bytes = info_.bits + static_cast<size_t>(row) * info_.stride;
        for (int32_t sx = 0; sx < width; ++sx) slot[sx] = LoadPixel(bytes + 3 * sx);
        held[row % 4] = row;
      }
      source[m] = slot;
    }
    uint8_t* out = target.info_.bits + static_cast<size_t>(y) * target.info_.stride;
    for (int32_t x = 0; x < newWidth; ++x, out += 3) {
      const Taps& c = columns[x];
      Float4 sum = Splat(0);
      for (int m = 0; m < 4; ++m) {
        const Float4* line = source[m];
        for (int n = 0; n < 4; ++n) sum += Splat(r.weight[m] * c.weight[n]) * line[c.at[n]];
      }
      StoreTruncated(out, sum);
    }
  }
}

void CImage::ScaleBox(CImage& target) {
  const int32_t width = info_.width, height = info_.height;
  const int32_t newWidth = target.info_.width, newHeight = target.info_.height;
  // One axis of one destination pixel: the covered source range and the shares of its ends.
  struct Span {
    double low, high;
    int32_t first, last;
    double firstShare, lastShare;
  };
  auto span = [](int32_t i, int32_t size, int32_t newSize) {
    // The products are 32-bit integers, wrapping as they always have.
    const double low = static_cast<int32_t>(static_cast<uint32_t>(i) * size) / double(newSize);
    const double high = static_cast<int32_t>(static_cast<uint32_t>(i + 1) * size) / double(newSize);
    const int32_t first = static_cast<int32_t>(std::floor(low));
    const int32_t last = static_cast<int32_t>(std::floor(high - 1e-5));
    return Span{low, high, first, last, 1 - (low - std::floor(low)), high - last};
  };
  for (int32_t y = 0; y < newHeight; ++y) {
    const Span v = span(y, height, newHeight);
    uint8_t* out = target.info_.bits + static_cast<size_t>(y) * target.info_.stride;
    for (int32_t x = 0; x < newWidth; ++x, out += 3) {
      const Span h = span(x, width, newWidth);
      double sums[3] = {0, 0, 0}, total = 0;
      // Every weight carries a factor of 255, a full alpha for every pixel; it cancels out.
      auto add = [&](ColorValue color, double weight) {
        const double alphaWeight = weight * 255;
        for (int k = 0; k < 3; ++k) sums[k] += (color >> (8 * k) & 0xFF) * alphaWeight;
        total += alphaWeight;
      };
      auto direct = [&](int32_t px, int32_t py) {
        return ColorOfBytes(info_.bits + static_cast<size_t>(py) * info_.stride +
                            3 * static_cast<size_t>(px));
      };
      for (int32_t py = v.first + 1; py < v.last; ++py) {
        add(direct(h.first, py), h.firstShare);
        add(direct(h.last, py), h.lastShare);
      }
      for (int32_t px = h.first + 1; px < h.last; ++px) {
        add(direct(px, v.first), v.firstShare);
        add(direct(px, v.last), v.lastShare);
      }
      for (int32_t py = v.first + 1; py < v.last; ++py) {
        for (int32_t px = h.first + 1; px < h.last; ++px) add(direct(px, py), 1);
      }
      add(PixelColorAt(h.first, v.first), v.firstShare * h.firstShare);
      add(PixelColorAt(h.last, v.first), v.firstShare * h.lastShare);
      add(PixelColorAt(h.first, v.last), v.lastShare * h.firstShare);
      add(PixelColorAt(h.last, v.last), v.lastShare * h.lastShare);
      if (total / ((h.high - h.low) * (v.high - v.low)) == 0) {
        out[0] = out[1] = out[2] = 0;
        continue;
      }
      for (int k = 0; k < 3; ++k) out[k] = static_cast<uint8_t>(TruncToInt(sums[k] / total + 0.5));
    }
  }
}

}  // namespace vsm
