#include "support/semaphore.h"

#include <dirent.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <string>

#include "support/clock.h"
#include "support/event.h"

namespace vsm {
namespace {

std::string OwnPrefix() { return "Sem" + std::to_string(getpid()) + "_"; }

// CloseSemaphore keeps the name; tests remove theirs so that runs leave nothing behind.
int UnlinkOwnSemaphores() {
  int count = 0;
  DIR* dir = opendir("/dev/shm");
  while (dirent* entry = dir != nullptr ? readdir(dir) : nullptr) {
    std::string name = entry->d_name;
    if (name.rfind("sem." + OwnPrefix(), 0) != 0) continue;
    sem_unlink(name.substr(4).c_str());
    ++count;
  }
  if (dir != nullptr) closedir(dir);
  return count;
}

TEST(SemaphoreTest, CountStartsAtZeroAndFollowsPostsAndWaits) {
  SetEventNameInstance(42);
  SemaphoreHandle* semaphore = CreateSemaphore(nullptr, 2, 10, nullptr);
  ASSERT_NE(semaphore, nullptr);
  EXPECT_EQ(WaitForSemaphore(semaphore, 0), 0u);
  EXPECT_EQ(WaitForSemaphore(semaphore, 0), 0u);
  EXPECT_EQ(WaitForSemaphore(semaphore, 0), 0xFFFFFFFFu);
  int32_t previous = 99;
  EXPECT_EQ(ReleaseSemaphore(semaphore, 5, &previous), 1);
  EXPECT_EQ(previous, -2);
  EXPECT_EQ(WaitForSemaphore(semaphore, INFINITE_WAIT), 0u);
  EXPECT_EQ(semaphore->count.load(), -2);
  CloseSemaphore(semaphore);
  char next[kSemaphoreNameSize];
  GenerateSemaphoreName(next);
  EXPECT_EQ(UnlinkOwnSemaphores(), 1);
  EXPECT_EQ(std::string(next).substr(std::string(next).rfind('_')), "_42");
}

class SemaphoreTimeoutTest : public ::testing::TestWithParam<uint32_t> {};

// 40 is a multiple of its 5 ms step; 17 overshoots with 2 ms steps and sleeps only the rest.
TEST_P(SemaphoreTimeoutTest, WaitLastsAboutTheTimeout) {
  SemaphoreHandle* semaphore = CreateSemaphore(nullptr, 0, 1, nullptr);
  uint32_t start = GetTickMilliseconds();
  EXPECT_EQ(WaitForSemaphore(semaphore, GetParam()), 0xFFFFFFFFu);
  uint32_t elapsed = GetTickMilliseconds() - start;
  EXPECT_GE(elapsed, GetParam());
  EXPECT_LE(elapsed, GetParam() + 500);
  EXPECT_EQ(semaphore->count.load(), 0);
  CloseSemaphore(semaphore);
  UnlinkOwnSemaphores();
}

INSTANTIATE_TEST_SUITE_P(Timeouts, SemaphoreTimeoutTest, ::testing::Values(1u, 17u, 40u));

}  // namespace
}  // namespace vsm
