// Drawing: filling a region, blending one into a new block, and the rounded box.
#include <algorithm>
#include <climits>
#include <cmath>
#include <cstring>

#include "image/image.h"
#include "image/image_layout.h"
#include "image/pixel_walk.h"

namespace vsm {

void CImage::FillRect(ImageRect rect, const uint8_t* color) {
  if (!HasWholeRows()) return;
  if (color == nullptr) {
    info_.lastError = kImageBadValue;
    return;
  }
  ImageRect region;
  if (!ReadRegion(rect, &region)) return;
  CImage temp;
  if (temp.Create(info_.width, info_.height, &info_, 0) == nullptr) return;
  ImageInfo& to = temp.info_;
  if (RowsCopyAsBytes(info_, to)) {
    std::memcpy(to.bits, info_.bits, info_.imageSize);
  } else {
    for (int32_t y = 0; y < info_.height; ++y) {
      for (int32_t x = 0; x < info_.width; ++x) CopyPixelTo(temp, x, y, x, y);
    }
  }
  const ColorValue value = EntryColor(color);
  // The palette is full, so in practice this is the exact entry or the nearest one.
  const uint8_t index =
      static_cast<uint8_t>(temp.FindOrAddPaletteColor(value, static_cast<int32_t>(to.colorsUsed)));
  const bool fast = FastLoopsEnabled() && (IsPlain24(to) || IsIndexed(to));
  for (int32_t y = region.top; y < region.bottom; ++y) {
    if (StopAtRow(y, region.bottom)) return;
    uint8_t* row = RowAt(to, y);
    for (int32_t x = region.left; x < region.right; ++x) {
      if (!fast) {
        if (temp.HasPalette()) {
          temp.StorePixelIndex(x, y, index);
        } else {
          temp.StorePixelColor(x, y, value);
        }
      } else if (IsPlain24(to)) {
        std::memcpy(row + 3 * static_cast<size_t>(x), color, 3);
      } else {
        StoreIndexInRow(row, x, to.bitCount, index);
      }
    }
  }
  FinishWith(temp);
}

uint8_t* CImage::BlendRectToDib(ImageRect rect, const uint8_t* color, float opacity) {
  if (!HasWholeRows()) return nullptr;
  if (color == nullptr) {
    info_.lastError = kImageBadValue;
    return nullptr;
  }
  ImageRect region;
  if (!ReadRegion(rect, &region)) return nullptr;
  // The block's size comes from the raw rect, so an overhang stays black; a rect given the
  // wrong way round leaves no size.
  const int64_t right = rect.right == -1 ? info_.width : rect.right;
  const int64_t bottom = rect.bottom == -1 ? info_.height : rect.bottom;
  const int64_t width = right - rect.left, height = bottom - rect.top;
  if (width < 1 || height < 1) {
    info_.lastError = kImageBadValue;
    return nullptr;
  }
  CImage temp;
  if (temp.Create(static_cast<int32_t>(std::min<int64_t>(width, INT32_MAX)),
                  static_cast<int32_t>(std::min<int64_t>(height, INT32_MAX)), &info_,
                  24) == nullptr) {
    return nullptr;
  }
  const ColorValue paint = EntryColor(color);
  const float inverse = 1 - opacity;
  const bool mix = opacity > 0 && opacity < 1, solid = opacity >= 1;
  bool stopped = false;
  for (int32_t y = region.top; y < region.bottom && !stopped; ++y) {
    if (StopAtRow(y, region.bottom)) {
      // A cancel gives the rows done so far, and isn't an error.
      info_.lastError = kImageOk;
      stopped = true;
      break;
    }
    for (int32_t x = region.left; x < region.right; ++x) {
      ColorValue out = PixelColorAt(x, y);
      if (mix) {
        uint32_t channels[3];
        for (int k = 0; k < 3; ++k) {
          const float value = inverse * static_cast<float>(out >> (8 * k) & 0xFF) +
                              opacity * static_cast<float>(color[k]);
          channels[k] = static_cast<uint32_t>(value);
        }
        out = MakeColor(channels[2], channels[1], channels[0]);
      } else if (solid) {
        out = paint;
      }
      temp.StorePixelColor(x - region.left, y - region.top, out);
    }
  }
  if (!stopped && __atomic_load_n(&info_.cancelled, __ATOMIC_RELAXED) == 0) info_.progress = 0;
  return temp.Detach();
}

bool CImage::DrawRoundedBox(int32_t left, int32_t top, const uint8_t* shape,
                            uint32_t rightAndBottom, ColorRefValue color, float ratio,
                            float alpha) {
  if (shape == nullptr) {
    info_.lastError = kImageBadValue;
    return false;
  }
  if (*shape != 0) {
    info_.lastError = kImageBadShape;
    return false;
  }
  const int32_t right = static_cast<int32_t>(rightAndBottom >> 16);
  const int32_t bottom = static_cast<int32_t>(rightAndBottom & 0xFFFF);
  const ColorValue paint = SwapRedBlue(color);
  if (!(ratio >= 0 && ratio <= 0.5f)) ratio = 0.1f;
  if (!(alpha >= 0 && alpha <= 1)) alpha = 0;
  // The radius follows `bottom` itself, not the box's height.
  const int32_t radius =
      alpha == 1 ? 0 : static_cast<int32_t>(static_cast<float>(bottom) * ratio / 100);
  const int64_t boxWidth = int64_t{right} - left, boxHeight = int64_t{bottom} - top;
  if (alpha == 0 || boxWidth < 1) return true;
  // The box stands `bottom` rows from the far end of the rows.
  const int64_t startY = std::max<int64_t>(int64_t{info_.height} - bottom - 1, 0);
  const int64_t startX = std::max(left, 0);
  // Nothing is checked beyond the rows lying in the block: writes outside the image drop.
  if (!RowsInBlock(info_)) return true;
  const int64_t columns = std::min<int64_t>(boxWidth, info_.width - startX);
  const int64_t rows = std::min<int64_t>(boxHeight, info_.height - startY);
  const int64_t end = boxWidth - radius - 1;
  const bool blend = alpha > 0 && alpha < 1;
  for (int64_t i = 0; i < columns; ++i) {
    int64_t inset = 0;
    if (i <= radius || i >= end) {
      const int64_t d = i <= radius ? i - radius : end - i;
      const float across = std::sqrt(static_cast<float>(int64_t{radius} * radius - d * d));
      inset = static_cast<int64_t>(radius + 0.5 - across);
    }
    for (int64_t j = 0; j < rows; ++j) {
      if (j < inset || j >= boxHeight - inset) continue;
      const int32_t x = static_cast<int32_t>(startX + i), y = static_cast<int32_t>(startY + j);
      ColorValue out = paint;
      if (blend) {
        // Here alpha weighs the old pixel, the other way round from BlendRectToDib's opacity.
        const ColorValue old = PixelColorAt(x, y);
        uint32_t channels[3];
        for (int k = 0; k < 3; ++k) {
          const float kept = static_cast<float>(old >> (8 * k) & 0xFF) * alpha;
          channels[k] = static_cast<uint32_t>((1.0 - alpha) * (paint >> (8 * k) & 0xFF) +
                                              static_cast<double>(kept));
        }
        out = MakeColor(channels[2], channels[1], channels[0]);
      }
      StorePixelColor(x, y, out);
    }
  }
  return true;
}

}  // namespace vsm
