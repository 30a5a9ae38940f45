// Scale: the row loops against the per-pixel walk for each method and depth, the choice of
// method, and the integer shrink's first column. image_kit_oracle.py checks scaled pictures
// against numpy.
#include <gtest/gtest.h>

#include <random>
#include <string>

#include "image/image.h"
#include "tests/image/test_pictures.h"

namespace vsm {
namespace {

TEST(ImageScaleTest, RowLoopsMatchThePerPixelWalk) {
  std::mt19937 random(21);
  // clang-format off
  struct Row { uint32_t bits; int32_t method, width, height, newWidth, newHeight; } rows[] = {
      {24, 1, 13, 7, 29, 5},  {8, 1, 13, 7, 6, 15},  {4, 1, 9, 9, 20, 3},  {1, 1, 17, 3, 8, 8},
      {24, 3, 13, 7, 29, 15}, {24, 3, 20, 9, 7, 12}, {24, 0, 5, 5, 5, 9},  {8, 3, 9, 9, 20, 20},
      {24, 2, 13, 7, 20, 11}, {24, 2, 30, 20, 7, 9}, {24, 2, 2, 2, 5, 5},  {8, 2, 7, 5, 11, 8}};
  // clang-format on
  for (const Row& row : rows) {
    SCOPED_TRACE(&row - rows);
    CImage source;
    FillRandom(source, row.width, row.height, row.bits, random, row.bits == 8 ? 0 : 4);
    if (row.bits == 8) {
      // Few distinct entries make duplicates, which the nearest search maps to the first one.
      for (uint32_t i = 0; i < 256; ++i) source.StorePaletteColor(i, (random() % 5) * 0x3F3F3F);
      ImageInfo* info = source.GetInfo();
      info->lastValid = 1;  // a stale key that the first pixel may hit
      info->lastColor = source.PixelColorAt(0, 0);
      info->lastIndex = 77;
    }
    auto results = FastAndPlain(source, [&](CImage& image) {
      ASSERT_TRUE(image.Scale(row.newWidth, row.newHeight, row.method));
    });
    EXPECT_EQ(results.second, results.first);
  }
}

TEST(ImageScaleTest, TheMethodFollowsSizeAndDepth) {
  std::mt19937 random(6);
  CImage image;
  EXPECT_FALSE(image.Scale(3, 3, 1));
  FillRandom(image, 1, 1, 24, random);
  EXPECT_FALSE(image.Scale(0, 3, 1));
  EXPECT_FALSE(image.Scale(3, -3, 1));
  EXPECT_TRUE(image.Scale(1, 1, 2));
  // Box enlarging a single pixel: nearest, every pixel the one colour.
  const ColorValue color = image.PixelColorAt(0, 0);
  ASSERT_TRUE(image.Scale(3, 3, 5));
  for (int32_t i = 0; i < 9; ++i) EXPECT_EQ(color, image.PixelColorAt(i % 3, i / 3));
  // Box shrinking a palette picture leaves it 24-bit; bilinear shrinking keeps the depth.
  CImage eight;
  FillRandom(eight, 8, 8, 8, random);
  ASSERT_TRUE(eight.Scale(4, 5, 3));
  EXPECT_EQ(8, eight.GetInfo()->bitCount);
  ASSERT_TRUE(eight.Scale(3, 3, 5));
  EXPECT_EQ(24, eight.GetInfo()->bitCount);
}

TEST(ImageScaleTest, TheAreaShrinkCarriesTheFirstColumnsRedAcrossRows) {
  // Halving a plain picture: every pixel keeps its colour, except in the first column of every
  // second destination row after the first pair, where the red that isn't cleared adds up.
  CImage image;
  image.Create(4, 6, image.GetInfo(), 24);
  for (int32_t i = 0; i < 24; ++i) image.StorePixelColor(i % 4, i / 4, 0x1E140A);
  ASSERT_TRUE(image.Scale(2, 3, 3));
  // clang-format off
  const ColorValue expected[6] = {0x1E140A, 0x1E140A, 0x1E140A, 0x1E140A, 0x3C140A, 0x1E140A};
  // clang-format on
  for (int32_t i = 0; i < 6; ++i) EXPECT_EQ(expected[i], image.PixelColorAt(i % 2, i / 2)) << i;
}

}  // namespace
}  // namespace vsm
