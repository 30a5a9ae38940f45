// Quarter turns (a bit walk at 1 bit, 64 x 64 tiles at the other depths) and the turn by any
// angle through the samplers.
#include <algorithm>
#include <cmath>
#include <cstring>

#include "image/float_geometry.h"
#include "image/image.h"
#include "image/image_layout.h"
#include "image/kernels.h"
#include "image/pixel_walk.h"

namespace vsm {

namespace {

constexpr int32_t kTile = 64;

}  // namespace

bool CImage::RotateClockwise() { return TurnQuarter(true); }

bool CImage::RotateCounterClockwise() { return TurnQuarter(false); }

bool CImage::TurnQuarter(bool clockwise) {
  if (!HasWholeRows()) return false;
  CImage temp;
  if (temp.Create(info_.height, info_.width, &info_, 0) == nullptr) return false;
  const bool done = info_.bitCount == 1 && IsIndexed(info_) ? TurnOneBit(temp, clockwise)
                                                            : TurnByTiles(temp, clockwise);
  return done && FinishWith(temp);
}

bool CImage::TurnOneBit(CImage& target, bool clockwise) {
  const int32_t width = info_.width, height = info_.height;
  const ImageInfo& to = target.info_;
  uint8_t* const end = to.bits + to.imageSize;
  for (int32_t y = 0; y < height; ++y) {
    if (StopAtRow(y, height)) return false;
    if (!FastLoopsEnabled()) {
      for (int32_t x = 0; x < width; ++x) {
        if (clockwise) {
          CopyPixelTo(target, y, width - 1 - x, x, y);
        } else {
          CopyPixelTo(target, height - 1 - y, x, x, y);
        }
      }
      continue;
    }
    // Destination column and the bit that stands for it in a destination row.
    const int32_t column = clockwise ? y : height - 1 - y;
    const size_t columnByte = static_cast<size_t>(column) >> 3;
    const uint8_t bit = static_cast<uint8_t>(0x80 >> (column & 7));
    const uint8_t* from = RowAt(info_, y);
    // Every bit of every source byte, the row's padding bits included: a destination past the
    // pixel array ends the byte's walk, which keeps the padding out.
    for (uint32_t byte = 0; byte < info_.stride; ++byte) {
      const uint8_t value = from[byte];
      if (value == 0) continue;
      for (int32_t k = 0; k < 8; ++k) {
        if ((value & (0x80 >> k)) == 0) continue;
        const int64_t x = 8 * static_cast<int64_t>(byte) + k;
        const int64_t row = clockwise ? width - 1 - x : x;
        if (row < 0 || row >= to.height) break;
        uint8_t* address = to.bits + static_cast<size_t>(row) * to.stride + columnByte;
        if (address >= end) break;
        *address |= bit;
      }
    }
  }
  return true;
}

bool CImage::TurnByTiles(CImage& target, bool clockwise) {
  const int32_t width = info_.width, height = info_.height;
  const uint32_t bits = info_.bitCount;
  const bool plain24 = IsPlain24(info_) && IsPlain24(target.info_);
  const bool indices = (bits == 4 || bits == 8) && IsIndexed(info_) && IsIndexed(target.info_) &&
                       target.info_.bitCount == bits;
  const bool rows = FastLoopsEnabled() && (plain24 || indices);
  // The progress of a band comes from the last column bound the walk reached, not from the
  // band: it tells little and can pass 100, which callers have seen for long.
  int32_t columnBound = 0;
  for (int32_t y0 = 0; y0 < height; y0 += kTile) {
    info_.progress = PercentOf(columnBound, height);
    if (clockwise) OnProgress(info_.progress);
    if (__atomic_load_n(&info_.cancelled, __ATOMIC_RELAXED) != 0) {
      info_.lastError = kImageCancelled;
      return false;
    }
    const int32_t yEnd = std::min(y0 + kTile, height);
    for (int32_t x0 = 0; x0 < width; x0 += kTile) {
      columnBound = std::min(x0 + kTile, width);
      for (int32_t x = x0; x < columnBound; ++x) {
        // Source column x is destination row toY; source row y is destination column toX.
        const int32_t toY = clockwise ? width - 1 - x : x;
        if (rows && bits != 4) {
          // Down the source column, along the destination row, a pixel of 3 or 1 bytes.
          const size_t size = bits / 8;
          const uint8_t* from = RowAt(info_, y0) + size * x;
          uint8_t* to = RowAt(target.info_, toY) + size * (clockwise ? y0 : height - 1 - y0);
          const ptrdiff_t step = clockwise ? size : -static_cast<ptrdiff_t>(size);
          for (int32_t y = y0; y < yEnd; ++y, from += info_.stride, to += step) {
            if (plain24) {
              std::memcpy(to, from, 3);
            } else {
              *to = *from;
            }
          }
          continue;
        }
        for (int32_t y = y0; y < yEnd; ++y) {
          const int32_t toX = clockwise ? y : height - 1 - y;
          if (rows) {
            StoreIndexInRow(RowAt(target.info_, toY), toX, bits,
                            IndexInRow(RowAt(info_, y), x, bits));
          } else {
            CopyPixelTo(target, toX, toY, x, y);
          }
        }
      }
    }
  }
  return true;
}

bool CImage::Rotate(int32_t mode, int32_t overflow, const uint8_t* background, bool keepSize,
                    float angle) {
  if (!HasWholeRows()) return false;
  if (IsRightAngle(angle)) return RotateRightAngle(angle);
  const double radians = -static_cast<double>(angle) * 1.5707963267948966 / 90.0;
  const float c = static_cast<float>(std::cos(radians));
  const float s = static_cast<float>(std::sin(radians));
  const float width = static_cast<float>(info_.width), height = static_cast<float>(info_.height);
  FloatPoint corners[4] = {FloatPoint(-0.5f, -0.5f), FloatPoint(width - 0.5f, -0.5f),
                           FloatPoint(-0.5f, height - 0.5f),
                           FloatPoint(width - 0.5f, height - 0.5f)};
  if (!keepSize) {
    const FloatPoint last = corners[3];
    for (FloatPoint& p : corners) p = FloatPoint(c * p.x - s * p.y, s * p.x + c * p.y);
    // A turn that brings the last corner within a quarter pixel of where a right angle would
    // is done exactly.
    const FloatPoint clockwise(height - 0.5f, 0.5f - width);
    const FloatPoint counter(0.5f - height, width - 0.5f);
    const FloatPoint half(0.5f - width, 0.5f - height);
    if (corners[3].Distance(clockwise) < 0.25f) return RotateClockwise();
    if (corners[3].Distance(counter) < 0.25f) return RotateCounterClockwise();
    if (corners[3].Distance(half) < 0.25f) return RotateHalfTurn();
    if (corners[3].Distance(last) < 0.25f) return true;
  }
  float minX = corners[0].x, maxX = minX, minY = corners[0].y, maxY = minY;
  for (const FloatPoint& p : corners) {
    minX = std::min(minX, p.x);
    maxX = std::max(maxX, p.x);
    minY = std::min(minY, p.y);
    maxY = std::max(maxY, p.y);
  }
  const float spanX = std::floor(maxX - minX + 0.5f), spanY = std::floor(maxY - minY + 0.5f);
  // Only an angle that isn't a number leaves no finite size.
  if (!(spanX >= 1 && spanX < 1e9f && spanY >= 1 && spanY < 1e9f)) {
    info_.lastError = kImageBadValue;
    return false;
  }
  const int32_t newWidth = static_cast<int32_t>(spanX), newHeight = static_cast<int32_t>(spanY);
  float startX = (minX + maxX - static_cast<float>(newWidth - 1)) / 2;
  float startY = (minY + maxY - static_cast<float>(newHeight - 1)) / 2;
  float addX = 0, addY = 0;
  if (keepSize) {
    startX -= static_cast<float>(info_.width / 2);
    startY -= static_cast<float>(info_.height / 2);
    addX = static_cast<float>(newWidth / 2);
    addY = static_cast<float>(newHeight / 2);
  }
  CImage temp;
  if (temp.Create(newWidth, newHeight, &info_, 0) == nullptr) return false;
  return RotateInto(temp, mode, overflow, background, c, s, startX, startY, addX, addY) &&
         FinishWith(temp);
}

bool CImage::RotateInto(CImage& target, int32_t mode, int32_t overflow, const uint8_t* background,
                        float c, float s, float startX, float startY, float addX, float addY) {
  const int32_t newWidth = target.info_.width, newHeight = target.info_.height;
  const int32_t width = info_.width, height = info_.height;
  const bool direct = !target.HasPalette();
  // Plain 24-bit bilinear sampling, inlined: the same fixed-point sum as SampleAt's for
  // positions whose four taps lie inside; the others go through SampleAt.
  const bool inline24 =
      FastLoopsEnabled() && IsPlain24(info_) && direct && mode != 1 && mode != 3 && mode != 4;
  const float lastX = static_cast<float>(width - 1), lastY = static_cast<float>(height - 1);
  float y = startY;
  for (int32_t j = 0; j < newHeight; ++j, y += 1.0f) {
    if (StopAtRow(j, newHeight)) return false;
    uint8_t* to = RowAt(target.info_, j);
    float x = startX;
    for (int32_t i = 0; i < newWidth; ++i, x += 1.0f) {
      // Without keepSize the additions are of 0, which leave every value as it was.
      const float sx = c * x + s * y + addX;
      const float sy = -s * x + c * y + addY;
      if (inline24 && sx >= 0 && sy >= 0 && sx < lastX && sy < lastY) {
        const int32_t xi = static_cast<int32_t>(sx), yi = static_cast<int32_t>(sy);
        const int32_t fx = static_cast<int32_t>((sx - static_cast<float>(xi)) * 256);
        const int32_t fy = static_cast<int32_t>((sy - static_cast<float>(yi)) * 256);
        const int32_t d = (fx * fy) >> 8;
        const int32_t a = 256 - fx - fy + d, b = fx - d, e = fy - d;
        const uint8_t* top = info_.bits + static_cast<size_t>(yi) * info_.stride + 3 * xi;
        const uint8_t* under = top + info_.stride;
        uint8_t* pixel = to + 3 * static_cast<size_t>(i);
        for (int k = 0; k < 3; ++k) {
          pixel[k] = static_cast<uint8_t>(
              (a * top[k] + b * top[3 + k] + e * under[k] + d * under[3 + k]) >> 8);
        }
        continue;
      }
      const ColorValue color = SampleAt(mode, overflow, background, sx, sy);
      if (direct) {
        uint8_t* pixel = to + 3 * static_cast<size_t>(i);
        pixel[0] = static_cast<uint8_t>(color);
        pixel[1] = static_cast<uint8_t>(color >> 8);
        pixel[2] = static_cast<uint8_t>(color >> 16);
      } else {
        target.StorePixelColor(i, j, color);
      }
    }
  }
  return true;
}

}  // namespace vsm
