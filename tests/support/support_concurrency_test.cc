// The support kit's shared state under many threads at once; meaningful under ThreadSanitizer.
#include <gtest/gtest.h>

#include <atomic>
#include <thread>
#include <vector>

#include "support/clock.h"
#include "support/rw_lock.h"
#include "support/tracked_heap.h"

namespace vsm {
namespace {

TEST(RWLockConcurrencyTest, ReadersNeverSeeAWriterAtWork) {
  CRWLock lock;
  // Plain on purpose: writers move them in steps, so a reader that sees them differ, or a writer
  // that finds another inside, means the lock let someone in; without the lock ThreadSanitizer
  // reports them too.
  long first = 0, second = 0;
  int writersInside = 0;
  auto write = [&] {
    EXPECT_EQ(writersInside++, 0);
    ++first;
    ++second;
    --writersInside;
  };
  auto read = [&] { EXPECT_TRUE(first == second && writersInside == 0); };
  std::atomic<long> writes{0};
  std::vector<std::thread> threads;
  const uint32_t start = GetTickMilliseconds();
  for (int t = 0; t < 8; ++t) {
    threads.emplace_back([&, t] {
      for (int i = 0; GetTickMilliseconds() - start < 2000; ++i) {
        int kind = (i + t) % 4;
        if (kind < 2) {  // reader, sometimes nested
          ScopedReadLock outer(lock);
          if (kind == 0) lock.ReadLock(INFINITE_WAIT);
          read();
          if (kind == 0) lock.ReadUnlock();
          continue;
        }
        if (kind == 2) {  // writer that also reads and writes again; the guards unlock in reverse
          ScopedWriteLock writing(lock);
          ScopedReadLock reading(lock);
          ScopedWriteLock writingAgain(lock);
          write();
        } else {  // reader that turns writer and drops everything at once
          lock.ReadLock(INFINITE_WAIT);
          read();
          lock.WriteLock(INFINITE_WAIT);
          write();
          lock.UnlockAll();
        }
        ++writes;
      }
    });
  }
  for (std::thread& thread : threads) thread.join();
  EXPECT_GT(writes.load(), 0);
  EXPECT_EQ(first, writes.load());
  EXPECT_EQ(lock.writers() + lock.readers(), 0u);
  EXPECT_FALSE(lock.HasReaderEvent() || lock.HasWriterEvent());
}

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
