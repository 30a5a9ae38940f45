// Tone, filter and drawing rules beyond the numpy oracle's reach: the grey conversion's flags,
// 32-bit wrapping sums and refused kernels, the rounded box, blends with no size, and the ink
// bounds.
#include <gtest/gtest.h>

#include <climits>
#include <random>
#include <vector>

#include "image/image.h"
#include "tests/image/test_pictures.h"

namespace vsm {
namespace {

TEST(ImageToneTest, GreyConvertsInPlaceAtEightBitsAndMakesARegionElsewhere) {
  std::mt19937 random(2);
  struct Row {
    uint32_t bits;
    ImageRect rect;
    bool result, resized;
    int32_t width;
    uint32_t error;
  } rows[] = {
      // clang-format off
      {8, {1, 1, 2, 2}, true, false, 5, 0}, {24, {1, 2, 4, 3}, true, true, 3, 0}, {4, {2, 1, 5, 3}, true, true, 3, 0},
      {4, {2, 2, 2, 3}, false, false, 5, 5}, {24, {9, 0, 12, 3}, false, false, 5, 5},
      // clang-format on
  };
  for (const Row& row : rows) {
    SCOPED_TRACE(&row - rows);
    CImage image;
    FillRandom(image, 5, 3, row.bits, random);
    bool resized = !row.resized;
    EXPECT_EQ(row.result, image.ToGrey(row.rect, &resized));
    EXPECT_EQ(row.resized, resized);
    EXPECT_EQ(row.width, image.GetInfo()->width);
    EXPECT_EQ(row.error, image.GetLastError());
    EXPECT_EQ(row.result, image.IsGreyPalette());
  }
}

TEST(ImageToneTest, ConvolutionSumsWrapAndBadKernelsAreRefused) {
  CImage image;
  image.Create(4, 4, image.GetInfo(), 24);
  for (int32_t i = 0; i < 16; ++i) image.StorePixelColor(i % 4, i / 4, 0x010203);
  const int32_t ones[9] = {1, 1, 1, 1, 1, 1, 1, 1, 1};
  const int32_t huge[9] = {INT_MAX, INT_MAX, 0, 0, INT_MIN, 0, 0, 0, 0};
  const int32_t lowest[9] = {0, 0, 0, 0, INT_MIN, 0, 0, 0, 0};
  struct Row {
    const int32_t* kernel;
    int32_t size, factor;
    bool result;
    ColorValue pixel;  // at (2, 2)
  } rows[] = {
      // clang-format off
      {ones, 3, 0, true, 0x09121B},  // no division: nine times each channel
      // A channel v sums to v * (2^31 - 2), wrapped; over -1 it changes sign without a trap.
      {huge, 3, 1, true, 0xFF00FF}, {huge, 3, -1, true, 0x000400}, {lowest, 3, -1, true, 0},
      {ones, 0, 1, false, 0}, {ones, -1, 1, false, 0}, {ones, 46341, 1, false, 0}, {nullptr, 3, 1, false, 0},
      // clang-format on
  };
  for (const Row& row : rows) {
    SCOPED_TRACE(&row - rows);
    CImage copy(image.GetDib());
    EXPECT_EQ(row.result, copy.Convolve(row.kernel, row.size, row.factor, 0));
    EXPECT_EQ(row.result ? 0u : 5u, copy.GetLastError());
    EXPECT_EQ(row.pixel, row.result ? copy.PixelColorAt(2, 2) : 0);
  }
  // A kernel wider than the picture: all border on a grey picture, taps at (0, 0) on others.
  std::vector<int32_t> wide(1600, 1);
  CImage grey;
  grey.Create(10, 10, grey.GetInfo(), 8);
  grey.SetGreyRamp();
  grey.GetInfo()->bits[33] = 200;
  CImage kept(grey.GetDib());
  EXPECT_TRUE(grey.Convolve(wide.data(), 40, 1, 0));
  EXPECT_EQ(BlockBytes(kept), BlockBytes(grey));
  EXPECT_TRUE(image.Convolve(wide.data(), 40, 1600, 0));
}

TEST(ImageToneTest, RoundedBoxStandsFromTheFarEndWithInsetCorners) {
  const uint8_t zero = 0, one = 1;
  CImage image;
  image.Create(20, 700, image.GetInfo(), 24);
  for (int32_t i = 0; i < 20 * 700; ++i) image.StorePixelColor(i % 20, i / 20, 0x102030);
  CImage blank(image.GetDib());
  EXPECT_FALSE(image.DrawRoundedBox(0, 0, &one, 5 << 16 | 5, 0, 0.1f, 1));
  EXPECT_EQ(6u, image.GetLastError());
  EXPECT_FALSE(image.DrawRoundedBox(0, 0, nullptr, 5 << 16 | 5, 0, 0.1f, 1));
  EXPECT_EQ(5u, image.GetLastError());
  EXPECT_TRUE(image.DrawRoundedBox(0, 0, &zero, 5 << 16 | 5, 0xFFFFFF, 0.1f, 0));
  EXPECT_TRUE(image.DrawRoundedBox(0, 0, &zero, 5 << 16 | 5, 0xFFFFFF, 0.1f, 1.5f));
  EXPECT_EQ(BlockBytes(blank), BlockBytes(image));
  // Radius trunc(600 * 0.5 / 100) = 3 on a 12 x 8 box from row 700 - 600 - 1; half the old
  // pixel: red (1 - 0.5) * 255 + 16 * 0.5 = 135, green and blue halved.
  ASSERT_TRUE(image.DrawRoundedBox(0, 592, &zero, 12 << 16 | 600, 0x0000FF, 0.5f, 0.5f));
  const int32_t insets[12] = {3, 1, 0, 0, 0, 0, 0, 0, 0, 0, 1, 3};
  for (int32_t y = 95; y < 110; ++y) {
    for (int32_t x = 0; x < 14; ++x) {
      const bool painted = x < 12 && y - 99 >= insets[x] && y - 99 < 8 - insets[x];
      ASSERT_EQ(painted ? 0x871018u : 0x102030u, image.PixelColorAt(x, y)) << x << "," << y;
    }
  }
  // Alpha 1: solid with square corners, clipped at the image's edges.
  ASSERT_TRUE(image.DrawRoundedBox(17, 0, &zero, 40 << 16 | 698, 0x00FF00, 0.5f, 1));
  EXPECT_EQ(0x00FF00u, image.PixelColorAt(17, 1));
  EXPECT_EQ(0x00FF00u, image.PixelColorAt(19, 698));
  EXPECT_EQ(0x102030u, image.PixelColorAt(19, 699));
  EXPECT_EQ(0x102030u, image.PixelColorAt(16, 1));
}

TEST(ImageToneTest, InkBoundsPutTheLargerRowOnTopAndBlendsNeedASize) {
  CImage page;
  page.Create(600, 400, page.GetInfo(), 24);
  for (int32_t i = 0; i < 600 * 400; ++i) {
    const int32_t x = i % 600, y = i / 600;
    page.StorePixelColor(x, y, x >= 100 && x < 200 && y >= 50 && y < 100 ? 0x101010 : 0xF0F0F0);
  }
  const uint8_t color[4] = {1, 2, 3, 4};
  EXPECT_EQ(nullptr, page.BlendRectToDib(ImageRect{4, 3, 1, 1}, color, 0.5f));
  EXPECT_EQ(5u, page.GetLastError());
  ImageRect bounds{-1, -1, -1, -1};
  CImage ink(page.GetDib()), blank(page.GetDib()), empty;
  ASSERT_TRUE(ink.FindInkBounds(128, &bounds));
  EXPECT_NEAR(100, bounds.left, 4);
  EXPECT_NEAR(199, bounds.right, 4);
  EXPECT_NEAR(99, bounds.top, 4);
  EXPECT_NEAR(50, bounds.bottom, 4);
  // No ink: the start values over a scale of 0.5 saturate.
  ASSERT_TRUE(blank.FindInkBounds(0, &bounds));
  EXPECT_EQ(INT_MAX, bounds.left);
  EXPECT_EQ(INT_MAX, bounds.bottom);
  EXPECT_EQ(0, bounds.right + bounds.top);
  EXPECT_FALSE(empty.FindInkBounds(0, &bounds));
  EXPECT_EQ(INT_MAX, bounds.left);  // left as it was
}

}  // namespace
}  // namespace vsm
