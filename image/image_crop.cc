// Crops, width extension and pasting.
#include <algorithm>
#include <cstring>

#include "image/dib_import.h"
#include "image/image.h"
#include "image/image_layout.h"
#include "image/pixel_walk.h"

namespace vsm {

bool CImage::CropTo(ImageRect rect, CImage& target) {
  if (!HasWholeRows()) return false;
  ImageRect region;
  if (!ReadRegion(rect, &region)) return false;
  const int32_t width = region.right - region.left, height = region.bottom - region.top;
  // Create doesn't release a block, so an old one would be lost.
  target.Destroy();
  if (target.Create(width, height, &info_, 0) == nullptr) return false;
  const uint32_t bits = info_.bitCount;
  const bool bytes = (bits == 8 || bits == 24) && RowsCopyAsBytes(info_, target.info_);
  const bool indices = (bits == 1 || bits == 4) && bits == target.info_.bitCount;
  for (int32_t y = region.top; y < region.bottom; ++y) {
    if (StopAtRow(y, region.bottom)) {
      // A cancelled crop reports no error; the rows made so far stay in `target`.
      info_.lastError = kImageOk;
      return false;
    }
    const int32_t toY = y - region.top;
    if (bytes) {
      std::memcpy(RowAt(target.info_, toY), RowAt(info_, y) + bits * region.left / 8,
                  bits * width / 8);
      continue;
    }
    for (int32_t x = region.left; x < region.right; ++x) {
      if (indices) {
        target.StorePixelIndex(x - region.left, toY, PixelIndexAt(x, y));
      } else {
        CopyPixelTo(target, x - region.left, toY, x, y);
      }
    }
  }
  if (__atomic_load_n(&info_.cancelled, __ATOMIC_RELAXED) != 0) return false;
  info_.progress = 0;
  return true;
}

bool CImage::Crop(ImageRect rect) {
  // The raw values, unclamped: a rect at least as large as the image keeps it whole.
  if (static_cast<int64_t>(rect.right) - rect.left >= info_.width &&
      static_cast<int64_t>(rect.bottom) - rect.top >= info_.height) {
    return true;
  }
  if (rect.left == 0 && rect.top == 0 && rect.right == -1 && rect.bottom == -1) return true;
  CImage temp;
  if (!CropTo(rect, temp)) return false;
  TakeOver(temp);
  info_.cancelled = 0;
  info_.progress = 0;
  return true;
}

uint8_t* CImage::CropToDib(ImageRect rect) {
  CImage temp;
  if (!CropTo(rect, temp)) return nullptr;
  uint8_t* block = temp.CopyDib();
  if (block == nullptr) info_.lastError = temp.info_.lastError;
  return block;
}

int32_t CImage::CropAndDiscard(ImageRect rect) {
  CImage temp;
  CropTo(rect, temp);
  return 0;
}

bool CImage::ExtendWidth(int32_t newWidth, ColorRefValue color) {
  if (!HasWholeRows()) return false;
  const int32_t width = info_.width, height = info_.height;
  if (newWidth == width) return true;
  if (newWidth < width) return Crop(ImageRect{0, 0, newWidth, height});
  const ColorValue paint = SwapRedBlue(color);
  CImage temp;
  if (temp.Create(newWidth, height, &info_, 0) == nullptr) return false;
  const ImageInfo& to = temp.info_;
  const bool bytes = RowsCopyAsBytes(info_, to);
  const bool fast = FastLoopsEnabled() && (IsPlain24(to) || IsIndexed(to));
  // The one lookup StorePixelColor's cache would answer every later pixel with.
  const uint8_t index = fast && IsIndexed(to) ? temp.NearestPaletteIndex(paint) : 0;
  for (int32_t y = 0; y < height; ++y) {
    if (StopAtRow(y, height)) return false;
    uint8_t* row = RowAt(to, y);
    // The old row's padding lands in the new columns, which the paint then covers.
    if (bytes) {
      std::memcpy(row, RowAt(info_, y), info_.stride);
    } else {
      for (int32_t x = 0; x < width; ++x) CopyPixelTo(temp, x, y, x, y);
    }
    for (int32_t x = width; x < newWidth; ++x) {
      if (!fast) {
        temp.StorePixelColor(x, y, paint);
      } else if (IsPlain24(to)) {
        uint8_t* pixel = row + 3 * static_cast<size_t>(x);
        pixel[0] = static_cast<uint8_t>(paint);
        pixel[1] = static_cast<uint8_t>(paint >> 8);
        pixel[2] = static_cast<uint8_t>(paint >> 16);
      } else {
        StoreIndexInRow(row, x, to.bitCount, index);
      }
    }
  }
  return FinishWith(temp);
}

bool CImage::Paste(int32_t x, int32_t y, const void* dib) {
  if (!HasWholeRows()) return false;
  if (dib != nullptr && !TrackedDibFits(dib)) {
    info_.lastError = kImageInvalid;
    return false;
  }
  CImage source(const_cast<void*>(dib), kBorrowBlock);
  x = std::max(x, 0);
  y = std::max(y, 0);
  const int32_t columns = std::min<int64_t>(source.info_.width, int64_t{info_.width} - x);
  const int32_t rows = std::min<int64_t>(int64_t{info_.height} - y, source.info_.height);
  if (FastLoopsEnabled() && IsPlain24(info_) && IsPlain24(source.info_) && columns > 0) {
    for (int32_t j = 0; j < rows; ++j) {
      std::memcpy(PixelAddress24(x, y + j), source.PixelAddress24(0, j), 3 * size_t(columns));
    }
    return true;
  }
  const bool oneBit = info_.bitCount == 1;
  for (int32_t i = 0; i < columns; ++i) {
    for (int32_t j = 0; j < rows; ++j) {
      ColorValue color = source.PixelColorAt(i, j);
      // A 1-bit image keeps white and takes every other colour as black.
      if (oneBit && (color & 0xFFFFFF) != 0xFFFFFF) color = 0;
      StorePixelColor(x + i, y + j, color);
    }
  }
  return true;
}

}  // namespace vsm
