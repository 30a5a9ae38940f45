#include "support/thread_start.h"

#include <gtest/gtest.h>

#include <atomic>
#include <cstdlib>

#include "support/clock.h"
#include "support/event.h"

namespace vsm {
namespace {

std::atomic<int> runs{0};

void* SleepUntilCancelled(void*) {
  ++runs;
  for (;;) SleepMilliseconds(5);  // usleep is a cancellation point
}

TEST(ThreadStartTest, StartsOnOwnOrGivenHandleAndStops) {
  pthread_t* allocated = StartThread(nullptr, 0, SleepUntilCancelled, nullptr, 0, nullptr, nullptr);
  ASSERT_NE(allocated, nullptr);
  EXPECT_EQ(StopThread(allocated, 0), 0);  // a finite timeout cancels before joining
  std::free(allocated);
  pthread_t given;
  EXPECT_EQ(StartThread(
                nullptr, 0, [](void*) -> void* { return nullptr; }, nullptr, 0, nullptr, &given),
            &given);
  EXPECT_EQ(StopThread(&given, INFINITE_WAIT), 0);
  EXPECT_EQ(runs.load(), 1);
  EXPECT_EQ(StopThread(nullptr, INFINITE_WAIT), -1);
}

}  // namespace
}  // namespace vsm
