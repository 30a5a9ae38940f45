#include "image/nearest_color.h"

#include <algorithm>

namespace vsm {

namespace {

constexpr uint32_t kCellBits = 3;  // cells of 8 values per channel
constexpr uint32_t kCellsPerAxis = 256 >> kCellBits;

int32_t Distance(const uint8_t* entry, int32_t blue, int32_t green, int32_t red) {
  const int32_t db = blue - entry[0];
  const int32_t dg = green - entry[1];
  const int32_t dr = red - entry[2];
  return db * db + dg * dg + dr * dr;
}

}  // namespace

uint32_t NearestEntry(const uint8_t* palette, uint32_t count, ColorValue color) {
  const int32_t blue = color & 0xFF, green = color >> 8 & 0xFF, red = color >> 16 & 0xFF;
  int32_t best = 200000;
  uint32_t found = 0;
  for (uint32_t i = 0; i < count; ++i) {
    const int32_t distance = Distance(palette + 4 * i, blue, green, red);
    if (distance < best) {
      best = distance;
      found = i;
      if (distance == 0) break;
    }
  }
  return found;
}

uint32_t NearestSearchCount(const ImageInfo& info) {
  const uint32_t count = info.colorsImportant != 0 ? info.colorsImportant : info.colorsUsed;
  const uint32_t inBlock = info.dibSize > kDibHeaderSize ? (info.dibSize - kDibHeaderSize) / 4 : 0;
  return std::min(count, inBlock);
}

NearestColorIndex::NearestColorIndex(const uint8_t* palette, uint32_t count)
    : count_(count),
      channels_(3 * static_cast<size_t>(count)),
      cellStart_(kCellsPerAxis * kCellsPerAxis * kCellsPerAxis, -1) {
  for (uint32_t i = 0; i < count; ++i)
    std::copy(palette + 4 * i, palette + 4 * i + 3, &channels_[3 * i]);
}

uint32_t NearestColorIndex::Find(ColorValue color) {
  const uint32_t blue = color & 0xFF, green = color >> 8 & 0xFF, red = color >> 16 & 0xFF;
  const uint32_t cell = (red >> kCellBits) * kCellsPerAxis * kCellsPerAxis +
                        (green >> kCellBits) * kCellsPerAxis + (blue >> kCellBits);
  if (cellStart_[cell] < 0) FillCell(cell);
  const uint32_t* list = &candidates_[cellStart_[cell]];
  int32_t best = 200000;
  uint32_t found = 0;
  for (uint32_t k = 1; k <= list[0]; ++k) {
    const int32_t distance = Distance(&channels_[3 * list[k]], blue, green, red);
    if (distance < best) {
      best = distance;
      found = list[k];
      if (distance == 0) break;
    }
  }
  return found;
}

void NearestColorIndex::FillCell(uint32_t cell) {
  const int32_t low[3] = {
      static_cast<int32_t>(cell % kCellsPerAxis << kCellBits),
      static_cast<int32_t>(cell / kCellsPerAxis % kCellsPerAxis << kCellBits),
      static_cast<int32_t>(cell / (kCellsPerAxis * kCellsPerAxis) << kCellBits)};
  const int32_t span = (1 << kCellBits) - 1;
  std::vector<int32_t> nearest(count_);
  int32_t bound = INT32_MAX;
  for (uint32_t i = 0; i < count_; ++i) {
    int32_t least = 0, most = 0;
    for (int c = 0; c < 3; ++c) {
      const int32_t value = channels_[3 * i + c];
      const int32_t below = low[c] - value, above = value - (low[c] + span);
      const int32_t outside = std::max({below, above, 0});
      const int32_t far = std::max(value - low[c], low[c] + span - value);
      least += outside * outside;
      most += far * far;
    }
    nearest[i] = least;
    bound = std::min(bound, most);
  }
  cellStart_[cell] = static_cast<int32_t>(candidates_.size());
  candidates_.push_back(0);
  for (uint32_t i = 0; i < count_; ++i) {
    if (nearest[i] > bound) continue;
    candidates_.push_back(i);
    ++candidates_[cellStart_[cell]];
  }
}

}  // namespace vsm
