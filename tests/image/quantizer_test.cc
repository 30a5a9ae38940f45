// The colour tree: leaf counts, means, tree order, the folding of branches and the small-palette
// grouping. image_kit_oracle.py compares whole palettes of random pictures with its own tree.
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

TEST(QuantizerTest, LeavesMeansOrderAndGroups) {
  // clang-format off
  struct Row { uint32_t colors, bits; std::vector<ColorValue> pixels; const char* palette; } rows[] = {
      {2, 8, {0x123456, 0x123456, 0x123456}, "1 00123456 00000000"},
      // 7 levels: the lowest bit is cut, so these share a leaf and average down
      {2, 7, {0x101010, 0x111111}, "1 00101010 00000000"},
      {2, 8, {0x101010, 0x111111}, "2 00101010 00111111"},
      // tree order: by the interleaved top bits of red, green, blue, not by first appearance
      {4, 8, {0xFF0000, 0x0000FF, 0x00FF00, 0x000000}, "4 00000000 000000ff 0000ff00 00ff0000"},
      // five leaves into two groups: leaves 0-1 and 2-4, weighted by their pixel counts
      {2, 8, {0x000000, 0x000000, 0x000000, 0x00003C, 0x0000C0, 0x00C000, 0xC00000},
       "5 0000000f 00404040"},
      {16, 8, {0x000000, 0xFFFFFF}, "2 00000000 00ffffff 00000000 00000000 00000000 00000000 "
                                   "00000000 00000000 00000000 00000000 00000000 00000000 "
                                   "00000000 00000000 00000000 00000000"}};
  // clang-format on
  for (const Row& row : rows) {
    SCOPED_TRACE(&row - rows);
    EXPECT_EQ(row.palette, Quantized(row.colors, row.bits, Picture(row.pixels)));
  }
}

TEST(QuantizerTest, FoldingKeepsTheLeafCountAtTheLimit) {
  // 40 greys: at most 16 leaves while adding (max(2, 16)), then grouped into two.
  std::vector<ColorValue> greys;
  for (uint32_t i = 0; i < 40; ++i) greys.push_back(i * 6 * 0x010101);
  CQuantizer quantizer(2, 8);
  ASSERT_TRUE(quantizer.AddImage(Picture(greys).data()));
  EXPECT_LE(quantizer.GetLeafCount(), 16u);
  CQuantizer wide(256, 7);
  ASSERT_TRUE(wide.AddImage(Picture(greys).data()));
  EXPECT_EQ(40u, wide.GetLeafCount());
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
