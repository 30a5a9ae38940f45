#include <gtest/gtest.h>

#include <thread>
#include <vector>

#include "support/tracked_heap.h"

namespace vsm {
namespace {

TEST(TrackedHeapConcurrencyTest, ThreadsAllocateMeasureAndFreeSideBySide) {
  std::vector<std::thread> threads;
  for (int t = 0; t < 8; ++t) {
    threads.emplace_back([t] {
      for (size_t i = 0, size = 1 + t; i < 300; ++i, size = 1 + (size * 7) % 200) {
        void* block = TrackedAlloc(0, size);
        EXPECT_EQ(TrackedSize(block), size);
        EXPECT_EQ(TrackedSize(&size), 0u);  // entered under the read side of the lock
        TrackedFree(TrackedRealloc(block, size * 2, 0));
      }
    });
  }
  for (std::thread& thread : threads) thread.join();
}

}  // namespace
}  // namespace vsm
