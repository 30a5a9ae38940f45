// CRWLock: a reader/writer lock with writer preference, in two faces.
//
// The re-entrant face (ReadLock, WriteLock, ReadUnlock, WriteUnlock, UnlockAll) knows each
// thread by its kernel thread number and keeps a record of its read and write depths, so a
// thread may take either side again while it holds the lock, a writer may read, and the only
// reader may become the writer at once. The thread-blind face (AcquireRead ... Upgrade) keeps no
// records and allows no re-entrancy; the two faces are not meant to be mixed on one lock.
//
// Writers have priority: `writers` counts waiting writers too, so a new reader queues behind
// every waiting writer. A thread that finds the lock busy, with a timeout other than 0, first
// looks again a few times, yielding in between; only when it is still busy does it wait,
// polling events in 1 or 2 ms steps (see event.h); the events exist only while somebody waits.
// Timeouts are milliseconds, INFINITE_WAIT for none, and the results are 1 (taken) or 0 (not
// taken). An unlock by a thread that holds nothing changes nothing; otherwise each unlock must
// match a hold of the same side (the depths are plain counters). All operations are thread-safe and
// throw nothing; running out of memory for a thread record ends the process, since going on without
// it would leave the lock held for good. Destroying the lock while threads use it is undefined.
#ifndef VSM_SUPPORT_RW_LOCK_H_
#define VSM_SUPPORT_RW_LOCK_H_

#include <cstdint>

#include "support/event.h"
#include "support/recursive_mutex.h"

namespace vsm {

// One thread's holds on one lock. The record exists exactly while a depth is non-zero.
struct ThreadLockRecord {
  uint32_t threadId;
  // Low 16 bits: read depth. High 16 bits: write depth (each write hold adds 0x10000). Nothing
  // limits them: a read depth past 65535 carries into the write half.
  uint32_t depths;
};

class CRWLock {
 public:
  CRWLock();
  // Frees the thread records; events are left alone (none exist when nobody waits).
  ~CRWLock();
  CRWLock(const CRWLock&) = delete;
  CRWLock& operator=(const CRWLock&) = delete;

  // Re-entrant face.
  int ReadLock(uint32_t timeoutMs);
  int WriteLock(uint32_t timeoutMs);
  void ReadUnlock();
  void WriteUnlock();
  // Drops all of the calling thread's holds at once.
  void UnlockAll();
  // Stores the calling thread's depths (0 without a record) in the non-null pointers. Gives the
  // write depth when `writeDepth` is given, otherwise the raw `depths` word.
  uint32_t GetThreadLockCounts(uint32_t* readDepth, uint32_t* writeDepth);

  // Thread-blind face.
  int AcquireRead(uint32_t timeoutMs);
  void ReleaseRead();
  int AcquireWrite(uint32_t timeoutMs);
  void ReleaseWrite();
  // The writer becomes a reader without letting another writer in between.
  void Downgrade();
  // The reader becomes the writer once the other readers have left; 0 at once for timeout 0. On
  // failure the caller is still a reader. Nothing signals a sole reader: it takes the write side
  // only when its wait gives up, so with INFINITE_WAIT it never returns. A sole reader should
  // ReleaseRead and AcquireWrite instead.
  int Upgrade(uint32_t timeoutMs);

  // State, for tests and diagnostics; each takes the internal mutex.
  bool HasReaderEvent() const;
  bool HasWriterEvent() const;
  uint32_t writers() const;
  uint32_t readers() const;
  uint32_t readerWaiters() const;
  int32_t threadCount() const;
  int32_t threadCapacity() const;

 private:
  // Everything below runs with `mutex_` held on entry.
  void ReleaseCore(bool downgrade);
  void ReleaseReadCore();
  // Returns with `mutex_` held, 1 on success.
  int WaitForRead(uint32_t timeoutMs);
  // Returns 1 with `mutex_` released, 0 with it held; callers rely on the asymmetry.
  int WaitForWrite(uint32_t timeoutMs);
  // Returns with `mutex_` released.
  int UpgradeCore(uint32_t timeoutMs);
  // Releases `mutex_` and yields a bounded number of times while a writer is in (or, with
  // `forWrite`, anyone is), so that a hold about to end costs no poll step. Never waits on
  // events and never changes the counters; `mutex_` is held again on return.
  void LookAgainWhileBusy(bool forWrite);
  // Index of the caller's record in `threads_`, or -1.
  int32_t FindThread(uint32_t threadId) const;
  void AppendThread(uint32_t threadId, uint32_t depths);
  void RemoveThread(int32_t index);

  mutable RecursiveMutex mutex_;
  EventHandle* writerEvent_;  // automatic reset; null when no writer waits
  EventHandle* readerEvent_;  // manual reset; null when no reader waits
  uint32_t writers_;          // holders and waiters of the write side
  uint32_t readers_;          // read holds, one per thread
  uint32_t readerWaiters_;    // threads inside WaitForRead
  ThreadLockRecord** threads_;
  int32_t size_;
  int32_t capacity_;
  int32_t growBy_;
  ThreadLockRecord* spare_;  // a removed record kept for reuse, or null
};

// Holds `lock` for reading from construction to destruction, with INFINITE_WAIT, so that the
// lock is released also when an exception passes.
class ScopedReadLock {
 public:
  explicit ScopedReadLock(CRWLock& lock) : lock_(lock), locked_(lock.ReadLock(INFINITE_WAIT)) {}
  ~ScopedReadLock() {
    if (locked_) lock_.ReadUnlock();
  }
  ScopedReadLock(const ScopedReadLock&) = delete;
  ScopedReadLock& operator=(const ScopedReadLock&) = delete;
  bool locked() const { return locked_ != 0; }

 private:
  CRWLock& lock_;
  int locked_;
};

// The same for writing. An endless WriteLock fails only when its event can't be created; the
// guard then unlocks nothing.
class ScopedWriteLock {
 public:
  explicit ScopedWriteLock(CRWLock& lock) : lock_(lock), locked_(lock.WriteLock(INFINITE_WAIT)) {}
  ~ScopedWriteLock() {
    if (locked_) lock_.WriteUnlock();
  }
  ScopedWriteLock(const ScopedWriteLock&) = delete;
  ScopedWriteLock& operator=(const ScopedWriteLock&) = delete;
  bool locked() const { return locked_ != 0; }

 private:
  CRWLock& lock_;
  int locked_;
};

}  // namespace vsm

#endif  // VSM_SUPPORT_RW_LOCK_H_
