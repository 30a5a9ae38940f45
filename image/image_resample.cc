// Resizing through the samplers, with pixel centres aligned, and resolution changes that resize.
#include <cstring>

#include "image/image.h"
#include "image/image_layout.h"
#include "image/kernels.h"

namespace vsm {

void CImage::ResampleSampled(int32_t newWidth, int32_t newHeight, int32_t mode, int32_t overflow,
                             bool noAveraging) {
  if (newWidth < 1 || newHeight < 1 || !IsValid() || mode < 1 || mode > 5 || overflow < 1 ||
      overflow > 6) {
    info_.lastError = kImageBadValue;
    return;
  }
  if (newWidth == info_.width && newHeight == info_.height) return;
  CImage temp;
  if (temp.Create(newWidth, newHeight, &info_, 0) == nullptr) return;
  const float xScale = ScaleOf(info_.width, newWidth), yScale = ScaleOf(info_.height, newHeight);
  const bool averaging = !noAveraging && (xScale > 1 || yScale > 1);
  const bool direct = !averaging && !temp.HasPalette();
  for (int32_t y = 0; y < newHeight; ++y) {
    if (StopAtRow(y, newHeight)) return;
    const float sy = yScale * (static_cast<float>(y) + 0.5f) - 0.5f;
    for (int32_t x = 0; x < newWidth; ++x) {
      const float sx = xScale * (static_cast<float>(x) + 0.5f) - 0.5f;
      if (averaging) {
        temp.StorePixelColor(x, y, SampleArea(mode, overflow, nullptr, sx, sy, xScale, yScale));
        continue;
      }
      const ColorValue color = SampleAt(mode, overflow, nullptr, sx, sy);
      if (!direct) {
        temp.StorePixelColor(x, y, color);
        continue;
      }
      uint8_t* pixel = temp.PixelAddress24(x, y);
      pixel[0] = static_cast<uint8_t>(color);
      pixel[1] = static_cast<uint8_t>(color >> 8);
      pixel[2] = static_cast<uint8_t>(color >> 16);
    }
  }
  FinishWith(temp);
}

void CImage::SetDpi(int32_t xDpi, int32_t yDpi, bool resample, int32_t method) {
  if (!IsValid()) return;
  if (!resample) {
    SetXDpi(xDpi);
    SetYDpi(yDpi);
    std::memcpy(info_.dib, &info_, kDibHeaderSize);
    return;
  }
  int32_t currentX = GetXDpi(), currentY = GetYDpi();
  if (currentX == 0) currentX = 96;
  if (currentY == 0) currentY = 96;
  const float xFactor = static_cast<float>(xDpi) / static_cast<float>(currentX);
  const float yFactor = static_cast<float>(yDpi) / static_cast<float>(currentY);
  SetXDpi(xDpi);
  SetYDpi(yDpi);
  ResampleSampled(TruncToInt(static_cast<float>(info_.width) * xFactor + 0.5f),
                  TruncToInt(static_cast<float>(info_.height) * yFactor + 0.5f), method, 5, false);
}

}  // namespace vsm
