// Measures that read a picture: the colour spread of a region and two bounding boxes.
#include <algorithm>
#include <cmath>

#include "image/image.h"
#include "image/image_layout.h"
#include "image/pixel_walk.h"

namespace vsm {

namespace {

constexpr int32_t kNoBound = 0x7FFFFFFF;

// Truncation to 32 bits that saturates: a bound that stayed at its start value, divided by a
// scale below 1, lies past the range and gives the largest integer.
int32_t SaturatingTrunc(float value) {
  if (value >= 2147483648.0f) return INT32_MAX;
  if (value <= -2147483648.0f) return INT32_MIN;
  return value == value ? static_cast<int32_t>(value) : 0;
}

// The colour of every palette index (0 past the palette), for loops over index rows.
void IndexColors(CImage& image, ColorValue* colors) {
  for (uint32_t i = 0; i < 256; ++i) colors[i] = image.PaletteColorAt(i);
}

}  // namespace

double CImage::ColorDeviation(ImageRect rect) {
  if (!HasWholeRows()) return 0.0;
  ImageRect region;
  if (!ReadRegion(rect, &region)) return 0.0;
  const bool rows = FastLoopsEnabled() && (IsPlain24(info_) || IsIndexed(info_));
  ColorValue colors[256];
  if (rows && IsIndexed(info_)) IndexColors(*this, colors);
  // A running mean: each value's distance from the mean so far, squared and summed. The answer
  // after the last value is the result.
  double sum = 0, squares = 0, count = 0;
  for (int32_t y = region.top; y < region.bottom; ++y) {
    const uint8_t* row = RowAt(info_, y);
    for (int32_t x = region.left; x < region.right; ++x) {
      ColorValue color;
      if (!rows) {
        color = PixelColorAt(x, y);
      } else if (info_.bitCount == 24) {
        color = ColorOfBytes(row + 3 * static_cast<size_t>(x));
      } else {
        color = colors[IndexInRow(row, x, info_.bitCount)];
      }
      const double value = (color & 0xFF) * 65536.0 + (color >> 8 & 0xFF) * 256.0 +
                           static_cast<double>(color >> 16 & 0xFF);
      count += 1;
      sum += value;
      const double distance = value - sum / count;
      squares += distance * distance;
    }
  }
  return std::sqrt(squares / count);
}

bool CImage::FindInkBounds(int32_t level, ImageRect* rectOut) {
  if (rectOut == nullptr) {
    info_.lastError = kImageBadValue;
    return false;
  }
  if (!Threshold(ImageRect{0, 0, -1, -1}, level)) return false;
  const float scale = 300.0f / static_cast<float>(info_.width);
  const float height = static_cast<float>(info_.height) * scale;
  if (!Scale(300, height < 2147483648.0f ? static_cast<int32_t>(height) : INT32_MAX, 2)) {
    return false;
  }
  static const int32_t kBlur[9] = {1, 2, 1, 2, 4, 2, 1, 2, 1};
  if (!Convolve(kBlur, 3, 16, 0)) return false;
  int32_t minX = kNoBound, minY = kNoBound, maxX = 0, maxY = 0;
  for (int32_t y = 0; y < info_.height; ++y) {
    for (int32_t x = 0; x < info_.width; ++x) {
      if ((PixelColorAt(x, y) & 0xFF) != 0) continue;
      minX = std::min(minX, x);
      maxX = std::max(maxX, x);
      minY = std::min(minY, y);
      maxY = std::max(maxY, y);
    }
  }
  // `top` takes the larger row number: a top row counted in storage order.
  rectOut->left = SaturatingTrunc(static_cast<float>(minX) / scale);
  rectOut->right = SaturatingTrunc(static_cast<float>(maxX) / scale);
  rectOut->top = SaturatingTrunc(static_cast<float>(maxY) / scale);
  rectOut->bottom = SaturatingTrunc(static_cast<float>(minY) / scale);
  return true;
}

ImageRect CImage::FindContentBounds(ColorValue color) {
  ImageRect bounds{kNoBound, kNoBound, 0, 0};
  if (!HasWholeRows()) return bounds;
  const bool rows = FastLoopsEnabled() && (IsPlain24(info_) || IsIndexed(info_));
  // Per palette index, whether its colour differs.
  bool differs[256];
  if (rows && IsIndexed(info_)) {
    ColorValue colors[256];
    IndexColors(*this, colors);
    for (int i = 0; i < 256; ++i) differs[i] = colors[i] != color;
  }
  for (int32_t y = 0; y < info_.height; ++y) {
    const uint8_t* row = RowAt(info_, y);
    for (int32_t x = 0; x < info_.width; ++x) {
      bool counts;
      if (!rows) {
        counts = PixelColorAt(x, y) != color;
      } else if (info_.bitCount == 24) {
        counts = ColorOfBytes(row + 3 * static_cast<size_t>(x)) != color;
      } else {
        counts = differs[IndexInRow(row, x, info_.bitCount)];
      }
      if (!counts) continue;
      bounds.left = std::min(bounds.left, x);
      bounds.top = std::min(bounds.top, y);
      bounds.right = std::max(bounds.right, x);
      bounds.bottom = std::max(bounds.bottom, y);
    }
  }
  return bounds;
}

}  // namespace vsm
