// Tone and filter operations: threshold, grey, negative, the tables, and convolution with its
// two paths, border rule and 32-bit sums. image_tone_kit_oracle.py checks the same against numpy.
#include <gtest/gtest.h>

#include <climits>
#include <cstring>
#include <random>
#include <string>
#include <vector>

#include "image/image.h"
#include "tests/image/test_pictures.h"
#include "tests/image/watched_image.h"

namespace vsm {
namespace {

uint8_t Grey(ColorValue c) {
  return static_cast<uint8_t>(((c >> 8 & 0xFF) * 601 + (c & 0xFF) * 117 + (c >> 16 & 0xFF) * 306) >>
                              10);
}

TEST(ImageToneTest, ThresholdMakesOneBitPicturesOfTheRegion) {
  std::mt19937 random(1);
  struct Row {
    uint32_t bits;
    ImageRect rect;
    int32_t level;
    int32_t width, height;
    int forced;  // -1: by grey; else every pixel this index
  } rows[] = {{24, {0, 0, -1, -1}, 255, 9, 7, 0}, {24, {0, 0, -1, -1}, -1, 9, 7, 1},
              {24, {2, 1, 7, 5}, 100, 5, 4, -1},  {8, {1, 0, 9, 3}, 128, 8, 3, -1},
              {4, {0, 2, 4, -1}, 60, 4, 7, -1},   {1, {1, 1, 3, 3}, 0, 2, 2, -1}};
  for (const Row& row : rows) {
    SCOPED_TRACE(&row - rows);
    CImage source;
    FillRandom(source, 9, 7, row.bits, random);
    CImage image(source.GetDib());
    ASSERT_TRUE(image.Threshold(row.rect, row.level));
    ASSERT_EQ(1, image.GetInfo()->bitCount);
    ASSERT_EQ(row.width, image.GetInfo()->width);
    ASSERT_EQ(row.height, image.GetInfo()->height);
    if (row.bits != 1) {
      EXPECT_EQ(0u, image.PaletteColorAt(0));
      EXPECT_EQ(0xFFFFFFu, image.PaletteColorAt(1));
    }
    const int32_t left = row.rect.left, top = row.rect.bottom == -1 ? 0 : row.rect.top;
    for (int32_t y = 0; y < row.height; ++y) {
      for (int32_t x = 0; x < row.width; ++x) {
        int want = row.forced;
        if (row.bits == 1) want = source.PixelIndexAt(left + x, top + y);  // a plain crop
        if (want < 0) want = row.level < Grey(source.PixelColorAt(left + x, top + y)) ? 1 : 0;
        ASSERT_EQ(want, image.PixelIndexAt(x, y)) << x << "," << y;
      }
    }
    auto results = FastAndPlain(source, [&](CImage& copy) { copy.Threshold(row.rect, row.level); });
    EXPECT_EQ(results.second, results.first);
  }
  // A cancel keeps the rows done so far as the new picture, with true and no error.
  WatchedImage watched;
  FillRandom(watched, 4, 4, 24, random);
  watched.cancelAtCall = 3;
  EXPECT_TRUE(watched.Threshold(ImageRect{0, 0, -1, -1}, -1));
  EXPECT_EQ(0u, watched.GetLastError());
  EXPECT_EQ(1, watched.PixelIndexAt(3, 1));
  EXPECT_EQ(0, watched.PixelIndexAt(3, 2));
}

TEST(ImageToneTest, ToGreyByDepth) {
  std::mt19937 random(2);
  CImage eight;
  FillRandom(eight, 5, 3, 8, random);
  CImage image(eight.GetDib());
  bool resized = true;
  // At 8 bits the whole picture is converted in place, whatever the region.
  ASSERT_TRUE(image.ToGrey(ImageRect{1, 1, 2, 2}, &resized));
  EXPECT_FALSE(resized);
  EXPECT_EQ(5, image.GetInfo()->width);
  EXPECT_TRUE(image.IsGreyPalette());
  for (int32_t i = 0; i < 15; ++i) {
    EXPECT_EQ(Grey(eight.PixelColorAt(i % 5, i / 5)), image.PixelIndexAt(i % 5, i / 5));
  }
  // Above 8 bits the region's size, read from row 0 and byte `left`: exact at the origin,
  // displaced elsewhere.
  CImage deep;
  FillRandom(deep, 6, 4, 24, random);
  for (int32_t left : {0, 1, 4}) {
    CImage grey(deep.GetDib());
    ASSERT_TRUE(grey.ToGrey(ImageRect{left, 2, 6, 4}, &resized));
    EXPECT_TRUE(resized);
    ASSERT_EQ(6 - left, grey.GetInfo()->width);
    ASSERT_EQ(2, grey.GetInfo()->height);
    for (int32_t j = 0; j < 2; ++j) {
      const uint8_t* row = deep.GetInfo()->bits + j * deep.GetInfo()->stride + left;
      for (int32_t i = 0; i < 6 - left; ++i) {
        const uint8_t* p = row + 3 * i;
        EXPECT_EQ(Grey(p[2] << 16 | p[1] << 8 | p[0]), grey.PixelIndexAt(i, j)) << left;
      }
    }
  }
  // At 4 bits the region; an empty one fails after the palette's blue bytes have changed.
  CImage four;
  FillRandom(four, 7, 3, 4, random);
  CImage part(four.GetDib());
  ASSERT_TRUE(part.ToGrey(ImageRect{2, 1, 5, 3}, &resized));
  EXPECT_TRUE(resized);
  EXPECT_EQ(8, part.GetInfo()->bitCount);
  EXPECT_EQ(Grey(four.PixelColorAt(3, 2)), part.PixelIndexAt(1, 1));
  CImage empty(four.GetDib());
  EXPECT_FALSE(empty.ToGrey(ImageRect{2, 2, 2, 3}, &resized));
  EXPECT_EQ(5u, empty.GetLastError());
  EXPECT_EQ(Grey(four.PaletteColorAt(3)), empty.PaletteColorAt(3) & 0xFF);
}

TEST(ImageToneTest, NegateInvertsBytesPaletteOrIndices) {
  std::mt19937 random(3);
  CImage deep;
  FillRandom(deep, 3, 2, 24, random);
  CImage image(deep.GetDib());
  ASSERT_TRUE(image.Negate());
  for (uint32_t i = 0; i < deep.GetInfo()->imageSize; ++i) {  // padding too
    EXPECT_EQ(static_cast<uint8_t>(~deep.GetInfo()->bits[i]), image.GetInfo()->bits[i]);
  }
  for (uint32_t bits : {8u, 4u, 1u}) {
    for (bool grey : {false, true}) {
      SCOPED_TRACE(std::to_string(bits) + (grey ? " grey" : " colour"));
      CImage source;
      FillRandom(source, 9, 2, bits, random);
      if (grey) source.SetGreyRamp();
      if (!grey) source.StorePaletteColor(0, 0x123456);
      CImage negated(source.GetDib());
      ASSERT_TRUE(negated.Negate());
      const uint32_t top = (1u << bits) - 1;
      for (int32_t i = 0; i < 18; ++i) {
        const int32_t x = i % 9, y = i / 9;
        const uint32_t index = source.PixelIndexAt(x, y);
        EXPECT_EQ(grey ? top - index : index, negated.PixelIndexAt(x, y));
      }
      for (uint32_t i = 0; i <= top; ++i) {
        const ColorValue entry = source.PaletteColorAt(i);
        EXPECT_EQ(grey ? entry : entry ^ 0xFFFFFF, negated.PaletteColorAt(i));
      }
    }
  }
}

TEST(ImageToneTest, TablesMapPalettesOrShiftPlainBytes) {
  std::mt19937 random(4);
  uint8_t identity[256];
  for (int i = 0; i < 256; ++i) identity[i] = static_cast<uint8_t>(i);
  CImage deep;
  FillRandom(deep, 3, 2, 24, random);
  CImage shifted(deep.GetDib());
  ASSERT_TRUE(shifted.ApplyLut(identity));
  const uint32_t size = deep.GetInfo()->imageSize;
  for (uint32_t i = 0; i + 1 < size; ++i)
    EXPECT_EQ(deep.GetInfo()->bits[i + 1], shifted.GetInfo()->bits[i]);
  EXPECT_EQ(0, shifted.GetInfo()->bits[size - 1]);  // the byte past the block reads as 0
  EXPECT_FALSE(shifted.ApplyLut(nullptr));
  EXPECT_EQ(5u, shifted.GetLastError());
  // On a palette the entries move and the spare bytes stay. Each row: operation, and a few
  // (entry, expected) pairs of the table it built.
  struct Row {
    const char* name;
    void (*run)(CImage&);
    int pairs[4][2];
  } rows[] = {
      {"gamma 1", [](CImage& i) { i.ApplyGamma(1.0f); }, {{0, 0}, {1, 1}, {128, 128}, {255, 255}}},
      {"gamma 2", [](CImage& i) { i.ApplyGamma(2.0f); }, {{0, 0}, {1, 15}, {64, 127}, {255, 255}}},
      {"gamma 0", [](CImage& i) { i.ApplyGamma(0.0f); }, {{0, 0}, {1, 0}, {200, 0}, {255, 0}}},
      {"light 0 0",
       [](CImage& i) { i.ApplyLight(0, 0); },
       {{0, 0}, {1, 1}, {200, 200}, {255, 255}}},
      {"light 0 -100",
       [](CImage& i) { i.ApplyLight(0, -100); },
       {{0, 128}, {1, 128}, {200, 128}, {255, 128}}},
      {"brightness 20",
       [](CImage& i) { i.AdjustBrightness(20); },
       {{0, 20}, {1, 21}, {234, 254}, {240, 255}}},
      {"contrast 50",
       [](CImage& i) { i.AdjustContrast(50); },
       {{0, 0}, {50, 11}, {130, 131}, {200, 236}}},
      {"brightness 300",
       [](CImage& i) { i.AdjustBrightness(300); },
       {{0, 255}, {1, 255}, {9, 255}, {255, 255}}},
  };
  for (const Row& row : rows) {
    SCOPED_TRACE(row.name);
    CImage palette;
    palette.Create(16, 16, palette.GetInfo(), 8);
    for (uint32_t i = 0; i < 256; ++i) palette.StorePaletteColor(i, 0xA5000000u | i * 0x010101u);
    row.run(palette);
    for (const auto& pair : row.pairs) {
      EXPECT_EQ(0xA5000000u | pair[1] * 0x010101u, palette.PaletteColorAt(pair[0])) << pair[0];
    }
  }
}

TEST(ImageToneTest, ConvolutionShiftsByTheKernelWithTheBorderOfEachPath) {
  std::mt19937 random(5);
  // One weight of 1 at kernel row 0, column 0 copies the pixel one row and one column back.
  int32_t shift[9] = {1, 0, 0, 0, 0, 0, 0, 0, 0};
  for (uint32_t bits : {8u, 24u, 4u}) {
    SCOPED_TRACE(bits);
    CImage source;
    FillRandom(source, 6, 5, bits, random);
    if (bits == 8) source.SetGreyRamp();  // the grey path
    CImage image(source.GetDib());
    ASSERT_TRUE(image.Convolve(shift, 3, 1, 0));
    for (int32_t y = 0; y < 5; ++y) {
      for (int32_t x = 0; x < 6; ++x) {
        if (bits == 8) {
          // Unfiltered where the window touches row or column 0 or passes the far edge.
          const bool border = y - 1 <= 0 || y + 2 > 5 || x - 1 <= 0 || x + 2 > 6;
          const int32_t fx = border ? x : x - 1, fy = border ? y : y - 1;
          ASSERT_EQ(source.PixelIndexAt(fx, fy), image.PixelIndexAt(x, y)) << x << "," << y;
        } else {
          // Every pixel; a tap outside reads pixel (0, 0).
          const ColorValue want = source.PixelColorAt(x - 1, y - 1);
          CImage expected(source.GetDib());
          expected.StorePixelColor(x, y, want);
          ASSERT_EQ(expected.PixelColorAt(x, y), image.PixelColorAt(x, y)) << x << "," << y;
        }
      }
    }
  }
  // The row forms against the per-pixel walks: 16- and 32-bit sums, every kind of divisor.
  CImage colour, grey;
  FillRandom(colour, 23, 17, 24, random);
  FillRandom(grey, 19, 13, 8, random);
  grey.SetGreyRamp();
  std::vector<int32_t> narrow(25), wide(25);
  for (int32_t i = 0; i < 25; ++i) {
    narrow[i] = static_cast<int32_t>(random() % 9) - 3;
    wide[i] = static_cast<int32_t>(random() % 401) - 200;
  }
  for (CImage* picture : {&colour, &grey}) {
    for (const std::vector<int32_t>* kernel : {&narrow, &wide}) {
      for (int32_t size : {3, 5, 1}) {
        for (int32_t factor : {1, 16, 7, -3, 0, -1, 40000}) {
          auto results = FastAndPlain(*picture, [&](CImage& copy) {
            ASSERT_TRUE(copy.Convolve(kernel->data(), size, factor, 20));
          });
          EXPECT_EQ(results.second, results.first) << size << " " << factor;
        }
      }
    }
  }
}

TEST(ImageToneTest, ConvolutionSumsClampAndWrapAndBadKernelsAreRefused) {
  CImage image;
  image.Create(4, 4, image.GetInfo(), 24);
  for (int32_t i = 0; i < 16; ++i) image.StorePixelColor(i % 4, i / 4, 0x010203);
  const int32_t ones[9] = {1, 1, 1, 1, 1, 1, 1, 1, 1};
  const int32_t centre[9] = {0, 0, 0, 0, 1, 0, 0, 0, 0};
  const int32_t huge[9] = {INT_MAX, INT_MAX, 0, 0, INT_MIN, 0, 0, 0, 0};
  const int32_t lowest[9] = {0, 0, 0, 0, INT_MIN, 0, 0, 0, 0};
  struct Row {
    const int32_t* kernel;
    int32_t size, factor, offset;
    bool result;
    ColorValue pixel;  // at (2, 2)
  } rows[] = {
      {ones, 3, 0, 0, true, 0x09121B},  // no division: 9 times each channel
      {ones, 3, 9, 0, true, 0x010203},
      {centre, 3, 1, 300, true, 0xFFFFFF},
      {centre, 3, -1, 0, true, 0x000000},
      {centre, 3, 1, -2, true, 0x000001},
      // Sums wrap at 32 bits: v * (2^31 - 2) for a channel v. Over -1 they change sign
      // without a trap.
      {huge, 3, -1, 0, true, 0x000400},
      {huge, 3, 1, 0, true, 0xFF00FF},
      {lowest, 3, -1, 0, true, 0x000000},
      {ones, 0, 1, 0, false, 0},
      {ones, -1, 1, 0, false, 0},
      {ones, 46341, 1, 0, false, 0},
      {nullptr, 3, 1, 0, false, 0},
  };
  for (const Row& row : rows) {
    SCOPED_TRACE(&row - rows);
    CImage copy(image.GetDib());
    EXPECT_EQ(row.result, copy.Convolve(row.kernel, row.size, row.factor, row.offset));
    if (row.result) {
      EXPECT_EQ(row.pixel, copy.PixelColorAt(2, 2));
    } else {
      EXPECT_EQ(5u, copy.GetLastError());
    }
  }
  // A kernel larger than the picture: every tap of the grey path is border, every colour tap
  // reads somewhere inside or at (0, 0).
  std::vector<int32_t> wide(1600, 1);
  CImage grey;
  grey.Create(10, 10, grey.GetInfo(), 8);
  grey.SetGreyRamp();
  grey.GetInfo()->bits[33] = 200;
  CImage kept(grey.GetDib());
  EXPECT_TRUE(grey.Convolve(wide.data(), 40, 1, 0));
  EXPECT_EQ(BlockBytes(kept), BlockBytes(grey));
  EXPECT_TRUE(image.Convolve(wide.data(), 40, 1600, 0));
  // Cancelled: error 1 and the old picture.
  WatchedImage watched;
  watched.Attach(image.GetDib(), true, false);
  watched.cancelAtCall = 2;
  EXPECT_FALSE(watched.Convolve(ones, 3, 9, 0));
  EXPECT_EQ(1u, watched.GetLastError());
  EXPECT_EQ(BlockBytes(image), BlockBytes(watched));
}

}  // namespace
}  // namespace vsm
