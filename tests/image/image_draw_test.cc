// Drawing and measures: fills, blends, the rounded box, the colour spread and the two bounding
// boxes. image_tone_kit_oracle.py checks fills, blends and the measures against numpy.
#include <gtest/gtest.h>

#include <climits>
#include <cmath>
#include <random>
#include <string>

#include "image/image.h"
#include "support/tracked_heap.h"
#include "tests/image/test_pictures.h"
#include "tests/image/watched_image.h"

namespace vsm {
namespace {

bool InRect(int32_t x, int32_t y, const ImageRect& r) {
  return x >= r.left && x < r.right && y >= r.top && y < r.bottom;
}

TEST(ImageDrawTest, FillRectPaintsTheRegionByEntryOrColour) {
  std::mt19937 random(1);
  const uint8_t color[4] = {0x10, 0x20, 0x30, 0x00};
  struct Row {
    uint32_t bits;
    ImageRect rect, region;
    uint32_t error;
  } rows[] = {{24, {1, 1, 3, 2}, {1, 1, 3, 2}, 0},
              {8, {4, 3, 2, -1}, {2, 0, 4, 5}, 0},
              {4, {5, 4, 1, 1}, {1, 1, 5, 4}, 0},
              {1, {0, 0, 7, 5}, {0, 0, 7, 5}, 0},
              {24, {2, 2, 2, 4}, {0, 0, 0, 0}, 5}};
  for (const Row& row : rows) {
    SCOPED_TRACE(&row - rows);
    CImage source;
    FillRandom(source, 7, 5, row.bits, random);
    if (row.bits == 8) source.StorePaletteColor(77, 0x302010);  // an exact entry
    CImage image(source.GetDib());
    image.FillRect(row.rect, color);
    EXPECT_EQ(row.error, image.GetLastError());
    CImage nearest(source.GetDib());
    const ColorValue painted = nearest.HasPalette()
                                   ? nearest.PaletteColorAt(nearest.NearestPaletteIndex(0x302010))
                                   : 0x302010;
    for (int32_t i = 0; i < 35; ++i) {
      const int32_t x = i % 7, y = i / 7;
      const ColorValue want = InRect(x, y, row.region) ? painted : source.PixelColorAt(x, y);
      ASSERT_EQ(want, image.PixelColorAt(x, y)) << x << "," << y;
    }
    auto results = FastAndPlain(source, [&](CImage& copy) { copy.FillRect(row.rect, color); });
    EXPECT_EQ(results.second, results.first);
  }
  CImage image;
  FillRandom(image, 2, 2, 24, random);
  image.FillRect(ImageRect{0, 0, -1, -1}, nullptr);
  EXPECT_EQ(5u, image.GetLastError());
}

TEST(ImageDrawTest, BlendRectToDibMixesIntoANewBlockOfTheRawSize) {
  std::mt19937 random(2);
  CImage source;
  FillRandom(source, 6, 4, 24, random);
  const uint8_t color[4] = {200, 100, 50, 9};
  struct Row {
    ImageRect rect;
    float opacity;
    int32_t width, height;  // of the block; 0: no block
    int32_t left, top;      // the region's corner in the source
    int32_t columns, rows;  // filled from the source
  } rows[] = {{{1, 1, 4, 3}, 0.25f, 3, 2, 1, 1, 3, 2}, {{0, 0, -1, -1}, 1.5f, 6, 4, 0, 0, 6, 4},
              {{-2, 0, 3, 2}, 0.0f, 5, 2, 0, 0, 3, 2}, {{2, 1, 9, 3}, 0.75f, 7, 2, 2, 1, 4, 2},
              {{4, 3, 1, 1}, 0.5f, 0, 0, 0, 0, 0, 0},  {{3, 3, 3, 4}, 0.5f, 0, 0, 0, 0, 0, 0}};
  for (const Row& row : rows) {
    SCOPED_TRACE(&row - rows);
    CImage image(source.GetDib());
    uint8_t* block = image.BlendRectToDib(row.rect, color, row.opacity);
    EXPECT_EQ(BlockBytes(source), BlockBytes(image));  // unchanged
    ASSERT_EQ(row.width != 0, block != nullptr);
    if (block == nullptr) {
      EXPECT_EQ(5u, image.GetLastError());
      continue;
    }
    CImage blended(block, false, false);
    ASSERT_EQ(row.width, blended.GetInfo()->width);
    ASSERT_EQ(row.height, blended.GetInfo()->height);
    for (int32_t j = 0; j < row.height; ++j) {
      for (int32_t i = 0; i < row.width; ++i) {
        ColorValue want = 0;  // what the source doesn't reach stays black
        if (i < row.columns && j < row.rows) {
          const ColorValue pixel = source.PixelColorAt(row.left + i, row.top + j);
          want = row.opacity >= 1 ? 0x3264C8 : pixel;
          if (row.opacity > 0 && row.opacity < 1) {
            want = 0;
            for (int k = 0; k < 3; ++k) {
              const float mixed = (1 - row.opacity) * static_cast<float>(pixel >> (8 * k) & 0xFF) +
                                  row.opacity * static_cast<float>(color[k]);
              want |= static_cast<uint32_t>(mixed) << (8 * k);
            }
          }
        }
        ASSERT_EQ(want, blended.PixelColorAt(i, j)) << i << "," << j;
      }
    }
  }
}

TEST(ImageDrawTest, RoundedBoxStandsFromTheFarEndWithInsetCorners) {
  const uint8_t zero = 0, one = 1;
  CImage image;
  image.Create(20, 700, image.GetInfo(), 24);
  for (int32_t y = 0; y < 700; ++y) {
    for (int32_t x = 0; x < 20; ++x) image.StorePixelColor(x, y, 0x102030);
  }
  CImage blank(image.GetDib());
  EXPECT_FALSE(image.DrawRoundedBox(0, 0, &one, 5 << 16 | 5, 0, 0.1f, 1));
  EXPECT_EQ(6u, image.GetLastError());
  EXPECT_FALSE(image.DrawRoundedBox(0, 0, nullptr, 5 << 16 | 5, 0, 0.1f, 1));
  EXPECT_EQ(5u, image.GetLastError());
  // Alpha 0, or outside 0..1, draws nothing.
  EXPECT_TRUE(image.DrawRoundedBox(0, 0, &zero, 5 << 16 | 5, 0xFFFFFF, 0.1f, 0));
  EXPECT_TRUE(image.DrawRoundedBox(0, 0, &zero, 5 << 16 | 5, 0xFFFFFF, 0.1f, 1.5f));
  EXPECT_EQ(BlockBytes(blank), BlockBytes(image));
  // A radius of trunc(600 * 0.5 / 100) = 3 on a 12 x 8 box, from row 700 - 600 - 1 = 99: rows
  // skipped at both ends of the outer columns. Alpha weighs the old pixel.
  ASSERT_TRUE(image.DrawRoundedBox(0, 592, &zero, 12 << 16 | 600, 0x0000FF, 0.5f, 0.5f));
  const int32_t insets[12] = {3, 1, 0, 0, 0, 0, 0, 0, 0, 0, 1, 3};
  for (int32_t y = 95; y < 110; ++y) {
    for (int32_t x = 0; x < 14; ++x) {
      const int32_t j = y - 99;
      const bool painted = x < 12 && j >= insets[x] && j < 8 - insets[x];
      // Red 0xFF over 0x10: (1 - 0.5) * 255 + 16 * 0.5 = 135.5; green 0x20 and blue 0x30 halve.
      ASSERT_EQ(painted ? 0x871018u : 0x102030u, image.PixelColorAt(x, y)) << x << "," << y;
    }
  }
  // Alpha 1: solid, square corners, clipped at the image's edge.
  ASSERT_TRUE(image.DrawRoundedBox(17, 0, &zero, 40 << 16 | 698, 0x00FF00, 0.5f, 1));
  EXPECT_EQ(0x00FF00u, image.PixelColorAt(17, 1));
  EXPECT_EQ(0x00FF00u, image.PixelColorAt(19, 698));
  EXPECT_EQ(0x102030u, image.PixelColorAt(19, 699));
  EXPECT_EQ(0x102030u, image.PixelColorAt(16, 1));
  EXPECT_EQ(0x102030u, image.PixelColorAt(17, 0));
}

TEST(ImageDrawTest, MeasuresReadColoursAndBounds) {
  CImage image;
  image.Create(5, 4, image.GetInfo(), 24);
  for (int32_t i = 0; i < 20; ++i) image.StorePixelColor(i % 5, i / 5, 0x808080);
  EXPECT_EQ(0.0, image.ColorDeviation(ImageRect{0, 0, -1, -1}));
  // Values blue * 65536 + green * 256 + red: two pixels differing by one blue step spread by
  // 65536 / 2 / sqrt(2).
  image.StorePixelColor(1, 1, 0x808081);
  EXPECT_DOUBLE_EQ(65536 / 2 / std::sqrt(2.0), image.ColorDeviation(ImageRect{0, 1, 2, 2}));
  EXPECT_EQ(0.0, image.ColorDeviation(ImageRect{2, 2, 2, 3}));
  EXPECT_EQ(5u, image.GetLastError());
  struct Row {
    ColorValue color;
    ImageRect bounds;
  } rows[] = {{0x808080, {1, 1, 1, 1}}, {0x808081, {0, 0, 4, 3}}, {0x01808080, {0, 0, 4, 3}}};
  for (const Row& row : rows) {
    const ImageRect bounds = image.FindContentBounds(row.color);
    EXPECT_EQ(row.bounds.left, bounds.left);
    EXPECT_EQ(row.bounds.top, bounds.top);
    EXPECT_EQ(row.bounds.right, bounds.right);
    EXPECT_EQ(row.bounds.bottom, bounds.bottom);
  }
  image.StorePixelColor(1, 1, 0x808080);
  const ImageRect none = image.FindContentBounds(0x808080);
  EXPECT_EQ(INT_MAX, none.left);
  EXPECT_EQ(INT_MAX, none.top);
  EXPECT_EQ(0, none.right);
  EXPECT_EQ(0, none.bottom);
}

TEST(ImageDrawTest, InkBoundsFindDarkContentWithTopTheLargerRow) {
  CImage page;
  page.Create(600, 400, page.GetInfo(), 24);
  for (int32_t y = 0; y < 400; ++y) {
    for (int32_t x = 0; x < 600; ++x) {
      page.StorePixelColor(x, y, x >= 100 && x < 200 && y >= 50 && y < 100 ? 0x101010 : 0xF0F0F0);
    }
  }
  ImageRect bounds{-1, -1, -1, -1};
  CImage copy(page.GetDib());
  ASSERT_TRUE(copy.FindInkBounds(128, &bounds));
  EXPECT_EQ(300, copy.GetInfo()->width);  // the picture is gone
  EXPECT_NEAR(100, bounds.left, 4);
  EXPECT_NEAR(199, bounds.right, 4);
  EXPECT_NEAR(99, bounds.top, 4);
  EXPECT_NEAR(50, bounds.bottom, 4);
  // No ink: the start values, divided by a scale of 0.5, saturate.
  CImage blank(page.GetDib());
  ASSERT_TRUE(blank.FindInkBounds(0, &bounds));
  EXPECT_EQ(INT_MAX, bounds.left);
  EXPECT_EQ(INT_MAX, bounds.bottom);
  EXPECT_EQ(0, bounds.right);
  EXPECT_EQ(0, bounds.top);
  EXPECT_FALSE(blank.FindInkBounds(0, nullptr));
  CImage empty;
  ImageRect kept{1, 2, 3, 4};
  EXPECT_FALSE(empty.FindInkBounds(0, &kept));
  EXPECT_EQ(4, kept.bottom);
}

}  // namespace
}  // namespace vsm
