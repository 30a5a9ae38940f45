#include "support/event.h"

#include <dirent.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <cstdio>
#include <string>

#include "support/clock.h"

namespace vsm {
namespace {

// Every event name this process makes, generated or chosen here, starts so.
std::string OwnPrefix() { return "ce0" + std::to_string(getpid()) + "_"; }

int CountOwnSemaphores() {
  int count = 0;
  DIR* dir = opendir("/dev/shm");
  while (dirent* entry = dir != nullptr ? readdir(dir) : nullptr) {
    count += std::string(entry->d_name).rfind("sem." + OwnPrefix(), 0) == 0 ? 1 : 0;
  }
  if (dir != nullptr) closedir(dir);
  return count;
}

TEST(EventTest, GeneratedNamesCountUpAndCloseRemovesThem) {
  SetEventNameInstance(-7);
  EventHandle* first = CreateEvent(nullptr, 0, 0, nullptr);
  EventHandle* second = CreateEvent(nullptr, 1, 0, nullptr);
  unsigned a = 0, b = 0;
  int instance = 0;
  std::string format = OwnPrefix() + "%u_%d";
  ASSERT_EQ(std::sscanf(first->name, format.c_str(), &a, &instance), 2);
  ASSERT_EQ(std::sscanf(second->name, format.c_str(), &b, &instance), 2);
  EXPECT_EQ(b, a + 1);
  EXPECT_EQ(instance, -7);
  EXPECT_EQ(CountOwnSemaphores(), 2);
  CloseEvent(first);
  CloseEvent(second);
  EXPECT_EQ(CountOwnSemaphores(), 0);
}

TEST(EventTest, NameInUseFailsWithMessageAndOpenEventSharesIt) {
  std::string name = OwnPrefix() + std::string(40, 'x');
  EventHandle* created = CreateEvent(nullptr, 1, 0, name.c_str());
  ASSERT_NE(created, nullptr);
  name.resize(31);
  EXPECT_EQ(created->name, name);
  ::testing::internal::CaptureStdout();
  EXPECT_EQ(CreateEvent(nullptr, 0, 0, name.c_str()), nullptr);
  EXPECT_EQ(::testing::internal::GetCapturedStdout(),
            "CreateEvent sem_open failed 17 name " + name + "\n");
  EventHandle* opened = OpenEvent(0, 0, name.c_str());
  ASSERT_NE(opened, nullptr);
  EXPECT_EQ(opened->manualReset, 0);
  SetEvent(opened);
  EXPECT_EQ(WaitForEvent(created, 0), WAIT_TIMED_OUT);  // a zero wait neither sees nor takes it
  EXPECT_EQ(WaitForEvent(created, 1), 0u);
  CloseEvent(opened);
  CloseEvent(created);
  EXPECT_EQ(CountOwnSemaphores(), 0);
}

struct SignalCase {
  int manualReset, initialState, sets, resets;
  int passes;  // of five waits of 1 ms
};

class EventSignalTest : public ::testing::TestWithParam<SignalCase> {};

TEST_P(EventSignalTest, WaitsPassAsOftenAsSignalled) {
  const SignalCase& c = GetParam();
  EventHandle* event = CreateEvent(nullptr, c.manualReset, c.initialState, nullptr);
  for (int i = 0; i < c.sets; ++i) EXPECT_EQ(SetEvent(event), 1);
  for (int i = 0; i < c.resets; ++i) ResetEvent(event);
  int passes = 0;
  for (int i = 0; i < 5; ++i) passes += WaitForEvent(event, 1) == 0 ? 1 : 0;
  EXPECT_EQ(passes, c.passes);
  CloseEvent(event);
}

INSTANTIATE_TEST_SUITE_P(Cases, EventSignalTest,
                         ::testing::Values(SignalCase{0, 0, 0, 0, 0}, SignalCase{0, 1, 0, 0, 1},
                                           SignalCase{0, 0, 3, 0, 3}, SignalCase{0, 0, 2, 1, 1},
                                           SignalCase{1, 0, 1, 0, 5}, SignalCase{1, 0, 2, 1, 5},
                                           SignalCase{1, 1, 0, 1, 0}));

TEST(EventTest, BudgetWrapsIn32Bits) {
  EventHandle* event = CreateEvent(nullptr, 0, 0, nullptr);
  uint32_t start = GetTickMilliseconds();
  EXPECT_EQ(WaitForEvent(event, 5000), WAIT_TIMED_OUT);
  uint32_t elapsed = GetTickMilliseconds() - start;
  EXPECT_GE(elapsed, 600u);  // 705032704 ns
  EXPECT_LE(elapsed, 2000u);
  CloseEvent(event);
}

}  // namespace
}  // namespace vsm
