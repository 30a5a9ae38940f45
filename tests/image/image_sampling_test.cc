// Sampling: kernels at their fixed points, coordinate folds, what only the kit's own callers
// see of SampleAt and SampleArea, and the argument rules of ResampleSampled. image_kit_oracle.py
// compares sampled colours (every mode and overflow method, inside and outside the picture),
// resampled pictures and resolution changes with numpy.
#include <gtest/gtest.h>

#include <random>

#include "image/image.h"
#include "image/kernels.h"
#include "tests/image/test_pictures.h"

namespace vsm {
namespace {

TEST(ImageSamplingTest, KernelsAndRemainderAtTheirFixedPoints) {
  // clang-format off
  struct Row { float t, cubic, keys, bspline; } rows[] = {
      {0, 1, 1, 0.6666667f}, {1, 0, 0, 0.16666667f}, {-1, 0, 0, 0.16666667f},
      {2, 0, 0, 0}, {-2, 0, 0, 0}, {2.5f, 0, 0, 0}, {-3, 0, 0, 0}};
  // clang-format on
  for (const Row& row : rows) {
    EXPECT_EQ(row.cubic, CubicWeight(row.t)) << row.t;
    EXPECT_EQ(row.keys, KeysWeight(row.t, -0.5f)) << row.t;
    EXPECT_EQ(row.bspline, BSplineWeight(row.t)) << row.t;
  }
  EXPECT_EQ(1.5, FloatRemainder(7.5, 2));
  EXPECT_EQ(-1.5, FloatRemainder(-7.5, 2));
  EXPECT_EQ(INT32_MIN, TruncToInt(3e9));
  EXPECT_EQ(-2, TruncToInt(-2.9f));
}

TEST(ImageSamplingTest, FoldsClampMirrorAndWrapOnlyOutside) {
  CImage image;
  image.Create(10, 4, image.GetInfo(), 24);
  // method, x, and x after the fold; y stays 0 (inside)
  const int32_t rows[][3] = {{6, 12, 7}, {6, -3, 3}, {4, 12, 2},  {4, -3, 7},
                             {5, -3, 0}, {5, 15, 9}, {1, -3, -3}, {6, 9, 9}};
  for (const auto& row : rows) {
    int32_t x = row[1], y = 0;
    float fx = static_cast<float>(row[1]), fy = 0;
    image.FoldPixelCoords(x, y, row[0]);
    image.FoldFloatCoords(fx, fy, row[0]);
    EXPECT_EQ(row[2], x) << row[0] << " " << row[1];
    EXPECT_EQ(static_cast<float>(row[2]), fx) << row[0] << " " << row[1];
  }
}

TEST(ImageSamplingTest, PaletteTapsGoThroughThePaletteAndAreasKeepTheLastFourthByte) {
  CImage eight;
  eight.Create(2, 2, eight.GetInfo(), 8);
  eight.StorePaletteColor(1, 0x7F000064);
  eight.StorePixelIndex(1, 1, 1);
  EXPECT_EQ(0x000019u, eight.SampleAt(2, 1, nullptr, 0.5f, 0.5f));  // in floats, byte 3 clear
  EXPECT_EQ(0x7F000019u, eight.SampleArea(1, 5, nullptr, 0.5f, 0.5f, 2, 2));
}

TEST(ImageSamplingTest, ResampleRefusesBadArgumentsAndKeepsTheSameSize) {
  std::mt19937 random(2);
  CImage image;
  FillRandom(image, 6, 5, 24, random);
  const std::string before = BlockBytes(image);
  const int32_t bad[][4] = {{0, 5, 1, 1}, {6, -1, 1, 1}, {3, 3, 0, 1},
                            {3, 3, 6, 1}, {3, 3, 1, 0},  {3, 3, 1, 7}};
  for (const auto& arguments : bad) {
    image.ResampleSampled(arguments[0], arguments[1], arguments[2], arguments[3], false);
    EXPECT_EQ(5u, image.GetLastError());
  }
  image.GetInfo()->cancelled = 1;
  image.ResampleSampled(6, 5, 1, 1, false);  // the same size: nothing, and the flag stays
  EXPECT_EQ(1, image.GetInfo()->cancelled);
  EXPECT_EQ(before, BlockBytes(image));
  CImage empty;
  empty.ResampleSampled(3, 3, 1, 1, false);
  EXPECT_EQ(5u, empty.GetLastError());
}

}  // namespace
}  // namespace vsm
