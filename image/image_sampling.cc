// Reading an image at positions that aren't pixels: coordinate folding for positions outside,
// and the nearest, bilinear and cubic samplers with their area average. Positions and weights
// are 32-bit floats.
#include <cmath>

#include "image/float_geometry.h"
#include "image/image.h"
#include "image/image_layout.h"
#include "image/kernels.h"

namespace vsm {

namespace {

// trunc(v), less 1 when v < 0, so -0.5 gives -1 and -1.0 gives -2. Kept within +-2^30, far
// outside any image, so that the tap arithmetic around it can't overflow.
int32_t CellOf(float v) {
  int64_t cell = TruncToInt(v);
  if (v < 0) --cell;
  const int64_t kFar = int64_t{1} << 30;
  return static_cast<int32_t>(cell < -kFar ? -kFar : cell > kFar ? kFar : cell);
}

// Clamps the result of a weighted sum to a channel byte.
uint32_t ClampedChannel(float value) {
  if (value > 255) return 255;
  if (value < 0) return 0;
  return static_cast<uint32_t>(value);
}

ColorValue BackgroundOf(const uint8_t* background) {
  if (background == nullptr) return 0x00FFFFFF;
  return EntryColor(background);
}

// The side-1 square centred on a pixel.
FloatRect CellRect(int32_t x, int32_t y) {
  return FloatRect(x - 0.5f, y - 0.5f, x + 0.5f, y + 0.5f);
}

// Adds `weight` times each channel of `color` to the three sums (blue, green, red).
inline void Accumulate(float* sums, float weight, ColorValue color) {
  sums[0] += weight * static_cast<float>(color & 0xFF);
  sums[1] += weight * static_cast<float>(color >> 8 & 0xFF);
  sums[2] += weight * static_cast<float>(color >> 16 & 0xFF);
}

}  // namespace

void CImage::FoldPixelCoords(int32_t& x, int32_t& y, int32_t method) {
  const int64_t width = info_.width, height = info_.height;
  if (IsInside(x, y) || width < 1 || height < 1) return;
  auto fold = [method](int64_t c, int64_t size) -> int64_t {
    switch (method) {
      case 5:
        return c < 0 ? 0 : c > size - 1 ? size - 1 : c;
      case 6:
        if (c < 0) return -c % size;
        if (c >= size) return size - (c % size + 1);
        return c;
      case 4: {
        const int64_t rest = c % size;
        return rest < 0 ? rest + size : rest;
      }
      default:
        return c;
    }
  };
  x = static_cast<int32_t>(fold(x, width));
  y = static_cast<int32_t>(fold(y, height));
}

void CImage::FoldFloatCoords(float& x, float& y, int32_t method) {
  const int32_t width = info_.width, height = info_.height;
  if (x >= 0 && x < width && y >= 0 && y < height) return;
  auto fold = [method](float c, int32_t size) -> float {
    const double whole = static_cast<float>(size);
    switch (method) {
      case 5:
        return c < 0 ? 0.0f : c > size - 1.0 ? static_cast<float>(size - 1.0) : c;
      case 6:
        if (c < 0) return static_cast<float>(FloatRemainder(-c, whole));
        if (c >= size) return static_cast<float>(whole - (FloatRemainder(c, whole) + 1));
        return c;
      case 4: {
        const double rest = FloatRemainder(c, whole);
        return static_cast<float>(rest < 0 ? rest + whole : rest);
      }
      default:
        return c;
    }
  };
  x = fold(x, width);
  y = fold(y, height);
}

ColorValue CImage::PixelColorOrBackground(int32_t x, int32_t y, int32_t overflow,
                                          const uint8_t* background) {
  const bool valid = IsValid();
  if (valid && IsInside(x, y)) return PixelColorAtFast(x, y);
  const ColorValue back = BackgroundOf(background);
  if (!valid || overflow < 4 || overflow > 6) return back;
  FoldPixelCoords(x, y, overflow);
  return PixelColorAtFast(x, y);
}

ColorValue CImage::SampleAt(int32_t mode, int32_t overflow, const uint8_t* background, float x,
                            float y) {
  if (mode == 1) {
    return PixelColorOrBackground(TruncToInt(x + 0.5f), TruncToInt(y + 0.5f), overflow, background);
  }
  const int32_t width = info_.width, height = info_.height;
  const bool cubic = mode == 3 || mode == 4;
  int32_t xi = CellOf(x), yi = CellOf(y);
  const bool reachable = cubic ? xi >= -2 && xi <= width && yi >= -2 && yi <= height
                               : xi >= -1 && yi >= -1 && xi < width && yi < height;
  if (!reachable) {
    // -999 lies outside every image, so this gives the background.
    if (overflow >= 1 && overflow <= 3)
      return PixelColorOrBackground(-999, -999, overflow, background);
    FoldFloatCoords(x, y, overflow);
    xi = CellOf(x);
    yi = CellOf(y);
  }
  float sums[3] = {0, 0, 0};
  if (cubic) {
    float wx[4], wy[4];
    for (int i = 0; i < 4; ++i) {
      const float tx = static_cast<float>(xi - 1 + i) - x;
      const float ty = static_cast<float>(yi - 1 + i) - y;
      wx[i] = mode == 3 ? CubicWeight(tx) : KeysWeight(tx, -0.5f);
      wy[i] = mode == 3 ? CubicWeight(ty) : KeysWeight(ty, -0.5f);
    }
    const bool direct = xi > 0 && xi + 2 < width && yi > 0 && yi + 2 < height && !HasPalette();
    for (int j = 0; j < 4; ++j) {
      const uint8_t* row = direct ? PixelAddress24(xi - 1, yi - 1 + j) : nullptr;
      for (int i = 0; i < 4; ++i) {
        const ColorValue color =
            direct ? ColorOfBytes(row + 3 * i)
                   : PixelColorOrBackground(xi - 1 + i, yi - 1 + j, overflow, background);
        Accumulate(sums, wy[j] * wx[i], color);
      }
    }
    return MakeColor(ClampedChannel(sums[2]), ClampedChannel(sums[1]), ClampedChannel(sums[0]));
  }
  if (xi >= 0 && xi + 1 < width && yi >= 0 && yi + 1 < height && !HasPalette()) {
    // Eight-bit fixed point on the four pixels.
    const int32_t fx = static_cast<int32_t>((x - static_cast<float>(xi)) * 256);
    const int32_t fy = static_cast<int32_t>((y - static_cast<float>(yi)) * 256);
    const int32_t d = (fx * fy) >> 8;
    const int32_t a = 256 - fx - fy + d, b = fx - d, c = fy - d;
    const uint8_t* top = PixelAddress24(xi, yi);
    const uint8_t* under = PixelAddress24(xi, yi + 1);
    uint32_t channels[3];
    for (int k = 0; k < 3; ++k) {
      channels[k] = (a * top[k] + b * top[3 + k] + c * under[k] + d * under[3 + k]) >> 8;
    }
    return MakeColor(channels[2], channels[1], channels[0]);
  }
  const float dx = x - static_cast<float>(xi), dy = y - static_cast<float>(yi);
  const float d = dx * dy, c = dy - d, b = dx - d, a = 1 - dx - c;
  const ColorValue taps[4] = {PixelColorOrBackground(xi, yi, overflow, background),
                              PixelColorOrBackground(xi + 1, yi, overflow, background),
                              PixelColorOrBackground(xi, yi + 1, overflow, background),
                              PixelColorOrBackground(xi + 1, yi + 1, overflow, background)};
  const float weights[4] = {a, b, c, d};
  for (int k = 0; k < 4; ++k) Accumulate(sums, weights[k], taps[k]);
  // Truncated with no clamp; the low eight bits are kept.
  return MakeColor(TruncToInt(sums[2]) & 0xFF, TruncToInt(sums[1]) & 0xFF,
                   TruncToInt(sums[0]) & 0xFF);
}

ColorValue CImage::SampleArea(int32_t mode, int32_t overflow, const uint8_t* background, float x,
                              float y, float areaWidth, float areaHeight) {
  if (areaWidth <= 1 && areaHeight <= 1) return SampleAt(mode, overflow, background, x, y);
  const FloatRect area(x - areaWidth / 2, y - areaHeight / 2, x + areaWidth / 2,
                       y + areaHeight / 2);
  const int32_t x1 = TruncToInt(area.left + 0.5f), y1 = TruncToInt(area.top + 0.5f);
  const int32_t x2 = TruncToInt(area.right + 0.5f), y2 = TruncToInt(area.bottom + 0.5f);
  float sums[3] = {0, 0, 0};
  ColorValue last = 0;
  auto add = [&](int32_t px, int32_t py, float weight) {
    last = PixelColorOrBackground(px, py, overflow, background);
    Accumulate(sums, weight, last);
  };
  if (areaWidth > 1 && areaHeight > 1) {
    // Exact coverage: corners and edges by their shares of the area, whole pixels inside.
    const FloatRect first = area.Intersect(CellRect(x1, y1));
    const FloatRect end = area.Intersect(CellRect(x2, y2));
    const float lw = first.Width(), th = first.Height(), rw = end.Width(), bh = end.Height();
    add(x1, y1, lw * th);
    add(x2, y1, rw * th);
    add(x1, y2, lw * bh);
    add(x2, y2, rw * bh);
    for (int32_t px = x1 + 1; px < x2; ++px) add(px, y1, th);
    for (int32_t px = x1 + 1; px < x2; ++px) add(px, y2, bh);
    for (int32_t py = y1 + 1; py < y2; ++py) add(x1, py, lw);
    for (int32_t py = y1 + 1; py < y2; ++py) add(x2, py, rw);
    for (int32_t py = y1 + 1; py < y2; ++py) {
      for (int32_t px = x1 + 1; px < x2; ++px) add(px, py, 1);
    }
  } else {
    // One size is 1 or less: each covered cell is sampled at the centre of its share.
    for (int64_t py = y1; py <= y2; ++py) {
      for (int64_t px = x1; px <= x2; ++px) {
        const FloatRect share =
            area.Intersect(CellRect(static_cast<int32_t>(px), static_cast<int32_t>(py)));
        const FloatPoint centre = share.Centre();
        last = SampleAt(mode, overflow, background, centre.x, centre.y);
        Accumulate(sums, share.Surface(), last);
      }
    }
  }
  const float surface = area.Surface();
  // Byte 3 is whatever the last read pixel carried; it means nothing.
  return MakeColor(ClampedChannel(sums[2] / surface), ClampedChannel(sums[1] / surface),
                   ClampedChannel(sums[0] / surface)) |
         (last & 0xFF000000);
}

}  // namespace vsm
