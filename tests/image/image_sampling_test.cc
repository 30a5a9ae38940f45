// Sampling: kernels at their fixed points, coordinate folds, the corner cases of SampleAt and
// SampleArea, and the argument rules of ResampleSampled and SetDpi. image_kit_oracle.py
// compares sampled colours and resampled pictures with numpy over many positions.
#include <gtest/gtest.h>

#include <cstring>
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
  // clang-format off
  struct Row { int32_t method; float x, y; int32_t foldedX, foldedY; float floatX, floatY; } rows[] = {
      {6, 12, 0, 7, 0, 7, 0},       {6, -3, 0, 3, 0, 3, 0},       {4, 12, 0, 2, 0, 2, 0},
      {4, -3, 0, 7, 0, 7, 0},       {5, -3, 0, 0, 0, 0, 0},       {5, 15, 9, 9, 3, 9, 3},
      {6, 0, 4, 0, 3, 0, 3},        {6, 0, -1, 0, 1, 0, 1},       {1, -3, 0, -3, 0, -3, 0},
      {6, 12.5f, 1, 0, 0, 6.5f, 1}, {4, -0.5f, 1, 0, 0, 9.5f, 1}, {5, 9.5f, -1, 9, 0, 9, 0}};
  // clang-format on
  for (const Row& row : rows) {
    SCOPED_TRACE(&row - rows);
    if (row.x == static_cast<int32_t>(row.x)) {
      int32_t x = static_cast<int32_t>(row.x), y = static_cast<int32_t>(row.y);
      image.FoldPixelCoords(x, y, row.method);
      EXPECT_EQ(row.foldedX, x);
      EXPECT_EQ(row.foldedY, y);
    }
    float x = row.x, y = row.y;
    image.FoldFloatCoords(x, y, row.method);
    EXPECT_EQ(row.floatX, x);
    EXPECT_EQ(row.floatY, y);
  }
}

TEST(ImageSamplingTest, SampleAtTheEdgesByModeAndOverflow) {
  CImage image;
  image.Create(10, 2, image.GetInfo(), 24);
  for (int32_t x = 0; x < 10; ++x) {
    image.StorePixelColor(x, 0, 0x010101 * (10 * x + 1));
    image.StorePixelColor(x, 1, 0x010101 * (10 * x + 5));
  }
  const uint8_t background[4] = {0x33, 0x22, 0x11, 0x99};
  // clang-format off
  struct Row { int32_t mode, overflow; float x, y; bool given; ColorValue color; } rows[] = {
      {1, 1, -0.4f, 0, false, 0x010101}, {1, 1, -0.6f, 0, false, 0x010101},
      {1, 6, -3, 0, false, 0x151515},    {1, 4, -3, 0, false, 0x515151},  // trunc(-2.5): -2
      {2, 5, -3, 0, false, 0x010101},    {2, 6, 12, 0, false, 0x474747},
      {2, 6, -3, 0, false, 0x1F1F1F},    {2, 4, 12, 0, false, 0x151515},
      {2, 4, -3, 0, false, 0x474747},    {1, 1, -3, 0, false, 0xFFFFFF},
      {1, 2, -3, 0, true, 0x99112233},   {1, 0, 4, 1, true, 0x2D2D2D},
      {2, 1, 3, 0, false, 0x1F1F1F},     {2, 1, 3.5f, 0.5f, false, 0x262626},
      {3, 1, 3, 0, false, 0x1F1F1F},     {4, 1, 3, 1, false, 0x232323},
      {3, 1, -3.5f, 0, false, 0xFFFFFF}, {2, 2, 20, 0, true, 0x99112233}};
  // clang-format on
  for (const Row& row : rows) {
    SCOPED_TRACE(&row - rows);
    EXPECT_EQ(row.color, image.SampleAt(row.mode, row.overflow, row.given ? background : nullptr,
                                        row.x, row.y));
  }
  // A picture with a palette reads every bilinear tap through the palette, in floats, and an
  // area average keeps the fourth byte of the last pixel it read.
  CImage eight;
  eight.Create(2, 2, eight.GetInfo(), 8);
  eight.StorePaletteColor(1, 0x7F000064);
  eight.StorePixelIndex(1, 1, 1);
  EXPECT_EQ(0x000019u, eight.SampleAt(2, 1, nullptr, 0.5f, 0.5f));
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

TEST(ImageSamplingTest, SetDpiStoresOrResizesByTheRatio) {
  std::mt19937 random(4);
  CImage image;
  FillRandom(image, 10, 7, 8, random);
  image.SetDpi(300, 150, false, 1);
  EXPECT_EQ(11811, image.GetInfo()->xPelsPerMeter);
  EXPECT_EQ(0, std::memcmp(image.GetInfo()->dib, image.GetInfo(), 40));  // the block's header too
  image.SetDpi(600, 75, true, 1);  // x twice, y half: 20 x 4 (7 * 0.5 + 0.5 = 4)
  EXPECT_EQ(20, image.GetInfo()->width);
  EXPECT_EQ(4, image.GetInfo()->height);
  EXPECT_EQ(600, image.GetXDpi());
  EXPECT_EQ(8, image.GetInfo()->bitCount);
}

}  // namespace
}  // namespace vsm
