// Square-kernel filtering. Sums are taken in 32 bits and wrap as the hardware's would, so a
// kernel with huge entries gives wrapped values rather than undefined ones.
//
// Each path has a per-pixel form and a row form for the pixels whose window lies inside the
// picture: every kernel entry adds its weight times a run of source bytes to one accumulator per
// output byte. Wrapping sums don't depend on their order, so both forms give the same bytes;
// tests compare them.
#include <cstring>

#include "image/image.h"
#include "image/image_layout.h"
#include "image/pixel_walk.h"
#include "support/tracked_heap.h"

namespace vsm {

namespace {

// The largest size whose square still counts the kernel's entries in 32 bits.
constexpr int32_t kLargestKernel = 46340;

typedef uint32_t Lanes __attribute__((vector_size(16)));
typedef uint8_t LaneBytes __attribute__((vector_size(4)));
typedef int16_t NarrowFour __attribute__((vector_size(8)));
typedef int32_t Ints __attribute__((vector_size(16)));
typedef float Floats __attribute__((vector_size(16)));

// Output bytes filtered together, so that their sums stay in the first-level cache.
constexpr size_t kBlock = 1024;

inline uint32_t Product(int32_t weight, uint32_t value) {
  return static_cast<uint32_t>(weight) * value;
}

// sum / divisor truncating (no division for 0 and 1), wrapping at 32 bits like the hardware:
// INT_MIN / -1 gives INT_MIN instead of a trap.
class Quotient {
 public:
  explicit Quotient(int32_t divisor) : divisor_(divisor) {
    if (divisor > 1 && (divisor & (divisor - 1)) == 0) shift_ = __builtin_ctz(divisor);
  }
  int32_t operator()(uint32_t sum) const {
    const int32_t value = static_cast<int32_t>(sum);
    if (divisor_ == 0 || divisor_ == 1) return value;
    if (divisor_ == -1) return static_cast<int32_t>(0u - sum);
    // A power of two: an arithmetic shift, moved towards zero for negative sums.
    if (shift_ >= 0) return (value + ((value >> 31) & (divisor_ - 1))) >> shift_;
    // Exact for 32-bit operands: the double quotient never crosses an integer.
    return static_cast<int32_t>(static_cast<double>(value) / divisor_);
  }
  // Four sums of at most 16 bits each.
  Ints operator()(Ints value) const {
    if (divisor_ == 0 || divisor_ == 1) return value;
    if (divisor_ == -1) return -value;
    if (shift_ >= 0) return (value + ((value >> 31) & (divisor_ - 1))) >> shift_;
    if (divisor_ > 32767 || divisor_ < -32767) return value * 0;
    return __builtin_convertvector(
        __builtin_convertvector(value, Floats) / static_cast<float>(divisor_), Ints);
  }

 private:
  int32_t divisor_;
  int32_t shift_ = -1;
};

// The quotient plus offset, wrapping, as a byte: at most 0 gives 0, at most 254 the value,
// else 255.
inline uint8_t Finish(uint32_t sum, const Quotient& quotient, int32_t offset) {
  const int32_t value =
      static_cast<int32_t>(static_cast<uint32_t>(quotient(sum)) + static_cast<uint32_t>(offset));
  return value <= 0 ? 0 : value <= 254 ? static_cast<uint8_t>(value) : 255;
}

// sums[j] += weight * bytes[j] for `count` entries, a register of sums at a time. Sums of 16
// bits serve kernels whose sums can't leave -32768..32767 (255 times the sum of the weights'
// sizes at most 32767): there they equal the 32-bit ones, and twice as many fit a register.
template <typename Sum>
void AddWeighted(Sum* sums, const uint8_t* bytes, size_t count, int32_t weight) {
  constexpr size_t kLanes = 16 / sizeof(Sum);
  typedef Sum SumLanes __attribute__((vector_size(16)));
  typedef uint8_t ByteLanes __attribute__((vector_size(kLanes)));
  const Sum w = static_cast<Sum>(weight);
  SumLanes weights;
  for (size_t k = 0; k < kLanes; ++k) weights[k] = w;
  size_t j = 0;
  for (; j + kLanes <= count; j += kLanes) {
    ByteLanes some;
    SumLanes lanes;
    std::memcpy(&some, bytes + j, kLanes);
    std::memcpy(&lanes, sums + j, 16);
    lanes += __builtin_convertvector(some, SumLanes) * weights;
    std::memcpy(sums + j, &lanes, 16);
  }
  for (; j < count; ++j) sums[j] = static_cast<Sum>(sums[j] + w * bytes[j]);
}

void FinishRun(uint8_t* to, const uint32_t* sums, size_t count, const Quotient& quotient,
               int32_t offset) {
  for (size_t j = 0; j < count; ++j) to[j] = Finish(sums[j], quotient, offset);
}

// Finish on 16-bit sums, four at a time. Their quotients are exact in 32-bit floats: both sum
// and divisor fit in 24 bits, and a divisor past 32767 leaves every quotient 0.
void FinishRun(uint8_t* to, const uint16_t* sums, size_t count, const Quotient& quotient,
               int32_t offset) {
  size_t j = 0;
  for (; j + 4 <= count; j += 4) {
    NarrowFour four;
    std::memcpy(&four, sums + j, 8);
    Ints value = quotient(__builtin_convertvector(four, Ints));
    value = reinterpret_cast<Ints>(reinterpret_cast<Lanes>(value) + static_cast<uint32_t>(offset));
    value = value < 0 ? 0 : value;
    value = value > 255 ? 255 : value;
    const LaneBytes bytes = __builtin_convertvector(value, LaneBytes);
    std::memcpy(to + j, &bytes, 4);
  }
  for (; j < count; ++j) {
    to[j] = Finish(static_cast<uint32_t>(static_cast<int32_t>(static_cast<int16_t>(sums[j]))),
                   quotient, offset);
  }
}

// Filters `count` output bytes of one row whose windows lie inside, a block at a time: tap
// (m, n) reads window row m from byte `first` + n * `pixel` on.
template <typename Sum>
void FilterRun(uint8_t* to, const uint8_t* const* window, size_t first, size_t count, size_t pixel,
               const int32_t* kernel, int32_t size, const Quotient& quotient, int32_t offset) {
  Sum sums[kBlock];
  for (size_t start = 0; start < count; start += kBlock) {
    const size_t length = count - start < kBlock ? count - start : kBlock;
    std::memset(sums, 0, sizeof sums);
    for (int32_t m = 0; m < size; ++m) {
      for (int32_t n = 0; n < size; ++n) {
        const int32_t weight = kernel[static_cast<size_t>(m) * size + n];
        if (weight != 0) AddWeighted(sums, window[m] + first + start + n * pixel, length, weight);
      }
    }
    FinishRun(to + start, sums, length, quotient, offset);
  }
}

// Whether 16-bit sums serve this kernel.
bool NarrowSums(const int32_t* kernel, int32_t size) {
  int64_t total = 0;
  for (int64_t i = 0; i < int64_t{size} * size && total <= 32767; ++i) {
    total += 255 * (kernel[i] < 0 ? -int64_t{kernel[i]} : int64_t{kernel[i]});
  }
  return total <= 32767;
}

void FilterRun(uint8_t* to, const uint8_t* const* window, size_t first, size_t count, size_t pixel,
               const int32_t* kernel, int32_t size, const Quotient& quotient, int32_t offset,
               bool narrow) {
  if (narrow) {
    FilterRun<uint16_t>(to, window, first, count, pixel, kernel, size, quotient, offset);
  } else {
    FilterRun<uint32_t>(to, window, first, count, pixel, kernel, size, quotient, offset);
  }
}

// The window's row pointers for the row form.
class WindowRows {
 public:
  explicit WindowRows(int32_t size)
      : rows_(static_cast<const uint8_t**>(TrackedAlloc(0, sizeof(uint8_t*) * size))) {}
  ~WindowRows() { TrackedFree(rows_); }
  WindowRows(const WindowRows&) = delete;
  WindowRows& operator=(const WindowRows&) = delete;
  bool ready() const { return rows_ != nullptr; }
  const uint8_t** rows() { return rows_; }

 private:
  const uint8_t** rows_;
};

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
  const Quotient quotient(factor == 0 ? 1 : factor);
  const int64_t width = info_.width, height = info_.height;
  const int64_t low = size / 2, high = size - low;
  // Filtered columns: low + 1 up to width - high.
  const int64_t first = low + 1, count = width - high - low;
  WindowRows window(size);
  const bool runs = FastLoopsEnabled() && count > 0 && window.ready();
  const bool narrow = NarrowSums(kernel, size);
  for (int64_t y = 0; y < height; ++y) {
    if (StopAtRow(static_cast<int32_t>(y), info_.height)) return false;
    const uint8_t* from = RowAt(info_, static_cast<int32_t>(y));
    uint8_t* to = RowAt(target.info_, static_cast<int32_t>(y));
    std::memcpy(to, from, static_cast<size_t>(width));
    // Pixels whose window touches row or column 0, or passes the far edge, stay unfiltered: two
    // columns and rows at the low end for size 3 and one at the high end. Callers' pictures
    // were made with this border.
    if (y - low <= 0 || y + high > height || count <= 0) continue;
    if (runs) {
      for (int32_t m = 0; m < size; ++m) {
        window.rows()[m] = RowAt(info_, static_cast<int32_t>(y - low + m)) - low;
      }
      FilterRun(to + first, window.rows(), first, static_cast<size_t>(count), 1, kernel, size,
                quotient, offset, narrow);
      continue;
    }
    for (int64_t x = first; x < first + count; ++x) {
      uint32_t sum = 0;
      for (int32_t m = 0; m < size; ++m) {
        for (int32_t n = 0; n < size; ++n) {
          sum += Product(
              kernel[static_cast<size_t>(m) * size + n],
              PixelIndexAt(static_cast<int32_t>(x - low + n), static_cast<int32_t>(y - low + m)));
        }
      }
      to[x] = Finish(sum, quotient, offset);
    }
  }
  return true;
}

bool CImage::ConvolveColor(CImage& target, const int32_t* kernel, int32_t size, int32_t factor,
                           int32_t offset) {
  const Quotient quotient(factor);
  const int32_t width = info_.width, height = info_.height;
  const int32_t low = size / 2, high = size - low;
  // Columns whose whole window lies inside the picture: low up to width - high.
  const int64_t inside = int64_t{width} - size + 1;
  WindowRows window(size);
  const bool runs = FastLoopsEnabled() && IsPlain24(info_) && IsPlain24(target.info_) &&
                    inside > 0 && window.ready();
  const bool narrow = NarrowSums(kernel, size);
  for (int32_t y = 0; y < height; ++y) {
    if (StopAtRow(y, height)) return false;
    const bool rowInside = runs && int64_t{y} - low >= 0 && int64_t{y} + high <= height;
    if (rowInside) {
      for (int32_t m = 0; m < size; ++m) window.rows()[m] = RowAt(info_, y - low + m);
      FilterRun(RowAt(target.info_, y) + 3 * static_cast<size_t>(low), window.rows(), 0,
                3 * static_cast<size_t>(inside), 3, kernel, size, quotient, offset, narrow);
    }
    for (int32_t x = 0; x < width; ++x) {
      if (rowInside && x == low) x += static_cast<int32_t>(inside);  // done above
      if (x >= width) break;
      // Taps outside the picture read through PixelColorAt, which answers pixel (0, 0).
      uint32_t sums[3] = {0, 0, 0};
      for (int32_t m = 0; m < size; ++m) {
        const int32_t* weights = kernel + static_cast<size_t>(m) * size;
        for (int32_t n = 0; n < size; ++n) {
          const ColorValue color = PixelColorAt(x - low + n, y - low + m);
          sums[0] += Product(weights[n], color & 0xFF);
          sums[1] += Product(weights[n], color >> 8 & 0xFF);
          sums[2] += Product(weights[n], color >> 16 & 0xFF);
        }
      }
      target.StorePixelColor(
          x, y,
          MakeColor(Finish(sums[2], quotient, offset), Finish(sums[1], quotient, offset),
                    Finish(sums[0], quotient, offset)));
    }
  }
  return true;
}

}  // namespace vsm
