// The image slot: a copy of what was stored, normalised anew at each fetch, and from several
// threads at once every fetched block whole and one of the stored pictures.
#include <gtest/gtest.h>

#include <cstring>
#include <thread>
#include <vector>

#include "image/image.h"
#include "image/image_slot.h"
#include "support/tracked_heap.h"

namespace vsm {
namespace {

// A 3 x 2 picture of one grey, in a tracked block.
uint8_t* Picture(uint32_t grey) {
  CImage picture;
  picture.Create(3, 2, picture.GetInfo(), 24);
  for (int32_t i = 0; i < 6; ++i) picture.StorePixelColor(i % 3, i / 3, grey * 0x010101u);
  return picture.Detach();
}

TEST(ImageSlotConcurrencyTest, CopiesOnStoreAndNormalisesOnEachFetch) {
  uint8_t* source = Picture(9);
  StoreClipboardDib(source);
  std::memset(source + 40, 0, 24);  // the slot holds its own copy
  uint8_t* first = FetchClipboardDib();
  uint8_t* second = FetchClipboardDib();
  ASSERT_TRUE(first != nullptr && first != second);
  EXPECT_EQ(0, std::memcmp(first, second, 64));
  EXPECT_EQ(9, first[40]);
  TrackedFree(first);
  TrackedFree(second);
  for (const void* emptying : {static_cast<const void*>(nullptr), static_cast<const void*>("BM")}) {
    StoreClipboardDib(source);
    StoreClipboardDib(emptying);  // null, or a block the tracked heap doesn't know
    EXPECT_EQ(nullptr, FetchClipboardDib());
  }
  TrackedFree(source);
  SetClipboardFlag(7);
  EXPECT_EQ(7, GetClipboardFlag());
}

TEST(ImageSlotConcurrencyTest, StoresFetchesAndFlagsInterleaveSafely) {
  std::vector<std::thread> threads;
  for (uint32_t t = 1; t <= 4; ++t) {
    threads.emplace_back([t] {
      uint8_t* picture = Picture(t);
      for (int round = 0; round < 200; ++round) {
        if (round % 3 == 0) StoreClipboardDib(picture);
        SetClipboardFlag(static_cast<uint8_t>(t));
        EXPECT_LE(GetClipboardFlag(), 4);
        CImage fetched(FetchClipboardDib(), false, false);
        if (!fetched.IsValid()) continue;
        const ColorValue first = fetched.PixelColorAt(0, 0);
        EXPECT_TRUE(first >= 0x010101u && first <= 0x040404u && first % 0x010101u == 0);
        EXPECT_EQ(first, fetched.PixelColorAt(2, 1));
      }
      TrackedFree(picture);
    });
  }
  for (std::thread& thread : threads) thread.join();
  StoreClipboardDib(nullptr);
}

}  // namespace
}  // namespace vsm
