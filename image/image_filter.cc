// Square-kernel filtering. Sums are taken in 32 bits and wrap as the hardware's would, so a
// kernel with huge entries gives wrapped values rather than undefined ones.
#include <cstring>

#include "image/image.h"
#include "image/image_layout.h"
#include "image/pixel_walk.h"

namespace vsm {

namespace {

// The largest size whose square still counts the kernel's entries in 32 bits.
constexpr int32_t kLargestKernel = 46340;

inline uint32_t Product(int32_t weight, uint32_t value) {
  return static_cast<uint32_t>(weight) * value;
}

// sum / divisor truncating, then + offset, both wrapping at 32 bits, clamped to a byte: at most
// 0 gives 0, at most 254 the value, else 255. The double division is exact for 32-bit
// operands: it lands on the true quotient's integer part.
inline uint8_t Finish(uint32_t sum, int32_t divisor, int32_t offset) {
  int32_t value = static_cast<int32_t>(sum);
  if (divisor == -1) {
    value = static_cast<int32_t>(0u - sum);
  } else if (divisor != 0 && divisor != 1) {
    value = static_cast<int32_t>(static_cast<double>(value) / divisor);
  }
  value = static_cast<int32_t>(static_cast<uint32_t>(value) + static_cast<uint32_t>(offset));
  return value <= 0 ? 0 : value <= 254 ? static_cast<uint8_t>(value) : 255;
}

}  // namespace

bool CImage::Convolve(const int32_t* kernel, int32_t size, int32_t factor, int32_t offset) {
  if (!HasWholeRows()) return false;
  if (kernel == nullptr || size < 1 || size > kLargestKernel) {
    info_.lastError = kImageBadValue;
    return false;
  }
  CImage temp;
  if (temp.Create(info_.width, info_.height, &info_, 0) == nullptr) return false;
  const bool grey = info_.bitCount == 8 && IsGreyPalette() && IsIndexed(temp.info_);
  const bool done = grey ? ConvolveGrey(temp, kernel, size, factor, offset)
                         : ConvolveColor(temp, kernel, size, factor, offset);
  return done && FinishWith(temp);
}

bool CImage::ConvolveGrey(CImage& target, const int32_t* kernel, int32_t size, int32_t factor,
                          int32_t offset) {
  if (factor == 0) factor = 1;
  const int64_t width = info_.width, height = info_.height;
  const int64_t low = size / 2, high = size - low;
  for (int64_t y = 0; y < height; ++y) {
    if (StopAtRow(static_cast<int32_t>(y), info_.height)) return false;
    const uint8_t* from = RowAt(info_, static_cast<int32_t>(y));
    uint8_t* to = RowAt(target.info_, static_cast<int32_t>(y));
    std::memcpy(to, from, static_cast<size_t>(width));
    // Pixels whose window touches row or column 0, or passes the far edge, stay unfiltered: two
    // columns and rows at the low end for size 3 and one at the high end. Callers' pictures
    // were made with this border.
    if (y - low <= 0 || y + high > height) continue;
    const uint8_t* window = RowAt(info_, static_cast<int32_t>(y - low));
    for (int64_t x = low + 1; x + high <= width; ++x) {
      uint32_t sum = 0;
      const uint8_t* rowStart = window + (x - low);
      for (int32_t m = 0; m < size; ++m, rowStart += info_.stride) {
        const int32_t* weights = kernel + static_cast<size_t>(m) * size;
        for (int32_t n = 0; n < size; ++n) sum += Product(weights[n], rowStart[n]);
      }
      to[x] = Finish(sum, factor, offset);
    }
  }
  return true;
}

bool CImage::ConvolveColor(CImage& target, const int32_t* kernel, int32_t size, int32_t factor,
                           int32_t offset) {
  const int32_t width = info_.width, height = info_.height;
  const int32_t low = size / 2, high = size - low;
  const bool direct = FastLoopsEnabled() && IsPlain24(info_) && IsPlain24(target.info_);
  // Columns whose whole window lies inside the picture; the rest read through PixelColorAt,
  // which answers pixel (0, 0) outside.
  const int64_t insideFrom = low, insideTo = int64_t{width} - high + 1;
  for (int32_t y = 0; y < height; ++y) {
    if (StopAtRow(y, height)) return false;
    const bool rowInside = direct && int64_t{y} - low >= 0 && int64_t{y} + high <= height;
    const uint8_t* window = rowInside ? RowAt(info_, y - low) : nullptr;
    uint8_t* to = RowAt(target.info_, y);
    for (int32_t x = 0; x < width; ++x) {
      uint32_t sums[3] = {0, 0, 0};
      if (rowInside && x >= insideFrom && x < insideTo) {
        const uint8_t* rowStart = window + 3 * static_cast<size_t>(x - low);
        for (int32_t m = 0; m < size; ++m, rowStart += info_.stride) {
          const int32_t* weights = kernel + static_cast<size_t>(m) * size;
          const uint8_t* pixel = rowStart;
          for (int32_t n = 0; n < size; ++n, pixel += 3) {
            sums[0] += Product(weights[n], pixel[0]);
            sums[1] += Product(weights[n], pixel[1]);
            sums[2] += Product(weights[n], pixel[2]);
          }
        }
      } else {
        for (int32_t m = 0; m < size; ++m) {
          const int32_t* weights = kernel + static_cast<size_t>(m) * size;
          for (int32_t n = 0; n < size; ++n) {
            const ColorValue color = PixelColorAt(x - low + n, y - low + m);
            sums[0] += Product(weights[n], color & 0xFF);
            sums[1] += Product(weights[n], color >> 8 & 0xFF);
            sums[2] += Product(weights[n], color >> 16 & 0xFF);
          }
        }
      }
      const uint8_t blue = Finish(sums[0], factor, offset);
      const uint8_t green = Finish(sums[1], factor, offset);
      const uint8_t red = Finish(sums[2], factor, offset);
      if (direct) {
        uint8_t* pixel = to + 3 * static_cast<size_t>(x);
        pixel[0] = blue;
        pixel[1] = green;
        pixel[2] = red;
      } else {
        target.StorePixelColor(x, y, MakeColor(red, green, blue));
      }
    }
  }
  return true;
}

}  // namespace vsm
