// Every specialised row loop of the geometry, tone, filter and drawing operations gives the
// bytes of the plain per-pixel walk, at every depth, on pictures with random padding bits (which
// the turns must keep out), tile remainders, and kernels whose sums need 16 or 32 bits.
#include <gtest/gtest.h>

#include <functional>
#include <random>
#include <string>
#include <vector>

#include "image/image.h"
#include "support/tracked_heap.h"
#include "tests/image/test_pictures.h"

namespace vsm {
namespace {

TEST(ImageRowLoopsTest, MatchThePerPixelWalks) {
  std::vector<int32_t> narrow(25), wide(25);
  std::mt19937 random(14);
  for (int32_t i = 0; i < 25; ++i) {
    narrow[i] = static_cast<int32_t>(random() % 9) - 3;
    wide[i] = static_cast<int32_t>(random() % 401) - 200;
  }
  const uint8_t color[4] = {0x10, 0x20, 0x30, 0};
  using Operation = std::function<void(CImage&)>;
  // clang-format off
  std::vector<std::pair<std::string, Operation>> operations = {
      {"cw", [](CImage& i) { i.RotateClockwise(); }},
      {"ccw", [](CImage& i) { i.RotateCounterClockwise(); }},
      {"half", [](CImage& i) { i.RotateHalfTurn(); }},
      {"rotate bilinear", [](CImage& i) { i.Rotate(2, 5, nullptr, false, -17.25f); }},
      {"rotate kept", [](CImage& i) { i.Rotate(0, 1, nullptr, true, 33); }},
      {"rotate cubic", [](CImage& i) { i.Rotate(3, 4, nullptr, false, 61); }},
      {"extend", [](CImage& i) { i.ExtendWidth(i.GetInfo()->width + 9, 0x123456); }},
      {"threshold", [](CImage& i) { i.Threshold(ImageRect{1, 2, -1, 9}, 100); }},
      {"negate", [](CImage& i) { i.Negate(); }},
      {"fill", [&](CImage& i) { i.FillRect(ImageRect{2, 1, 7, 4}, color); }},
      {"paste",
       [](CImage& i) {
         uint8_t* part = CImage(i.GetDib()).CropToDib(ImageRect{1, 1, 9, 5});
         i.Paste(2, 1, part);
         TrackedFree(part);
       }},
  };
  // clang-format on
  for (int32_t size : {1, 3, 5}) {
    for (int32_t factor : {1, 16, 7, -3, 0, -1, 40000}) {
      for (const std::vector<int32_t>* kernel : {&narrow, &wide}) {
        operations.emplace_back("convolve " + std::to_string(size) + " / " + std::to_string(factor),
                                [=](CImage& i) { i.Convolve(kernel->data(), size, factor, 20); });
      }
    }
  }
  const int32_t sizes[][2] = {{10, 3}, {70, 66}, {23, 17}};
  for (uint32_t bits : {1u, 4u, 8u, 24u}) {
    for (bool grey : {false, true}) {
      for (const auto& size : sizes) {
        CImage source;
        FillRandom(source, size[0], size[1], bits, random);
        if (grey) source.SetGreyRamp();  // the grey paths of Convolve and Negate
        for (const auto& operation : operations) {
          SCOPED_TRACE(operation.first + " at " + std::to_string(bits) + " bits " +
                       std::to_string(size[0]) + "x" + std::to_string(size[1]));
          auto results = FastAndPlain(source, [&](CImage& copy) { operation.second(copy); });
          ASSERT_EQ(results.second, results.first);
        }
      }
    }
  }
}

}  // namespace
}  // namespace vsm
