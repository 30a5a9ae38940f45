#include "support/rw_lock.h"

#include <gtest/gtest.h>

#include <atomic>
#include <functional>
#include <stdexcept>
#include <thread>
#include <vector>

#include "support/clock.h"

namespace vsm {
namespace {

// Polls `condition` for up to two seconds.
bool Eventually(const std::function<bool()>& condition) {
  for (int i = 0; i < 2000 && !condition(); ++i) SleepMilliseconds(1);
  return condition();
}

int OnOtherThread(const std::function<int()>& body) {
  int result = -1;
  std::thread([&] { result = body(); }).join();
  return result;
}

void ExpectIdle(const CRWLock& lock) {
  EXPECT_EQ(lock.writers() + lock.readers() + lock.readerWaiters(), 0u);
  EXPECT_EQ(lock.threadCount(), 0);
  EXPECT_FALSE(lock.HasReaderEvent());
  EXPECT_FALSE(lock.HasWriterEvent());
}

TEST(RWLockTest, WriterReadsAndWritesAgainThenStaysOnAsPlainReader) {
  CRWLock lock;
  ASSERT_EQ(lock.WriteLock(0), 1);
  ASSERT_EQ(lock.ReadLock(0), 1);
  ASSERT_EQ(lock.WriteLock(0), 1);
  uint32_t read = 0, write = 0;
  EXPECT_EQ(lock.GetThreadLockCounts(&read, &write), 2u);
  EXPECT_EQ(read, 1u);
  EXPECT_EQ(lock.GetThreadLockCounts(nullptr, nullptr), 0x20001u);
  EXPECT_EQ(lock.readers(), 0u);  // the writer's read depth is not a lock-level reader
  lock.WriteUnlock();
  lock.WriteUnlock();
  EXPECT_EQ(lock.writers(), 0u);
  EXPECT_EQ(lock.readers(), 1u);
  EXPECT_EQ(OnOtherThread([&] {
              int taken = lock.ReadLock(0);
              lock.ReadUnlock();
              return taken;
            }),
            1);
  EXPECT_EQ(OnOtherThread([&] { return lock.WriteLock(0); }), 0);
  lock.ReadUnlock();
  ExpectIdle(lock);
}

TEST(RWLockTest, OnlyReaderWritesAtOnceSecondReaderMakesItWait) {
  CRWLock lock;
  lock.ReadLock(0);
  ASSERT_EQ(lock.WriteLock(0), 1);
  EXPECT_EQ(lock.readers(), 0u);
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
  ExpectIdle(lock);
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
  EXPECT_EQ(OnOtherThread([&] { return lock.ReadLock(0); }), 0);
  EXPECT_EQ(OnOtherThread([&] { return lock.ReadLock(20); }), 0);
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
  ExpectIdle(lock);
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
  EXPECT_EQ(lock.readers(), 1u);
  EXPECT_EQ(lock.GetThreadLockCounts(nullptr, nullptr), 2u);
  lock.UnlockAll();
  ExpectIdle(lock);
  lock.WriteLock(0);
  lock.WriteLock(0);
  lock.ReadLock(0);
  lock.UnlockAll();
  ExpectIdle(lock);
  try {
    ScopedWriteLock write(lock);
    ScopedReadLock read(lock);
    EXPECT_EQ(lock.GetThreadLockCounts(nullptr, nullptr), 0x10001u);
    throw std::runtime_error("the guards release as it passes");
  } catch (const std::runtime_error&) {
  }
  ExpectIdle(lock);
}

TEST(RWLockTest, RecordArrayGrowsByTheRuleAndNeverShrinks) {
  CRWLock lock;
  std::atomic<int> holding{0};
  std::atomic<bool> release{false};
  std::vector<std::thread> readers;
  for (int i = 1; i <= 21; ++i) {
    readers.emplace_back([&] {
      lock.ReadLock(0);
      ++holding;
      while (!release) SleepMilliseconds(1);
      lock.ReadUnlock();
    });
    ASSERT_TRUE(Eventually([&] { return holding == i; }));
    // Exactly 1 at first, then steps of 4 (size / 8 is below the smallest step): 5, 9, ... 21.
    EXPECT_EQ(lock.threadCapacity(), i == 1 ? 1 : 1 + (i + 2) / 4 * 4) << i << " readers";
  }
  release = true;
  for (std::thread& reader : readers) reader.join();
  ExpectIdle(lock);
  EXPECT_EQ(lock.threadCapacity(), 21);
}

TEST(RWLockTest, ThreadBlindFaceUpgradesPastACompetingReaderAndDowngrades) {
  CRWLock lock;
  ASSERT_EQ(lock.AcquireRead(0), 1);
  ASSERT_EQ(lock.AcquireRead(0), 1);
  EXPECT_EQ(lock.threadCount(), 0);
  EXPECT_EQ(lock.AcquireWrite(0), 0);
  EXPECT_EQ(lock.Upgrade(0), 0);
  std::thread upgrader([&] { EXPECT_EQ(lock.Upgrade(INFINITE_WAIT), 1); });
  ASSERT_TRUE(Eventually([&] { return lock.writers() == 1; }));
  lock.ReleaseRead();  // the competing reader leaves
  upgrader.join();
  EXPECT_EQ(lock.readers(), 0u);
  EXPECT_EQ(lock.AcquireRead(0), 0);
  lock.Downgrade();
  EXPECT_EQ(lock.writers(), 0u);
  EXPECT_EQ(lock.readers(), 1u);
  lock.ReleaseRead();
  ExpectIdle(lock);
}

}  // namespace
}  // namespace vsm
