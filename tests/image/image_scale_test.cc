// Scale: the row loops against the per-pixel walk for each method and depth. image_kit_oracle.py
// checks scaled pictures of every method against numpy, the choice of method by size and depth
// and the integer shrink's first column included.
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

TEST(ImageScaleTest, RefusesAnEmptyPictureOrSizeAndKeepsTheSameSize) {
  std::mt19937 random(6);
  CImage image;
  EXPECT_FALSE(image.Scale(3, 3, 1));
  FillRandom(image, 2, 2, 24, random);
  const std::string before = BlockBytes(image);
  EXPECT_FALSE(image.Scale(0, 3, 1));
  EXPECT_FALSE(image.Scale(3, -3, 1));
  EXPECT_TRUE(image.Scale(2, 2, 2));
  EXPECT_EQ(before, BlockBytes(image));
}

}  // namespace
}  // namespace vsm
