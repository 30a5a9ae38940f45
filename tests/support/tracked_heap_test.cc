#include "support/tracked_heap.h"

#include <gtest/gtest.h>

#include <cstdlib>

namespace vsm {
namespace {

TEST(TrackedHeapTest, BlocksRememberTheirSizeUnknownOnesGiveZero) {
  auto* block = static_cast<unsigned char*>(TrackedAlloc(kTrackedZeroFill, 24));
  EXPECT_EQ(TrackedSize(block), 24u);
  for (int i = 0; i < 24; ++i) EXPECT_EQ(block[i], 0) << i;
  TrackedFree(block);
  void* outside = std::malloc(8);
  EXPECT_EQ(TrackedSize(outside), 0u);
  TrackedFree(outside);  // forgets the entry TrackedSize made, and frees
}

TEST(TrackedHeapTest, ResizeKeepsNoSizeForAnUnmovedBlock) {
  void* block = TrackedAlloc(0, 4096);
  void* shrunk = TrackedRealloc(block, 16, 0);
  ASSERT_NE(shrunk, nullptr);
  EXPECT_EQ(TrackedSize(shrunk), shrunk == block ? 0u : 16u);
  void* grown = TrackedRealloc(shrunk, 1 << 20, 0);
  EXPECT_EQ(TrackedSize(grown), grown == shrunk ? 0u : uint64_t{1} << 20);
  void* emptied = TrackedRealloc(grown, 0, 0);
  ASSERT_NE(emptied, nullptr);  // never freed behind the caller's back
  TrackedFree(emptied);
}

}  // namespace
}  // namespace vsm
