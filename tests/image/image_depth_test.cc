// Depth change: the row loops against the per-pixel walk on random pictures, and what the three
// depth functions refuse. image_kit_oracle.py checks the resulting bytes against numpy: every
// depth pair, the standard palettes, grey ramps, diffusion and the colour tree's palettes.
#include <gtest/gtest.h>

#include <random>
#include <string>

#include "image/image.h"
#include "tests/image/test_pictures.h"

namespace vsm {
namespace {

TEST(ImageDepthTest, RowLoopsMatchThePerPixelWalk) {
  std::mt19937 random(3);
  // clang-format off
  struct Row { uint32_t from, to; } raises[] = {
      {1, 4}, {1, 8}, {4, 8}, {4, 4}, {8, 8}, {1, 24}, {4, 24}, {8, 24}, {24, 24}};
  // clang-format on
  for (const Row& row : raises) {
    for (int32_t width : {1, 7, 33}) {
      SCOPED_TRACE(std::to_string(row.from) + " -> " + std::to_string(row.to) + " wide " +
                   std::to_string(width));
      CImage source;
      FillRandom(source, width, 5, row.from, random);
      auto results =
          FastAndPlain(source, [&](CImage& image) { ASSERT_TRUE(image.RaiseBitDepth(row.to)); });
      EXPECT_EQ(results.second, results.first);
    }
  }
  for (uint32_t bits : {1u, 4u, 8u}) {
    for (int variant = 0; variant < 6; ++variant) {
      SCOPED_TRACE(std::to_string(bits) + " bits, variant " + std::to_string(variant));
      const bool diffuse = variant % 2 == 1;
      CImage source;
      // Few levels give runs of one colour, which the one-entry cache answers.
      FillRandom(source, 13 + variant, 9, 24, random, variant < 2 ? 3 : 0);
      std::vector<uint8_t> palette(1024);
      for (uint8_t& byte : palette) byte = random() & 0xFF;
      if (variant >= 4) {
        // A stale cache answers the first pixel's colour with an index no search would give.
        ImageInfo* info = source.GetInfo();
        info->lastValid = 1;
        info->lastColor = source.PixelColorAt(0, 0);
        info->lastIndex = 201;
      }
      auto results = FastAndPlain(source, [&](CImage& image) {
        ASSERT_TRUE(
            image.ReduceBitDepth(bits, diffuse, variant == 2 ? palette.data() : nullptr, 0));
      });
      EXPECT_EQ(results.second, results.first);
    }
  }
}

TEST(ImageDepthTest, WhatEachDepthFunctionAcceptsAndLeaves) {
  std::mt19937 random(8);
  CImage eight;
  FillRandom(eight, 6, 4, 8, random);
  const std::string before = BlockBytes(eight);
  EXPECT_FALSE(eight.RaiseBitDepth(2));
  EXPECT_FALSE(eight.RaiseBitDepth(4));
  EXPECT_FALSE(eight.ReduceBitDepth(24, false, nullptr, 0));
  EXPECT_TRUE(eight.ReduceBitDepth(8, true, nullptr, 0));  // the same depth and no limit
  EXPECT_TRUE(eight.ConvertBitDepth(8, true));
  EXPECT_EQ(before, BlockBytes(eight));
  EXPECT_FALSE(eight.ReduceBitDepth(2, false, nullptr, 0));  // no palette size for 2 bits
  EXPECT_EQ(before, BlockBytes(eight));
}

}  // namespace
}  // namespace vsm
