// Flips, mirrors and the half turn, the right-angle dispatch, and the checks the row loops of
// the geometry, tone and filter operations start with.
#include <algorithm>
#include <cstring>

#include "image/image.h"
#include "image/image_layout.h"
#include "image/kernels.h"
#include "image/pixel_walk.h"

namespace vsm {

bool CImage::HasWholeRows() {
  if (!IsValid()) return false;
  if (RowsInBlock(info_)) return true;
  info_.lastError = kImageInvalid;
  return false;
}

void CImage::CopyPixelTo(CImage& target, int32_t toX, int32_t toY, int32_t x, int32_t y) {
  if (IsIndexed(info_) && IsIndexed(target.info_) && info_.bitCount == target.info_.bitCount) {
    target.StorePixelIndex(toX, toY, PixelIndexAt(x, y));
  } else {
    target.StorePixelColor(toX, toY, PixelColorAt(x, y));
  }
}

bool CImage::FlipRows() {
  if (!HasWholeRows()) return false;
  const int32_t width = info_.width, height = info_.height;
  CImage temp;
  if (temp.Create(width, height, &info_, 0) == nullptr) return false;
  const bool bytes = RowsCopyAsBytes(info_, temp.info_);
  for (int32_t i = 0; i < height; ++i) {
    if (StopAtRow(i, height)) return false;
    if (bytes) {
      std::memcpy(RowAt(temp.info_, i), RowAt(info_, height - 1 - i), info_.stride);
      continue;
    }
    for (int32_t x = 0; x < width; ++x) CopyPixelTo(temp, x, i, x, height - 1 - i);
  }
  return FinishWith(temp);
}

bool CImage::MirrorColumns() {
  if (!HasWholeRows()) return false;
  const int32_t width = info_.width, height = info_.height;
  const uint32_t bits = info_.bitCount;
  CImage temp;
  if (temp.Create(width, height, &info_, 0) == nullptr) return false;
  const bool bytes = RowsCopyAsBytes(info_, temp.info_);
  for (int32_t y = 0; y < height; ++y) {
    if (StopAtRow(y, height)) return false;
    const uint8_t* from = RowAt(info_, y);
    uint8_t* to = RowAt(temp.info_, y);
    if (bytes && bits == 24) {
      for (int32_t x = 0; x < width; ++x) {
        std::memcpy(to + 3 * static_cast<size_t>(x), from + 3 * static_cast<size_t>(width - 1 - x),
                    3);
      }
    } else if (bytes && bits == 8) {
      std::reverse_copy(from, from + width, to);
    } else if (bytes) {
      for (int32_t x = 0; x < width; ++x) {
        StoreIndexInRow(to, x, bits, IndexInRow(from, width - 1 - x, bits));
      }
    } else {
      for (int32_t x = 0; x < width; ++x) CopyPixelTo(temp, x, y, width - 1 - x, y);
    }
  }
  return FinishWith(temp);
}

bool CImage::RotateHalfTurn() {
  if (!HasWholeRows()) return false;
  const int32_t width = info_.width, height = info_.height;
  const uint32_t bits = info_.bitCount;
  CImage temp;
  if (temp.Create(width, height, &info_, 0) == nullptr) return false;
  const bool rows = FastLoopsEnabled() && RowsCopyAsBytes(info_, temp.info_) &&
                    (IsPlain24(info_) || IsIndexed(info_));
  for (int32_t y = 0; y < height; ++y) {
    if (StopAtRow(y, height)) return false;
    const int32_t fromY = height - 1 - y;
    if (!rows) {
      // By index where there is a palette, by colour where there isn't.
      for (int32_t x = 0; x < width; ++x) {
        if (HasPalette()) {
          temp.StorePixelIndex(x, y, PixelIndexAt(width - 1 - x, fromY));
        } else {
          temp.StorePixelColor(x, y, PixelColorAt(width - 1 - x, fromY));
        }
      }
      continue;
    }
    const uint8_t* from = RowAt(info_, fromY);
    uint8_t* to = RowAt(temp.info_, y);
    if (bits == 24) {
      for (int32_t x = 0; x < width; ++x) {
        std::memcpy(to + 3 * static_cast<size_t>(x), from + 3 * static_cast<size_t>(width - 1 - x),
                    3);
      }
    } else if (bits == 8) {
      std::reverse_copy(from, from + width, to);
    } else {
      for (int32_t x = 0; x < width; ++x) {
        StoreIndexInRow(to, x, bits, IndexInRow(from, width - 1 - x, bits));
      }
    }
  }
  return FinishWith(temp);
}

bool CImage::IsRightAngle(double angle) {
  // Past the range of a 64-bit integer (and for NaN) the truncation can't equal the angle.
  if (!(angle > -9.2e18 && angle < 9.2e18)) return false;
  const int64_t whole = static_cast<int64_t>(angle);
  return static_cast<double>(whole) == angle && whole % 90 == 0;
}

bool CImage::RotateRightAngle(double angle) {
  if (!IsValid()) return false;
  int32_t turn = TruncToInt(angle) % 360;
  if (turn < 0) turn += 360;
  switch (turn) {
    case 0:
      return true;
    case 90:
      return RotateClockwise();
    case 180:
      return RotateHalfTurn();
    case 270:
      return RotateCounterClockwise();
    default:
      return false;
  }
}

}  // namespace vsm
