// CRWLock and the events, semaphores, threads and clocks it stands on.
#include "support/rw_lock.h"

#include <gtest/gtest.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <string>
#include <thread>
#include <vector>

#include "support/clock.h"
#include "support/event.h"
#include "support/semaphore.h"
#include "support/thread_start.h"

namespace vsm {
namespace {

// Polls `condition` for up to two seconds.
template <typename Condition>
bool Eventually(Condition condition) {
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
    count += name.rfind("sem." + kind + Pid() + "_", 0) == 0 && (!unlink || !sem_unlink(&name[4]));
  }
  return count;
}

TEST(RWLockTest, WriterReadsAndWritesAgainStaysOnAsPlainReaderWhoWritesAtOnceUnlessAnotherReads) {
  CRWLock lock;
  ASSERT_TRUE(lock.WriteLock(0) && lock.ReadLock(0) && lock.WriteLock(0));
  EXPECT_EQ(lock.GetThreadLockCounts(nullptr, nullptr), 0x20001u);
  EXPECT_EQ(State(lock), "w1 r0 q0 t1 --");  // the writer's read depth is no lock-level reader
  for (int i = 0; i < 2; ++i) lock.WriteUnlock();
  EXPECT_EQ(State(lock), "w0 r1 q0 t1 --");
  EXPECT_EQ(OnOtherThread(lock, false), 1);
  EXPECT_EQ(OnOtherThread(lock, true), 0);
  ASSERT_EQ(lock.WriteLock(0), 1);  // the only reader
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
  ASSERT_TRUE(Eventually([&] { return gaveUp && State(lock) == "w1 r1 q0 t2 -W"; }));
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
  EXPECT_EQ(OnOtherThread(lock, false) + OnOtherThread(lock, false, 20), 0);
  EXPECT_EQ(State(lock), "w1 r1 q0 t1 -W");
  lock.ReadUnlock();  // the writer gets in
  std::thread reader([&] { EXPECT_TRUE(ScopedReadLock(lock).locked()); });
  ASSERT_TRUE(Eventually([&] { return State(lock) == "w1 r0 q1 t1 RW"; }));
  release = true;
  writer.join();
  reader.join();
  EXPECT_EQ(State(lock), kIdle);
}

TEST(RWLockTest, UnlocksByHoldersOfNothingChangeNothingAndTheThreadBlindFaceKeepsNoRecords) {
  CRWLock lock;
  ASSERT_TRUE(lock.ReadLock(0) && lock.ReadLock(0));
  std::thread([&] {
    lock.ReadUnlock();
    lock.WriteUnlock();
    lock.UnlockAll();
  }).join();
  EXPECT_EQ(State(lock), "w0 r1 q0 t1 --");
  EXPECT_EQ(lock.GetThreadLockCounts(nullptr, nullptr), 2u);
  EXPECT_TRUE(lock.WriteLock(0) && lock.WriteLock(0));  // the only reader
  lock.UnlockAll();                                     // every hold at once
  EXPECT_EQ(State(lock), kIdle);
  {
    ScopedWriteLock write(lock);
    ScopedReadLock read(lock);
    EXPECT_EQ(lock.GetThreadLockCounts(nullptr, nullptr), 0x10001u);
  }
  EXPECT_EQ(State(lock), kIdle);
  ASSERT_EQ(lock.AcquireWrite(0), 1);
  EXPECT_EQ(lock.AcquireRead(0) + lock.AcquireWrite(0), 0);  // held: zero timeouts fail
  lock.Downgrade();
  ASSERT_EQ(lock.AcquireRead(0), 1);
  EXPECT_EQ(State(lock), "w0 r2 q0 t0 --");
  EXPECT_EQ(lock.AcquireWrite(0), 0);
  for (int i = 0; i < 2; ++i) lock.ReleaseRead();
  ASSERT_EQ(lock.AcquireWrite(0), 1);
  lock.ReleaseWrite();
  EXPECT_EQ(State(lock), kIdle);
}

TEST(RWLockTest, RecordArrayStartsAtOneThenGrowsByAnEighthButAtLeastFourAndNeverShrinks) {
  CRWLock lock;
  std::atomic<bool> release{false};
  std::vector<std::thread> readers;
  std::string grown;
  for (int i = 1, last = 0; i <= 52; ++i) {
    readers.emplace_back([&] {
      for (ScopedReadLock read(lock); !release;) SleepMilliseconds(1);
    });
    EXPECT_TRUE(Eventually([&] { return lock.threadCount() == i; }));
    if (int now = lock.threadCapacity(); now != last) grown += " " + std::to_string(last = now);
  }
  release = true;
  for (std::thread& reader : readers) reader.join();
  EXPECT_EQ(grown + ", then " + std::to_string(lock.threadCapacity()) + " " + State(lock),
            " 1 5 9 13 17 21 25 29 33 37 41 46 51 57, then 57 " + std::string(kIdle));
}

TEST(EventTest, NamesAreTakenOnceOpenEventSharesThemWaitsPassAsOftenAsSignalledCloseUnlinks) {
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
  std::string name = "ce0" + Pid() + "_" + std::string(40, 'x');
  EventHandle* created = CreateEvent(nullptr, 1, 0, name.c_str());
  ASSERT_NE(created, nullptr);
  name.resize(31);
  EXPECT_EQ(created->name, name);
  ::testing::internal::CaptureStdout();
  EXPECT_EQ(CreateEvent(nullptr, 0, 0, name.c_str()), nullptr);
  EXPECT_EQ(OpenEvent(0, 0, ("ce0" + Pid() + "_unknown").c_str()), nullptr);
  EXPECT_EQ(::testing::internal::GetCapturedStdout(),
            "CreateEvent sem_open failed 17 name " + name + "\nOpenEvent sem_open failed 2\n");
  EventHandle* opened = OpenEvent(0, 0, name.c_str());
  ASSERT_NE(opened, nullptr);
  EXPECT_EQ(opened->manualReset, 0);
  SetEvent(opened);
  EXPECT_EQ(WaitForEvent(created, 0), WAIT_TIMED_OUT);  // a zero wait neither sees nor takes it
  EXPECT_EQ(WaitForEvent(created, 1), 0u);
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
  for (EventHandle* e : {first, second, opened, created, event}) CloseEvent(e);
  EXPECT_EQ(OwnSemaphores("ce0"), 0);
}

TEST(SemaphoreThreadAndClockTest, CountsFollowPostsStopCancelsUnlessEndlessMillisecondsStay) {
  SemaphoreHandle* semaphore = CreateSemaphore(nullptr, 2, 10, nullptr);
  ASSERT_NE(semaphore, nullptr);
  for (uint32_t result : {0u, 0u, 0xFFFFFFFFu}) EXPECT_EQ(WaitForSemaphore(semaphore, 0), result);
  int32_t previous = 99;
  EXPECT_TRUE(ReleaseSemaphore(semaphore, 5, &previous) == 1 && previous == -2) << previous;
  EXPECT_EQ(WaitForSemaphore(semaphore, INFINITE_WAIT), 0u);
  uint32_t start = GetTickMilliseconds();
  EXPECT_EQ(WaitForSemaphore(semaphore, 17), 0xFFFFFFFFu);  // 2 ms steps, the last one cut short
  uint32_t elapsed = GetTickMilliseconds() - start;
  EXPECT_TRUE(elapsed >= 17 && elapsed <= 517) << elapsed;
  EXPECT_EQ(semaphore->count.load(), -2);
  CloseSemaphore(semaphore);
  EXPECT_EQ(OwnSemaphores("Sem", true), 1);
  ThreadRoutine forever = [](void*) -> void* { return pause(), nullptr; };  // cancelled in pause
  pthread_t given, self = pthread_self();
  pthread_t* own = StartThread(nullptr, 0, forever, nullptr, 0, nullptr, nullptr);
  ASSERT_EQ(StartThread(nullptr, 0, forever, nullptr, 0, nullptr, &given), &given);
  // A finite timeout cancels, then joins; an endless one only joins, and gives what that gave.
  EXPECT_EQ(StopThread(own, 0), 0);
  EXPECT_EQ(StopThread(&given, 5), 0);
  EXPECT_EQ(StopThread(&self, INFINITE_WAIT), EDEADLK);
  EXPECT_EQ(StopThread(nullptr, INFINITE_WAIT), -1);
  std::free(own);
  setenv("TZ", "UTC", 1);
  tzset();
  LocalSystemTime now = GetLocalSystemTime(), then = {1, 2, 5, 4, 5, 6, 7, 777};
  SystemTimeFromUnixTime(&then, time(nullptr));
  EXPECT_TRUE(now.year == then.year && now.month == then.month && now.dayOfWeek == 0 &&
              now.milliseconds < 1000);
  SystemTimeFromUnixTime(&then, 951868799);  // the last second of a leap day
  const LocalSystemTime leap = {2000, 2, 0, 29, 23, 59, 59, 777};
  EXPECT_EQ(std::memcmp(&then, &leap, sizeof(leap)), 0);
}

// The number is kept per thread; a child forked from any thread has its own, and a lock that
// the child takes and leaves knows it by that number.
TEST(SemaphoreThreadAndClockTest, ThreadNumbersAreEachThreadsOwnAlsoInAForkedChild) {
  auto own = [] { return GetCurrentThreadNumber() == syscall(SYS_gettid); };
  auto forkAndCheck = [&] {
    ASSERT_TRUE(own() && own());
    pid_t child = fork();
    if (child == 0) {
      CRWLock lock;
      bool ok = own() && lock.WriteLock(0) && lock.ReadLock(0) && lock.threadCount() == 1;
      lock.UnlockAll();
      _exit(ok && lock.threadCount() == 0 ? 0 : 1);
    }
    int status = -1;
    ASSERT_EQ(waitpid(child, &status, 0), child);
    EXPECT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 0);
  };
  forkAndCheck();
  std::thread(forkAndCheck).join();
  EXPECT_TRUE(own());
}

}  // namespace
}  // namespace vsm
