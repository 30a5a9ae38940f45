// Cancel from another thread: a byte store that the running operation reads once per row.
#include <gtest/gtest.h>

#include <atomic>
#include <thread>

#include "image/image.h"

namespace vsm {
namespace {

// Holds the operation in its second row's progress call until the other thread has cancelled.
class HeldImage : public CImage {
 public:
  void OnProgress(uint32_t percent) override {
    if (percent == 0) return;
    reached.store(true);
    while (!released.load()) std::this_thread::yield();
  }
  std::atomic<bool> reached{false}, released{false};
};

TEST(ImageConcurrencyTest, ACancelFromAnotherThreadStopsTheOperationAtItsNextRow) {
  HeldImage image;
  image.Create(64, 64, image.GetInfo(), 24);
  std::thread canceller([&image] {
    while (!image.reached.load()) std::this_thread::yield();
    image.Cancel();
    image.released.store(true);
  });
  image.ResampleSampled(32, 10, 2, 5, false);
  canceller.join();
  EXPECT_EQ(kImageCancelled, image.GetLastError());
  EXPECT_EQ(64, image.GetInfo()->width);  // the old picture stays
}

}  // namespace
}  // namespace vsm
