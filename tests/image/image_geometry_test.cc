// Geometry: where each operation moves every pixel at every depth, the row loops against the
// per-pixel walks, rotation, crops, width extension, pasting, and progress and cancel.
// image_geometry_kit_oracle.py checks the same operations against numpy.
#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <functional>
#include <limits>
#include <random>
#include <string>

#include "image/image.h"
#include "support/tracked_heap.h"
#include "tests/image/test_pictures.h"
#include "tests/image/watched_image.h"

namespace vsm {
namespace {

// Index at palette depths, colour at 24 bits.
uint32_t ValueAt(CImage& image, int32_t x, int32_t y) {
  return image.HasPalette() ? image.PixelIndexAt(x, y) : image.PixelColorAt(x, y);
}

struct Move {
  const char* name;
  bool (*run)(CImage&);
  bool swaps;
  // The source position of destination (x, y) in a source of w x h.
  void (*from)(int32_t x, int32_t y, int32_t w, int32_t h, int32_t* fx, int32_t* fy);
};

const Move kMoves[] = {
    {"flip", [](CImage& i) { return i.FlipRows(); }, false,
     [](int32_t x, int32_t y, int32_t, int32_t h, int32_t* fx, int32_t* fy) {
       *fx = x, *fy = h - 1 - y;
     }},
    {"mirror", [](CImage& i) { return i.MirrorColumns(); }, false,
     [](int32_t x, int32_t y, int32_t w, int32_t, int32_t* fx, int32_t* fy) {
       *fx = w - 1 - x, *fy = y;
     }},
    {"clockwise", [](CImage& i) { return i.RotateClockwise(); }, true,
     [](int32_t x, int32_t y, int32_t w, int32_t, int32_t* fx, int32_t* fy) {
       *fx = w - 1 - y, *fy = x;
     }},
    {"counter", [](CImage& i) { return i.RotateCounterClockwise(); }, true,
     [](int32_t x, int32_t y, int32_t, int32_t h, int32_t* fx, int32_t* fy) {
       *fx = y, *fy = h - 1 - x;
     }},
    {"half", [](CImage& i) { return i.RotateHalfTurn(); }, false,
     [](int32_t x, int32_t y, int32_t w, int32_t h, int32_t* fx, int32_t* fy) {
       *fx = w - 1 - x, *fy = h - 1 - y;
     }},
};

TEST(ImageGeometryTest, EveryPixelGoesWhereTheOperationSaysAndPaddingStaysOut) {
  std::mt19937 random(14);
  // Sizes cover the 1-bit padding (10 wide), partial 64 x 64 tiles and a single pixel.
  const int32_t sizes[][2] = {{10, 3}, {70, 67}, {1, 1}, {65, 130}};
  for (const Move& move : kMoves) {
    for (uint32_t bits : {1u, 4u, 8u, 24u}) {
      for (const auto& size : sizes) {
        SCOPED_TRACE(std::string(move.name) + " " + std::to_string(bits) + " bits " +
                     std::to_string(size[0]) + "x" + std::to_string(size[1]));
        CImage source;
        FillRandom(source, size[0], size[1], bits, random);  // padding bits random too
        CImage image(source.GetDib());
        ASSERT_TRUE(move.run(image));
        const int32_t w = size[0], h = size[1];
        // The expected picture on a zeroed block: every pixel placed, padding left at 0.
        CImage expected;
        expected.Create(move.swaps ? h : w, move.swaps ? w : h, source.GetInfo(), 0);
        for (int32_t y = 0; y < expected.GetInfo()->height; ++y) {
          for (int32_t x = 0; x < expected.GetInfo()->width; ++x) {
            int32_t fx, fy;
            move.from(x, y, w, h, &fx, &fy);
            if (bits == 24) {
              expected.StorePixelColor(x, y, source.PixelColorAt(fx, fy));
            } else {
              expected.StorePixelIndex(x, y, source.PixelIndexAt(fx, fy));
            }
            ASSERT_EQ(ValueAt(expected, x, y), ValueAt(image, x, y)) << x << "," << y;
          }
        }
        // Flipping copies whole rows, padding included; every other move starts from zero.
        if (std::string(move.name) != "flip") {
          EXPECT_EQ(BlockBytes(expected), BlockBytes(image));
        }
        if (move.run != kMoves[0].run) {
          auto results = FastAndPlain(source, [&](CImage& copy) { ASSERT_TRUE(move.run(copy)); });
          EXPECT_EQ(results.second, results.first);
        }
      }
    }
  }
}

TEST(ImageGeometryTest, RightAnglesByTruncationAndTheTest) {
  struct Row {
    double angle;
    bool isRight, turns;
    int32_t width;  // width after RotateRightAngle on a 5 x 3 picture
  } rows[] = {{90, true, true, 3},     {-90, true, true, 3},
              {270, true, true, 3},    {180, true, true, 5},
              {0, true, true, 5},      {720, true, true, 5},
              {45, false, false, 5},   {90.5, false, true, 3},
              {-0.5, false, true, 5},  {std::nan(""), false, false, 5},
              {1e30, false, false, 5}, {-1e30, false, false, 5}};
  std::mt19937 random(3);
  for (const Row& row : rows) {
    SCOPED_TRACE(row.angle);
    EXPECT_EQ(row.isRight, CImage::IsRightAngle(row.angle));
    CImage image;
    FillRandom(image, 5, 3, 8, random);
    EXPECT_EQ(row.turns, image.RotateRightAngle(row.angle));
    EXPECT_EQ(row.width, image.GetInfo()->width);
  }
  CImage empty;
  EXPECT_FALSE(empty.RotateRightAngle(0));
}

TEST(ImageGeometryTest, RotateByAnyAngle) {
  std::mt19937 random(30);
  const uint8_t background[4] = {0x44, 0x33, 0x22, 0x11};
  CImage source;
  FillRandom(source, 100, 50, 24, random);
  struct Row {
    float angle;
    bool keepSize, result;
    int32_t width, height;
    uint32_t error;
    const char* same;  // which exact routine gives the same block, if any
  } rows[] = {{30, false, true, 112, 93, 0, nullptr},
              {30, true, true, 100, 50, 0, nullptr},
              {90, true, true, 50, 100, 0, "clockwise"},
              {-90, false, true, 50, 100, 0, "counter"},
              {0.00001f, false, true, 100, 50, 0, "none"},
              {180.00001f, false, true, 100, 50, 0, "half"},
              {std::nanf(""), false, false, 100, 50, 5, "none"},
              {1e30f, false, true, -1, -1, 0, nullptr}};
  for (const Row& row : rows) {
    SCOPED_TRACE(row.angle);
    CImage image(source.GetDib());
    EXPECT_EQ(row.result, image.Rotate(2, 1, background, row.keepSize, row.angle));
    EXPECT_EQ(row.error, image.GetLastError());
    if (row.width > 0) {
      EXPECT_EQ(row.width, image.GetInfo()->width);
      EXPECT_EQ(row.height, image.GetInfo()->height);
    }
    if (row.same != nullptr) {
      CImage exact(source.GetDib());
      const std::string name = row.same;
      if (name == "clockwise") exact.RotateClockwise();
      if (name == "counter") exact.RotateCounterClockwise();
      if (name == "half") exact.RotateHalfTurn();
      EXPECT_EQ(BlockBytes(exact), BlockBytes(image));
    }
  }
  // Grown to the bounding box, the corners show the background.
  CImage turned(source.GetDib());
  ASSERT_TRUE(turned.Rotate(2, 1, background, false, 30));
  EXPECT_EQ(0x223344u, turned.PixelColorAt(0, 0));
  EXPECT_EQ(0x223344u, turned.PixelColorAt(111, 92));
  // The inlined bilinear walk against SampleAt, and the other samplers and depths.
  for (uint32_t bits : {24u, 8u}) {
    CImage picture;
    FillRandom(picture, 37, 23, bits, random);
    for (int32_t mode : {2, 1, 3}) {
      for (bool keep : {false, true}) {
        auto results = FastAndPlain(picture, [&](CImage& copy) {
          ASSERT_TRUE(copy.Rotate(mode, 5, nullptr, keep, -17.25f));
        });
        EXPECT_EQ(results.second, results.first) << bits << " " << mode << " " << keep;
      }
    }
  }
}

TEST(ImageGeometryTest, CropsReadTheRegionRule) {
  std::mt19937 random(7);
  struct Row {
    ImageRect rect;
    bool result;
    uint32_t error;
    int32_t left, top, width, height;
  } rows[] = {
      {{0, 0, -1, -1}, true, 0, 0, 0, 7, 5}, {{5, 4, 100, 100}, true, 0, 0, 0, 7, 5},
      {{1, 1, 4, 3}, true, 0, 1, 1, 3, 2},   {{4, 3, 1, 1}, true, 0, 1, 1, 3, 2},
      {{2, 0, -1, 3}, true, 0, 0, 0, 7, 3},  {{-5, 1, 3, -1}, true, 0, 0, 0, 3, 5},
      {{3, 1, 3, 4}, false, 5, 0, 0, 7, 5},  {{10, 0, 12, 2}, false, 5, 0, 0, 7, 5},
  };
  for (uint32_t bits : {1u, 4u, 8u, 24u}) {
    CImage source;
    FillRandom(source, 7, 5, bits, random);
    for (const Row& row : rows) {
      SCOPED_TRACE(std::to_string(bits) + " bits, row " + std::to_string(&row - rows));
      CImage image(source.GetDib());
      EXPECT_EQ(row.result, image.Crop(row.rect));
      EXPECT_EQ(row.error, image.GetLastError());
      ASSERT_EQ(row.width, image.GetInfo()->width);
      ASSERT_EQ(row.height, image.GetInfo()->height);
      for (int32_t i = 0; i < row.width * row.height; ++i) {
        const int32_t x = i % row.width, y = i / row.width;
        ASSERT_EQ(ValueAt(source, row.left + x, row.top + y), ValueAt(image, x, y));
      }
      // The block form gives the same picture, and the discarding form leaves the image alone.
      CImage other(source.GetDib());
      uint8_t* block = other.CropToDib(row.rect);
      if (row.result && block != nullptr) {
        CImage fromBlock(block);
        // Crop's two no-op rows keep the padding; a copy starts from zero.
        if (&row - rows >= 2) {
          EXPECT_TRUE(BlockBytes(image) == BlockBytes(fromBlock));
        }
      }
      TrackedFree(block);
      EXPECT_EQ(0, other.CropAndDiscard(row.rect));
      EXPECT_EQ(BlockBytes(source), BlockBytes(other));
    }
  }
}

TEST(ImageGeometryTest, ExtendWidthPaintsNewColumnsOrCrops) {
  std::mt19937 random(9);
  struct Row {
    uint32_t bits;
    int32_t width, newWidth;
    ColorRefValue color;
    uint32_t painted;  // index, or colour at 24 bits
  } rows[] = {{1, 3, 10, 0xFFFFFF, 1}, {1, 3, 10, 0x102030, 0}, {24, 2, 5, 0x112233, 0x332211},
              {8, 6, 9, 0x000000, 0},  {24, 5, 2, 0, 0},        {4, 4, 4, 0, 0}};
  for (const Row& row : rows) {
    SCOPED_TRACE(&row - rows);
    CImage source;
    FillRandom(source, row.width, 3, row.bits, random);
    if (row.bits == 8) source.StorePaletteColor(0, 0);  // black, the exact match
    if (row.bits == 1) {
      source.StorePaletteColor(0, 0);
      source.StorePaletteColor(1, 0xFFFFFF);
    }
    CImage image(source.GetDib());
    ASSERT_TRUE(image.ExtendWidth(row.newWidth, row.color));
    ASSERT_EQ(row.newWidth, image.GetInfo()->width);
    for (int32_t y = 0; y < 3; ++y) {
      for (int32_t x = 0; x < row.newWidth; ++x) {
        const uint32_t want = x < row.width ? ValueAt(source, x, y) : row.painted;
        ASSERT_EQ(want, ValueAt(image, x, y)) << x << "," << y;
      }
    }
    auto results = FastAndPlain(
        source, [&](CImage& copy) { ASSERT_TRUE(copy.ExtendWidth(row.newWidth, row.color)); });
    EXPECT_EQ(results.second, results.first);
  }
}

TEST(ImageGeometryTest, PasteClipsAndTurnsColoursBlackOrWhiteOnOneBit) {
  CImage picture, onto;
  picture.Create(3, 2, picture.GetInfo(), 24);
  const ColorValue colors[6] = {0xFFFFFF, 0x123456, 0xFFFFFE, 0x000000, 0xFFFFFF, 0x808080};
  for (int32_t i = 0; i < 6; ++i) picture.StorePixelColor(i % 3, i / 3, colors[i]);
  struct Row {
    uint32_t bits;
    int32_t x, y;
    int32_t atX, atY;  // where the picture's (0, 0) lands
  } rows[] = {
      {24, 2, 1, 2, 1}, {24, -4, -1, 0, 0}, {1, 1, 0, 1, 0}, {24, 5, 0, 5, 0}, {8, 3, 2, 3, 2}};
  for (const Row& row : rows) {
    SCOPED_TRACE(&row - rows);
    onto.Destroy();
    onto.Create(5, 3, onto.GetInfo(), row.bits);
    if (row.bits == 1) onto.StorePaletteColor(1, 0xFFFFFF);
    if (row.bits == 8) onto.SetStandardPalette();
    CImage before(onto.GetDib());
    ASSERT_TRUE(onto.Paste(row.x, row.y, picture.GetDib()));
    for (int32_t y = 0; y < 3; ++y) {
      for (int32_t x = 0; x < 5; ++x) {
        const int32_t px = x - row.atX, py = y - row.atY;
        ColorValue want = before.PixelColorAt(x, y);
        if (px >= 0 && px < 3 && py >= 0 && py < 2) {
          want = colors[py * 3 + px];
          if (row.bits == 1 && want != 0xFFFFFF) want = 0;
          if (row.bits == 8) want = onto.PaletteColorAt(onto.NearestPaletteIndex(want));
        }
        ASSERT_EQ(want, onto.PixelColorAt(x, y)) << x << "," << y;
      }
    }
  }
}

TEST(ImageGeometryTest, ProgressAndCancelByOperation) {
  std::mt19937 random(64);
  struct Row {
    const char* name;
    uint32_t bits;
    int32_t width, height;
    int cancelAt;
    std::function<bool(CImage&)> run;
    const char* seen;
    bool result;
    uint32_t error;
    bool kept;
  } rows[] = {
      {"flip", 24, 4, 3, -1, [](CImage& i) { return i.FlipRows(); }, "0 33 66 ", true, 0, false},
      {"flip cancelled", 24, 4, 3, 2, [](CImage& i) { return i.FlipRows(); }, "0 33 ", false, 1,
       true},
      {"1-bit turn", 1, 10, 2, -1, [](CImage& i) { return i.RotateClockwise(); }, "0 50 ", true, 0,
       false},
      // Tiles report the last column bound over the height: 130 * 100 / 70.
      {"tile turn", 24, 130, 70, -1, [](CImage& i) { return i.RotateClockwise(); }, "0 185 ", true,
       0, false},
      {"tile turn cancelled", 8, 130, 70, 1, [](CImage& i) { return i.RotateClockwise(); }, "0 ",
       false, 1, true},
      {"counter tiles are silent", 24, 130, 70, -1,
       [](CImage& i) { return i.RotateCounterClockwise(); }, "", true, 0, false},
      {"extend", 4, 3, 2, 2, [](CImage& i) { return i.ExtendWidth(9, 0); }, "0 50 ", false, 1,
       true},
      {"rotate counts new rows", 24, 2, 2, -1,
       [](CImage& i) { return i.Rotate(2, 1, nullptr, false, 45); }, "0 33 66 ", true, 0, false},
      {"crop counts to the region's end", 8, 3, 6, -1,
       [](CImage& i) {
         return i.Crop(ImageRect{0, 2, -1, 4});
       },
       "50 75 ", true, 0, false},
      {"crop cancelled: no error", 8, 3, 6, 1,
       [](CImage& i) {
         return i.Crop(ImageRect{0, 2, -1, 4});
       },
       "50 ", false, 0, true},
  };
  for (const Row& row : rows) {
    SCOPED_TRACE(row.name);
    CImage source;
    FillRandom(source, row.width, row.height, row.bits, random);
    WatchedImage image;
    image.Attach(source.GetDib(), true, false);
    image.cancelAtCall = row.cancelAt;
    EXPECT_EQ(row.result, row.run(image));
    EXPECT_EQ(row.seen, image.seen);
    EXPECT_EQ(row.error, image.GetLastError());
    EXPECT_EQ(row.kept, BlockBytes(source) == BlockBytes(image));
  }
  // A raised flag stops the silent tile walk at its first band.
  WatchedImage image;
  FillRandom(image, 70, 70, 24, random);
  image.Cancel();
  EXPECT_FALSE(image.RotateCounterClockwise());
  EXPECT_EQ(1u, image.GetLastError());
  // A cancelled CropTo leaves the rows made so far in the target.
  FillRandom(image, 3, 6, 24, random);
  image.cancelAtCall = 2;
  CImage target;
  EXPECT_FALSE(image.CropTo(ImageRect{0, 2, -1, 5}, target));
  EXPECT_EQ(image.PixelColorAt(1, 2), target.PixelColorAt(1, 0));
  EXPECT_EQ(0u, target.PixelColorAt(1, 1));
}

}  // namespace
}  // namespace vsm
