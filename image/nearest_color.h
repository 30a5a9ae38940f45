// The nearest-palette-entry search behind NearestPaletteIndex and StorePixelColor, in its plain
// form and as a faster index for loops that look up many colours in one fixed palette.
//
// "Nearest" is the smallest sum of squared differences of blue, green and red (the spare byte
// doesn't count); among equal distances the lowest index wins. Internal to the image layer.
#ifndef VSM_IMAGE_NEAREST_COLOR_H_
#define VSM_IMAGE_NEAREST_COLOR_H_

#include <cstdint>
#include <vector>

#include "image/image.h"

namespace vsm {

// The walk from entry 0: the best distance starts at 200000, only a strictly smaller distance
// replaces it, and a distance of 0 ends the walk. `count` is at least 1.
uint32_t NearestEntry(const uint8_t* palette, uint32_t count, ColorValue color);

// How many entries NearestPaletteIndex searches: colorsImportant when not 0, else colorsUsed,
// and never more than the block holds behind its header.
uint32_t NearestSearchCount(const ImageInfo& info);

// A snapshot of a palette that gives exactly NearestEntry's answers. The colour cube is cut into
// cells of 8 x 8 x 8; a cell's candidates are the entries that can be nearest for some colour in
// it (an entry whose smallest distance to the cell exceeds another entry's largest can't),
// ordered by that smallest distance, so a search stops at the first candidate that can't come
// closer than the best so far. Cells are filled on first use. The palette must not change
// while the index is in use.
class NearestColorIndex {
 public:
  NearestColorIndex(const uint8_t* palette, uint32_t count);
  uint32_t Find(ColorValue color);

 private:
  void FillCell(uint32_t cell);

  // A candidate of a cell: its smallest distance to the cell, its index and its colour.
  struct Candidate {
    int32_t bound;
    uint32_t index;
    uint8_t blue, green, red;
  };

  uint32_t count_;
  std::vector<uint8_t> channels_;   // blue, green, red per entry
  std::vector<int32_t> cellStart_;  // into candidates_, -1 until filled
  // Per cell: a count, then that many candidates by increasing bound.
  std::vector<Candidate> candidates_;
};

// The image's one-entry cache (lastColor, lastIndex, lastValid) carried through a loop in locals,
// with the same answers as NearestPaletteIndex, and stored back when the loop ends.
struct NearestCache {
  explicit NearestCache(const ImageInfo& info)
      : color(info.lastColor), index(info.lastIndex), valid(info.lastValid != 0) {}
  void StoreInto(ImageInfo* info) const {
    info->lastColor = color;
    info->lastIndex = index;
    info->lastValid = valid ? 1 : 0;
  }
  uint8_t Lookup(ColorValue key, NearestColorIndex& search) {
    if (valid && color == key) return index;
    valid = true;
    color = key;
    index = static_cast<uint8_t>(search.Find(key));
    return index;
  }

  ColorValue color;
  uint8_t index;
  bool valid;
};

}  // namespace vsm

#endif  // VSM_IMAGE_NEAREST_COLOR_H_
