// What the numpy oracle can't reach through vsmkit: angles that aren't numbers or fall to the
// exact routines, the block forms of crops, and the progress and cancel rules of every long
// operation.
#include <gtest/gtest.h>

#include <cmath>
#include <functional>
#include <random>
#include <string>

#include "image/image.h"
#include "support/tracked_heap.h"
#include "tests/image/test_pictures.h"

namespace vsm {
namespace {

TEST(ImageGeometryTest, AnglesThatTurnExactlyOrGiveNoSize) {
  std::mt19937 random(30);
  CImage source;
  FillRandom(source, 100, 50, 24, random);
  for (double angle : {45.0, std::nan(""), 1e30}) {
    EXPECT_FALSE(CImage::IsRightAngle(angle));
    EXPECT_FALSE(CImage(source.GetDib()).RotateRightAngle(angle));
  }
  struct Row {
    float angle;
    bool keepSize, result;
    int32_t width;            // 0: any size
    bool (CImage::*exact)();  // the routine giving the same block, or none
  } rows[] = {{90.5f, true, true, 50, &CImage::RotateClockwise},  // truncated to 90, also kept
              {-90, false, true, 50, &CImage::RotateCounterClockwise},
              {180.00001f, false, true, 100, &CImage::RotateHalfTurn},
              {0.00001f, false, true, 100, nullptr},
              {std::nanf(""), false, false, 100, nullptr},
              {1e30f, false, true, 0, nullptr}};
  for (const Row& row : rows) {
    SCOPED_TRACE(row.angle);
    CImage image(source.GetDib()), exact(source.GetDib());
    const bool done = row.angle == 90.5f ? image.RotateRightAngle(row.angle)
                                         : image.Rotate(2, 1, nullptr, row.keepSize, row.angle);
    EXPECT_EQ(row.result, done);
    EXPECT_EQ(row.result ? 0u : 5u, image.GetLastError());
    if (row.exact != nullptr) (exact.*row.exact)();
    EXPECT_TRUE(row.width == 0 || BlockBytes(exact) == BlockBytes(image));
  }
  // The block form of a crop is its picture; the discarding form keeps the image and gives 0.
  CImage cropped(source.GetDib()), other(source.GetDib());
  ASSERT_TRUE(cropped.Crop(ImageRect{3, 4, 20, 9}));
  uint8_t* block = other.CropToDib(ImageRect{3, 4, 20, 9});
  CImage fromBlock(static_cast<const void*>(block));
  EXPECT_EQ(BlockBytes(cropped), BlockBytes(fromBlock));
  TrackedFree(block);
  EXPECT_EQ(0, other.CropAndDiscard(ImageRect{3, 4, 20, 9}));
  EXPECT_EQ(BlockBytes(source), BlockBytes(other));
}

class WatchedImage : public CImage {
 public:
  void OnProgress(uint32_t percent) override {
    seen += std::to_string(percent) + " ";
    if (++calls == cancelAt) Cancel();
  }
  std::string seen;
  int calls = 0, cancelAt = -1;
};

TEST(ImageGeometryTest, ProgressAndCancelByOperation) {
  std::mt19937 random(64);
  const int32_t blur[9] = {1, 2, 1, 2, 4, 2, 1, 2, 1};
  const uint8_t color[4] = {1, 2, 3, 0};
  struct Row {
    const char* name;
    uint32_t bits;
    int32_t width, height;
    int cancelAt;
    std::function<bool(CImage&)> run;
    const char* seen;
    bool result;
    uint32_t error;
    bool kept;  // the picture stays as it was
  } rows[] = {
      // clang-format off
      {"flip", 24, 4, 3, 2, [](CImage& i) { return i.FlipRows(); }, "0 33 ", false, 1, true},
      {"1-bit turn", 1, 10, 2, -1, [](CImage& i) { return i.RotateClockwise(); }, "0 50 ", true, 0, false},
      // Tiles report the last column bound over the height, 130 * 100 / 70, once per band.
      {"tiles", 24, 130, 70, -1, [](CImage& i) { return i.RotateClockwise(); }, "0 185 ", true, 0, false},
      {"tiles cancelled", 8, 130, 70, 1, [](CImage& i) { return i.RotateClockwise(); }, "0 ", false, 1, true},
      {"counter tiles say nothing", 24, 130, 70, -1, [](CImage& i) { return i.RotateCounterClockwise(); }, "", true, 0, false},
      {"rotate counts new rows", 24, 2, 2, -1, [](CImage& i) { return i.Rotate(2, 1, nullptr, false, 45); }, "0 33 66 ", true, 0, false},
      {"crop counts to the region's end", 8, 3, 6, -1, [](CImage& i) { return i.Crop({0, 2, -1, 4}); }, "50 75 ", true, 0, false},
      {"crop cancelled is no error", 8, 3, 6, 1, [](CImage& i) { return i.Crop({0, 2, -1, 4}); }, "50 ", false, 0, true},
      {"threshold keeps its rows", 24, 4, 4, 2, [](CImage& i) { return i.Threshold({0, 0, -1, -1}, 9); }, "0 25 ", true, 0, false},
      {"convolve", 24, 4, 4, 3, [&](CImage& i) { return i.Convolve(blur, 3, 16, 0); }, "0 25 50 ", false, 1, true},
      {"fill", 8, 4, 4, 1, [&](CImage& i) { return i.FillRect({0, 2, 4, 4}, color), false; }, "50 ", false, 1, true},
      // clang-format on
  };
  for (const Row& row : rows) {
    SCOPED_TRACE(row.name);
    CImage source;
    FillRandom(source, row.width, row.height, row.bits, random);
    WatchedImage image;
    image.Attach(source.GetDib(), true, false);
    image.cancelAt = row.cancelAt;
    EXPECT_EQ(row.result, row.run(image));
    EXPECT_EQ(row.seen, image.seen);
    EXPECT_EQ(row.error, image.GetLastError());
    EXPECT_EQ(row.kept, BlockBytes(source) == BlockBytes(image));
  }
  // A raised flag stops the silent tile walk at its first band; a cancelled blend hands over the
  // rows done so far, and a cancelled CropTo leaves them in its target.
  WatchedImage image;
  FillRandom(image, 3, 6, 24, random);
  image.cancelAt = 2;
  CImage target;
  EXPECT_FALSE(image.CropTo(ImageRect{0, 2, -1, 5}, target));
  EXPECT_EQ(image.PixelColorAt(1, 2), target.PixelColorAt(1, 0));
  EXPECT_EQ(0u, target.PixelColorAt(1, 1));
  EXPECT_FALSE(image.RotateCounterClockwise());
  EXPECT_EQ(1u, image.GetLastError());
  CImage blended(image.BlendRectToDib(ImageRect{0, 0, -1, -1}, color, 1), false, false);
  EXPECT_EQ(0u, image.GetLastError());
  EXPECT_EQ(0u, blended.PixelColorAt(2, 0));  // the flag stood from the start: no rows
}

}  // namespace
}  // namespace vsm
