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
  const Candidate* list = &candidates_[cellStart_[cell]];
  const uint32_t count = list[0].index;
  // Candidates come nearest bound first: once a bound passes the best distance, no later one
  // can reach it. Equal distances go to the lower index, as in the walk from entry 0.
  int32_t best = INT32_MAX;
  uint32_t found = 0;
  for (const Candidate* c = list + 1; c <= list + count; ++c) {
    if (c->bound > best) break;
    const int32_t db = static_cast<int32_t>(blue) - c->blue;
    const int32_t dg = static_cast<int32_t>(green) - c->green;
    const int32_t dr = static_cast<int32_t>(red) - c->red;
    const int32_t distance = db * db + dg * dg + dr * dr;
    if (distance < best || (distance == best && c->index < found)) {
      best = distance;
      found = c->index;
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
  std::vector<std::pair<int32_t, uint32_t>> kept;
  for (uint32_t i = 0; i < count_; ++i) {
    if (nearest[i] <= bound) kept.emplace_back(nearest[i], i);
  }
  std::sort(kept.begin(), kept.end());
  cellStart_[cell] = static_cast<int32_t>(candidates_.size());
  candidates_.push_back(Candidate{0, static_cast<uint32_t>(kept.size()), 0, 0, 0});
  for (const auto& candidate : kept) {
    const uint8_t* entry = &channels_[3 * candidate.second];
    candidates_.push_back(
        Candidate{candidate.first, candidate.second, entry[0], entry[1], entry[2]});
  }
}

}  // namespace vsm
