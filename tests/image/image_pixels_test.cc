// Pixel and palette access: the answers outside the image, the nibble and bit order, the
// nearest-colour search with its cache, and the palette tools. image_kit_oracle.py checks the
// standard palettes entry by entry through depth changes.
#include <gtest/gtest.h>

#include <cstring>
#include <random>
#include <string>

#include "image/image.h"
#include "image/nearest_color.h"
#include "tests/image/test_pictures.h"

namespace vsm {
namespace {

CImage& Made(CImage& image, int32_t width, int32_t height, uint32_t bits,
             std::initializer_list<uint8_t> pixels) {
  image.Create(width, height, image.GetInfo(), bits);
  std::copy(pixels.begin(), pixels.end(), image.GetInfo()->bits);
  return image;
}

TEST(ImagePixelsTest, IndicesAndColoursInsideAndOutsideAtEveryDepth) {
  CImage eight, four, one, full;
  Made(eight, 3, 2, 8, {7, 9, 200, 0, 1, 2, 3});
  eight.StorePaletteColor(7, 0x11223344);
  Made(four, 3, 1, 4, {0xAB, 0xC0});
  Made(one, 9, 1, 1, {0x80, 0x80});
  Made(full, 2, 1, 24, {1, 2, 3, 4, 5, 6});
  // clang-format off
  struct Row { CImage* image; int32_t x, y; uint32_t index, color; } rows[] = {
      {&eight, 2, 0, 200, 0},         {&eight, -1, 0, 7, 0x11223344}, {&eight, 0, 2, 7, 0x11223344},
      {&eight, 1, 1, 2, 0},           {&four, 0, 0, 0xA, 0},          {&four, 1, 0, 0xB, 0},
      {&four, 2, 0, 0xC, 0},          {&four, 3, 0, 0xAB, 0},         {&one, 0, 0, 1, 0},
      {&one, 1, 0, 0, 0},             {&one, 8, 0, 1, 0},             {&one, 9, 0, 0x80, 0},
      {&full, 1, 0, 0, 0x060504},     {&full, -1, -1, 1, 0x030201},   {&full, 2, 0, 1, 0x030201}};
  // clang-format on
  for (const Row& row : rows) {
    SCOPED_TRACE(&row - rows);
    EXPECT_EQ(row.index, row.image->PixelIndexAt(row.x, row.y));
    if (row.image == &eight || row.image == &full) {
      EXPECT_EQ(row.color, row.image->PixelColorAt(row.x, row.y));
    }
  }
  four.StorePixelIndex(1, 0, 0xF5);  // the low nibble of the index, the high nibble kept
  one.StorePixelIndex(1, 0, 3);
  one.StorePixelIndex(0, 0, 2);
  full.StorePixelIndex(0, 0, 9);  // no palette: nothing
  full.StorePixelColor(5, 0, 0xFFFFFF);
  EXPECT_EQ(0xA5, four.GetInfo()->bits[0]);
  EXPECT_EQ(0x40, one.GetInfo()->bits[0]);
  EXPECT_EQ(0x030201u, full.PixelColorAt(0, 0));
  EXPECT_EQ(nullptr, eight.PixelAddress24(0, 0));
  EXPECT_EQ(full.GetInfo()->bits + 3, full.PixelAddress24(1, 0));
  EXPECT_EQ(0u, eight.PaletteColorAt(256));
  EXPECT_EQ(0u, full.PaletteColorAt(0));
}

TEST(ImagePixelsTest, NearestIndexTiesCacheAndImportantColours) {
  // A 40-byte header, 8 entries, one 8-bit pixel: colorsImportant 4 limits the search.
  uint8_t block[40 + 32 + 4] = {40, 0, 0, 0, 1, 0, 0, 0, 1, 0, 0, 0, 1, 0, 8};
  block[32] = 8;
  block[36] = 4;
  const ColorValue entries[8] = {0x0A0A0A, 0x141414, 0xFF0A0A0A, 0, 0x808080, 0x646464};
  for (int i = 0; i < 8; ++i) std::memcpy(block + 40 + 4 * i, &entries[i], 4);
  CImage image(block);
  // clang-format off
  struct Row { ColorValue color; uint8_t index; } rows[] = {
      {0x0F0F0F, 0},  // equal distances to 0 and 1: the lower index
      {0x0A0A0A, 0},  // an exact match stops at the first one; the spare byte doesn't count
      {0x646464, 1},  // entry 5 is exact but not among the four important ones
      {0x030303, 3}, {0x808080, 1}};
  // clang-format on
  for (const Row& row : rows)
    EXPECT_EQ(row.index, image.NearestPaletteIndex(row.color)) << row.color;
  // The cache answers a repeated colour even after the palette changed.
  image.StorePaletteColor(0, 0x808080);
  EXPECT_EQ(1, image.NearestPaletteIndex(0x808080));
  EXPECT_EQ(0, image.NearestPaletteIndex(0x7F7F7F));
  EXPECT_EQ(0, CImage().NearestPaletteIndex(0));
}

TEST(ImagePixelsTest, FindOrAddLooksAppendsOrFallsBackToTheNearest) {
  // clang-format off
  struct Row { ColorValue color; int32_t used; int32_t index; ColorValue entry; } rows[] = {
      {0x00FF00, 3, 1, 0x00FF00},  // found among the first three; spare byte ignored
      {0x123456, 3, 3, 0x123456},  // appended at entry 3
      {0x0000F0, 16, 2, 0x0000FF}, // no room: the nearest
      {0x654321, 0, 0, 0x654321},  // below 1: entry 0 is written
      {0xFE0000, -2, 0, 0xFF0000}, // a negative count never fits: the nearest
      {0x00FE00, 40, 1, 0x00FF00}};
  // clang-format on
  for (const Row& row : rows) {
    SCOPED_TRACE(&row - rows);
    CImage image;
    image.Create(1, 1, image.GetInfo(), 4);
    image.StorePaletteColor(0, 0xFF0000);
    image.StorePaletteColor(1, 0x2200FF00);
    image.StorePaletteColor(2, 0x0000FF);
    for (uint32_t i = 3; i < 16; ++i) image.StorePaletteColor(i, 0x808080);
    EXPECT_EQ(row.index, image.FindOrAddPaletteColor(row.color, row.used));
    EXPECT_EQ(row.entry, image.PaletteColorAt(row.index) & 0xFFFFFF);
  }
  CImage full;
  full.Create(1, 1, full.GetInfo(), 24);
  EXPECT_EQ(0, full.FindOrAddPaletteColor(0x123456, 0));
}

TEST(ImagePixelsTest, GreyRampsAndPaletteCopies) {
  // bits, an entry, its grey after SetGreyRamp; the spare byte stays
  const uint32_t rows[][3] = {
      {1, 1, 0x77FFFFFF}, {4, 1, 0x77111111}, {4, 15, 0x77FFFFFF}, {8, 200, 0x77C8C8C8}};
  for (const auto& row : rows) {
    CImage image;
    image.Create(2, 1, image.GetInfo(), row[0]);
    for (uint32_t i = 0; i < image.GetColorCount(); ++i) image.StorePaletteColor(i, 0x77000000);
    image.SetGreyRamp();
    EXPECT_EQ(row[2], image.PaletteColorAt(row[1]));
    EXPECT_TRUE(image.IsGreyPalette());
    image.SetStandardPalette();
    EXPECT_EQ(row[0] == 1, image.IsGreyPalette());  // nothing at 1 bit
  }
  // SetPalette copies only what fits: the pixels behind a 16-entry palette stay.
  CImage image;
  image.Create(1, 1, image.GetInfo(), 4);
  uint8_t entries[1024];
  std::memset(entries, 0x5A, sizeof entries);
  image.SetPalette(entries, 256);
  EXPECT_EQ(0x5A5A5A5Au, image.PaletteColorAt(15));
  EXPECT_EQ(0, image.GetInfo()->bits[0]);
  EXPECT_EQ(0x00332211u, CImage::SwapRedBlue(0xAA112233));
}

TEST(ImagePixelsTest, IndexedNearestSearchGivesThePlainWalksAnswers) {
  std::mt19937 random(11);
  for (uint32_t count : {1u, 2u, 3u, 16u, 17u, 100u, 256u}) {
    for (uint32_t levels : {2u, 5u, 256u}) {  // few levels: many duplicates and ties
      std::vector<uint8_t> palette(4 * count);
      for (uint8_t& byte : palette)
        byte = static_cast<uint8_t>(random() % levels * 255 / (levels - 1));
      NearestColorIndex search(palette.data(), count);
      for (int i = 0; i < 3000; ++i) {
        const ColorValue color = random() & 0xFFFFFF;
        ASSERT_EQ(NearestEntry(palette.data(), count, color), search.Find(color))
            << count << " " << levels << " " << color;
      }
    }
  }
}

}  // namespace
}  // namespace vsm
