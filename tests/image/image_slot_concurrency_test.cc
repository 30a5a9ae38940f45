// The image slot from several threads at once: every fetched block is whole, one of the stored
// pictures, and nothing leaks or races.
#include <gtest/gtest.h>

#include <cstring>
#include <thread>
#include <vector>

#include "image/image.h"
#include "image/image_slot.h"
#include "support/tracked_heap.h"

namespace vsm {
namespace {

TEST(ImageSlotConcurrencyTest, StoresFetchesAndFlagsInterleaveSafely) {
  std::vector<std::thread> threads;
  for (int t = 0; t < 4; ++t) {
    threads.emplace_back([t] {
      CImage picture;
      picture.Create(3, 2, picture.GetInfo(), 24);
      for (int32_t i = 0; i < 6; ++i) picture.StorePixelColor(i % 3, i / 3, 0x010101u * (t + 1));
      for (int round = 0; round < 200; ++round) {
        if (round % 3 == 0) StoreClipboardDib(picture.GetDib());
        SetClipboardFlag(static_cast<uint8_t>(t));
        EXPECT_LT(GetClipboardFlag(), 4);
        uint8_t* block = FetchClipboardDib();
        if (block == nullptr) continue;
        CImage fetched(block, false, false);
        const ColorValue first = fetched.PixelColorAt(0, 0);
        EXPECT_TRUE(first >= 0x010101u && first <= 0x040404u && first % 0x010101u == 0);
        EXPECT_EQ(first, fetched.PixelColorAt(2, 1));
      }
    });
  }
  for (std::thread& thread : threads) thread.join();
  StoreClipboardDib(nullptr);
}

}  // namespace
}  // namespace vsm
