// CRWLock and the events, semaphores and clocks it stands on.
#include "support/rw_lock.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <atomic>
#include <cstdio>
#include <filesystem>
#include <functional>
#include <string>
#include <thread>
#include <vector>

#include "support/clock.h"
#include "support/event.h"
#include "support/semaphore.h"

namespace vsm {
namespace {

// Polls `condition` for up to two seconds.
bool Eventually(const std::function<bool()>& condition) {
  for (int i = 0; i < 2000 && !condition(); ++i) SleepMilliseconds(1);
  return condition();
}

// What another thread gets from ReadLock or WriteLock; it lets go again of what it took.
int OnOtherThread(CRWLock& lock, bool write, uint32_t timeoutMs = 0) {
  int taken = -1;
  std::thread([&] {
    taken = write ? lock.WriteLock(timeoutMs) : lock.ReadLock(timeoutMs);
    if (taken) lock.UnlockAll();
  }).join();
  return taken;
}

// Writers, readers, reader waiters, thread records, and the events that exist (R, W).
std::string State(const CRWLock& lock) {
  return "w" + std::to_string(lock.writers()) + " r" + std::to_string(lock.readers()) + " q" +
         std::to_string(lock.readerWaiters()) + " t" + std::to_string(lock.threadCount()) + " " +
         (lock.HasReaderEvent() ? "R" : "-") + (lock.HasWriterEvent() ? "W" : "-");
}
constexpr char kIdle[] = "w0 r0 q0 t0 --";

std::string Pid() { return std::to_string(getpid()); }

// Counts this process's named semaphores of one kind ("ce0" events, "Sem" semaphores) in
// /dev/shm; with `unlink` also removes them, since CloseSemaphore keeps the name and repeated
// runs must leave nothing behind.
int OwnSemaphores(const std::string& kind, bool unlink = false) {
  int count = 0;
  for (const auto& entry : std::filesystem::directory_iterator("/dev/shm")) {
    std::string name = entry.path().filename();
    if (name.rfind("sem." + kind + Pid() + "_", 0) != 0) continue;
    if (unlink) sem_unlink(name.c_str() + 4);
    ++count;
  }
  return count;
}

TEST(RWLockTest, WriterReadsAndWritesAgainThenStaysOnAsPlainReader) {
  CRWLock lock;
  ASSERT_EQ(lock.WriteLock(0), 1);
  ASSERT_EQ(lock.ReadLock(0), 1);
  ASSERT_EQ(lock.WriteLock(0), 1);
  EXPECT_EQ(lock.GetThreadLockCounts(nullptr, nullptr), 0x20001u);
  EXPECT_EQ(State(lock), "w1 r0 q0 t1 --");  // the writer's read depth is no lock-level reader
  lock.WriteUnlock();
  lock.WriteUnlock();
  EXPECT_EQ(State(lock), "w0 r1 q0 t1 --");
  EXPECT_EQ(OnOtherThread(lock, false), 1);
  EXPECT_EQ(OnOtherThread(lock, true), 0);
  lock.ReadUnlock();
  EXPECT_EQ(State(lock), kIdle);
}

TEST(RWLockTest, OnlyReaderWritesAtOnceSecondReaderMakesItWait) {
  CRWLock lock;
  lock.ReadLock(0);
  ASSERT_EQ(lock.WriteLock(0), 1);
  EXPECT_EQ(State(lock), "w1 r0 q0 t1 --");
  lock.WriteUnlock();
  std::atomic<bool> gaveUp{false}, writing{false};
  std::thread other([&] {
    lock.ReadLock(0);
    uint32_t start = GetTickMilliseconds();
    EXPECT_EQ(lock.WriteLock(50), 0);  // gives up and stays a reader
    EXPECT_GE(GetTickMilliseconds() - start, 40u);
    EXPECT_EQ(lock.GetThreadLockCounts(nullptr, nullptr), 1u);
    gaveUp = true;
    EXPECT_EQ(lock.WriteLock(INFINITE_WAIT), 1);
    writing = true;
    lock.UnlockAll();
  });
  ASSERT_TRUE(Eventually([&] { return gaveUp && lock.writers() == 1; }));
  EXPECT_EQ(lock.readers(), 1u);
  SleepMilliseconds(20);
  EXPECT_FALSE(writing);
  lock.ReadUnlock();
  other.join();
  EXPECT_TRUE(writing);
  EXPECT_EQ(State(lock), kIdle);
}

TEST(RWLockTest, WaitingWriterKeepsNewReadersOutAndEventsLiveOnlyWhileWaited) {
  CRWLock lock;
  lock.ReadLock(0);
  std::atomic<bool> release{false};
  std::thread writer([&] {
    EXPECT_EQ(lock.WriteLock(INFINITE_WAIT), 1);
    while (!release) SleepMilliseconds(1);
    lock.WriteUnlock();
  });
  ASSERT_TRUE(Eventually([&] { return lock.HasWriterEvent(); }));
  EXPECT_EQ(OnOtherThread(lock, false), 0);
  EXPECT_EQ(OnOtherThread(lock, false, 20), 0);
  EXPECT_FALSE(lock.HasReaderEvent());
  lock.ReadUnlock();  // the writer gets in
  std::thread reader([&] {
    EXPECT_EQ(lock.ReadLock(INFINITE_WAIT), 1);
    lock.ReadUnlock();
  });
  ASSERT_TRUE(Eventually([&] { return lock.readerWaiters() == 1; }));
  EXPECT_TRUE(lock.HasReaderEvent());
  release = true;
  writer.join();
  reader.join();
  EXPECT_EQ(State(lock), kIdle);
}

TEST(RWLockTest, UnlocksByHoldersOfNothingChangeNothingOthersDropHolds) {
  CRWLock lock;
  lock.ReadLock(0);
  lock.ReadLock(0);
  std::thread([&] {
    lock.ReadUnlock();
    lock.WriteUnlock();
    lock.UnlockAll();
  }).join();
  EXPECT_EQ(State(lock), "w0 r1 q0 t1 --");
  EXPECT_EQ(lock.GetThreadLockCounts(nullptr, nullptr), 2u);
  EXPECT_EQ(lock.WriteLock(0), 1);  // the only reader
  EXPECT_EQ(lock.WriteLock(0), 1);
  lock.UnlockAll();  // every hold at once
  EXPECT_EQ(State(lock), kIdle);
  {
    ScopedWriteLock write(lock);
    ScopedReadLock read(lock);
    EXPECT_EQ(lock.GetThreadLockCounts(nullptr, nullptr), 0x10001u);
  }
  EXPECT_EQ(State(lock), kIdle);
}

TEST(EventTest, GeneratedNamesCountUpCarryTheInstanceAndCloseRemovesThem) {
  SetEventNameInstance(-7);
  EventHandle* first = CreateEvent(nullptr, 0, 0, nullptr);
  EventHandle* second = CreateEvent(nullptr, 1, 0, nullptr);
  char semaphore[kSemaphoreNameSize];
  GenerateSemaphoreName(semaphore);
  unsigned n = 0;
  ASSERT_EQ(std::sscanf(first->name, ("ce0" + Pid() + "_%u").c_str(), &n), 1);
  EXPECT_EQ(std::string(first->name), "ce0" + Pid() + "_" + std::to_string(n) + "_-7");
  EXPECT_EQ(std::string(second->name), "ce0" + Pid() + "_" + std::to_string(n + 1) + "_-7");
  EXPECT_EQ(std::string(semaphore).substr(std::string(semaphore).rfind('_')), "_-7");
  EXPECT_EQ(OwnSemaphores("ce0"), 2);
  CloseEvent(first);
  CloseEvent(second);
  EXPECT_EQ(OwnSemaphores("ce0"), 0);
}

TEST(EventTest, NameInUseFailsWithMessageAndZeroWaitsLeaveSignalsAlone) {
  std::string name = "ce0" + Pid() + "_" + std::string(40, 'x');
  EventHandle* created = CreateEvent(nullptr, 0, 0, name.c_str());
  ASSERT_NE(created, nullptr);
  name.resize(31);
  EXPECT_EQ(created->name, name);
  ::testing::internal::CaptureStdout();
  EXPECT_EQ(CreateEvent(nullptr, 0, 0, name.c_str()), nullptr);
  EXPECT_EQ(::testing::internal::GetCapturedStdout(),
            "CreateEvent sem_open failed 17 name " + name + "\n");
  SetEvent(created);
  EXPECT_EQ(WaitForEvent(created, 0), WAIT_TIMED_OUT);  // a zero wait neither sees nor takes it
  EXPECT_EQ(WaitForEvent(created, 1), 0u);
  CloseEvent(created);
  EXPECT_EQ(OwnSemaphores("ce0"), 0);
}

TEST(EventTest, WaitsPassAsOftenAsSignalledWithinTheirWrappedBudget) {
  // manualReset, initialState, SetEvent calls, ResetEvent calls, and how many of five 1 ms waits
  // pass: posts add up, a reset takes one, a manual-reset event lets every waiter through.
  const int rows[][5] = {{0, 0, 0, 0, 0}, {0, 1, 0, 0, 1}, {0, 0, 3, 0, 3}, {0, 0, 2, 1, 1},
                         {1, 0, 1, 0, 5}, {1, 0, 2, 1, 5}, {1, 1, 0, 1, 0}};
  for (const auto& row : rows) {
    EventHandle* event = CreateEvent(nullptr, row[0], row[1], nullptr);
    for (int i = 0; i < row[2]; ++i) EXPECT_EQ(SetEvent(event), 1);
    for (int i = 0; i < row[3]; ++i) ResetEvent(event);
    int passes = 0;
    for (int i = 0; i < 5; ++i) passes += WaitForEvent(event, 1) == 0 ? 1 : 0;
    EXPECT_EQ(passes, row[4]) << "row " << &row - rows;
    CloseEvent(event);
  }
  // The budget wraps in 32 bits: 5000 ms are 705032704 ns.
  EventHandle* event = CreateEvent(nullptr, 0, 0, nullptr);
  uint32_t start = GetTickMilliseconds();
  EXPECT_EQ(WaitForEvent(event, 5000), WAIT_TIMED_OUT);
  uint32_t elapsed = GetTickMilliseconds() - start;
  EXPECT_TRUE(elapsed >= 600 && elapsed <= 2000) << elapsed;
  CloseEvent(event);
}

TEST(SemaphoreTest, CountStartsAtZeroFollowsPostsAndWaitsAndTimeoutsLastTheirTime) {
  SemaphoreHandle* semaphore = CreateSemaphore(nullptr, 2, 10, nullptr);
  ASSERT_NE(semaphore, nullptr);
  EXPECT_EQ(WaitForSemaphore(semaphore, 0), 0u);
  EXPECT_EQ(WaitForSemaphore(semaphore, 0), 0u);
  EXPECT_EQ(WaitForSemaphore(semaphore, 0), 0xFFFFFFFFu);
  int32_t previous = 99;
  EXPECT_EQ(ReleaseSemaphore(semaphore, 5, &previous), 1);
  EXPECT_EQ(previous, -2);
  EXPECT_EQ(WaitForSemaphore(semaphore, INFINITE_WAIT), 0u);
  uint32_t start = GetTickMilliseconds();
  EXPECT_EQ(WaitForSemaphore(semaphore, 17), 0xFFFFFFFFu);  // 2 ms steps, the last one cut short
  uint32_t elapsed = GetTickMilliseconds() - start;
  EXPECT_TRUE(elapsed >= 17 && elapsed <= 517) << elapsed;
  EXPECT_EQ(semaphore->count.load(), -2);
  CloseSemaphore(semaphore);
  EXPECT_EQ(OwnSemaphores("Sem", true), 1);
}

TEST(ClockTest, LocalSystemTimeFollowsTheCalendar) {
  LocalSystemTime now = GetLocalSystemTime(), expected = {};
  SystemTimeFromUnixTime(&expected, time(nullptr));
  EXPECT_EQ(now.year * 100 + now.month, expected.year * 100 + expected.month);
  EXPECT_TRUE(now.dayOfWeek == 0 && now.milliseconds < 1000);
}

}  // namespace
}  // namespace vsm
