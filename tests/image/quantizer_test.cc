// The colour tree on pictures small enough to read. image_kit_oracle.py compares whole palettes
// of random pictures at every depth with a tree of its own, folding and grouping included.
#include <gtest/gtest.h>

#include <cstdio>
#include <string>
#include <vector>

#include "image/image.h"
#include "image/quantizer.h"

namespace vsm {
namespace {

// A palette entry as the hex digits of its little-endian word.
std::string HexWord(const uint8_t* entry) {
  char text[9];
  snprintf(text, sizeof text, "%02x%02x%02x%02x", entry[3], entry[2], entry[1], entry[0]);
  return text;
}

// A 24-bit picture of the given colours, one pixel each, in one row.
std::vector<uint8_t> Picture(const std::vector<ColorValue>& colors) {
  CImage image;
  image.Create(static_cast<int32_t>(colors.size()), 1, image.GetInfo(), 24);
  for (size_t i = 0; i < colors.size(); ++i)
    image.StorePixelColor(static_cast<int32_t>(i), 0, colors[i]);
  const ImageInfo* info = image.GetInfo();
  return std::vector<uint8_t>(info->dib, info->dib + info->dibSize);
}

// The leaf count and the palette's entries as hex words.
std::string Quantized(uint32_t colors, uint32_t bits, const std::vector<uint8_t>& dib) {
  CQuantizer quantizer(colors, bits);
  if (!quantizer.AddImage(dib.data())) return "refused";
  std::vector<uint8_t> entries(4 * colors);
  quantizer.WritePalette(entries.data());
  std::string text = std::to_string(quantizer.GetLeafCount());
  for (uint32_t i = 0; i < colors; ++i) text += " " + HexWord(entries.data() + 4 * i);
  return text;
}

TEST(QuantizerTest, SmallPalettesAverageTheLeavesInWeightedGroups) {
  // Five leaves in tree order (black, then blue, green, red by their top bits) into two
  // groups: leaves 0-1 and 2-4, each channel weighted by the leaves' pixel counts.
  EXPECT_EQ("5 0000000f 00404040",
            Quantized(2, 8, Picture({0, 0, 0, 0x00003C, 0x0000C0, 0x00C000, 0xC00000})));
  // Seven levels cut the lowest bit: one leaf, whose mean truncates.
  EXPECT_EQ("1 00101010 00000000", Quantized(2, 7, Picture({0x101010, 0x111111})));
}

TEST(QuantizerTest, PaletteSourcesAddTheirFourthByteAndOtherDepthsAreRefused) {
  CImage eight;
  eight.Create(2, 1, eight.GetInfo(), 8);
  eight.StorePaletteColor(3, 0x80102030);
  eight.GetInfo()->bits[0] = eight.GetInfo()->bits[1] = 3;
  CQuantizer quantizer(16, 8);
  ASSERT_TRUE(quantizer.AddImage(eight.GetDib()));
  uint8_t entries[64] = {};
  quantizer.WritePalette(entries);
  EXPECT_EQ("80102030", HexWord(entries));
  std::vector<uint8_t> picture = Picture({0x1, 0x2});
  picture[14] = 16;
  EXPECT_EQ("refused", Quantized(16, 8, picture));
  picture[14] = 32;
  EXPECT_EQ("refused", Quantized(16, 8, picture));
}

}  // namespace
}  // namespace vsm
