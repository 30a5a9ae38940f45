#include "support/rw_lock.h"

#include <sched.h>
#include <time.h>

#include <algorithm>
#include <cstdlib>
#include <cstring>

#include "support/clock.h"

namespace vsm {

namespace {

constexpr uint32_t kWriteHold = 0x10000;
// How long a thread looks at a busy lock again, yielding the processor in between, before it
// sleeps in the polling wait. Holds last well under a microsecond, so the lock is nearly always
// free again long before the first 1 or 2 ms poll step would end. The bound is in time, not in
// looks: on a loaded machine one yield may give the processor away for a whole time slice.
constexpr int64_t kLookingNanoseconds = 50000;

int64_t MonotonicNanoseconds() {
  struct timespec now;
  clock_gettime(CLOCK_MONOTONIC, &now);
  return static_cast<int64_t>(now.tv_sec) * 1000000000 + now.tv_nsec;
}

}  // namespace

CRWLock::CRWLock()
    : writerEvent_(nullptr),
      readerEvent_(nullptr),
      writers_(0),
      readers_(0),
      readerWaiters_(0),
      threads_(nullptr),
      size_(0),
      capacity_(0),
      growBy_(0),
      spare_(nullptr) {
  mutex_.Init();
}

CRWLock::~CRWLock() {
  for (int32_t i = 0; i < size_; ++i) std::free(threads_[i]);
  std::free(threads_);
  std::free(spare_);
  mutex_.Destroy();
}

// ---- Internal steps; `mutex_` is held on entry. ----

void CRWLock::ReleaseCore(bool downgrade) {
  if (downgrade) {
    ++readers_;
    --writers_;
    if (writers_ != 0) return;
  } else {
    --writers_;
    if (writers_ != 0) {
      SetEvent(writerEvent_);
      return;
    }
  }
  if (writerEvent_ != nullptr) {
    CloseEvent(writerEvent_);
    writerEvent_ = nullptr;
  }
  if (readerEvent_ != nullptr) SetEvent(readerEvent_);
}

void CRWLock::ReleaseReadCore() {
  --readers_;
  if (readers_ == 0 && writerEvent_ != nullptr) SetEvent(writerEvent_);
}

int CRWLock::WaitForRead(uint32_t timeoutMs) {
  ++readerWaiters_;
  if (readerEvent_ == nullptr) readerEvent_ = CreateEvent(nullptr, 1, 0, nullptr);
  bool taken = false;
  // The event pointer is read under the mutex each time: a failed creation leaves it null, and
  // another waiter may create it meanwhile.
  if (timeoutMs == INFINITE_WAIT) {
    do {
      EventHandle* event = readerEvent_;
      mutex_.Unlock();
      WaitForEvent(event, INFINITE_WAIT);
      mutex_.Lock();
    } while (writers_ != 0);
    taken = true;
  } else {
    EventHandle* event = readerEvent_;
    mutex_.Unlock();
    const uint32_t start = GetTickMilliseconds();
    uint32_t elapsed = 0;
    for (;;) {
      uint32_t rc = WaitForEvent(event, timeoutMs - elapsed);
      mutex_.Lock();
      if (writers_ == 0) {
        taken = true;
        break;
      }
      if (rc != 0) break;
      event = readerEvent_;
      mutex_.Unlock();
      elapsed = GetTickMilliseconds() - start;
      if (timeoutMs < elapsed) {
        mutex_.Lock();
        break;
      }
    }
  }
  if (taken) ++readers_;
  if (--readerWaiters_ == 0 && readerEvent_ != nullptr) {
    CloseEvent(readerEvent_);
    readerEvent_ = nullptr;
  }
  return taken ? 1 : 0;
}

int CRWLock::WaitForWrite(uint32_t timeoutMs) {
  ++writers_;
  // The first writer takes back a signal left for readers, so that those still waiting go on
  // sleeping in steps instead of finding the event set while a writer is queued.
  if (writers_ == 1 && readerEvent_ != nullptr) ResetEvent(readerEvent_);
  if (writerEvent_ == nullptr) writerEvent_ = CreateEvent(nullptr, 0, 0, nullptr);
  EventHandle* event = writerEvent_;
  mutex_.Unlock();
  if (WaitForEvent(event, timeoutMs) == 0) return 1;
  mutex_.Lock();
  --writers_;
  if (writers_ != 0) return 0;
  if (writerEvent_ != nullptr) {
    CloseEvent(writerEvent_);
    writerEvent_ = nullptr;
  }
  if (readers_ == 0) {
    // The readers left while the wait was giving up: the lock is free, so take it after all.
    ++writers_;
    mutex_.Unlock();
    return 1;
  }
  if (readerEvent_ != nullptr) SetEvent(readerEvent_);
  return 0;
}

int CRWLock::UpgradeCore(uint32_t timeoutMs) {
  if (timeoutMs == 0) {
    mutex_.Unlock();
    return 0;
  }
  --readers_;
  if (WaitForWrite(timeoutMs) != 0) return 1;
  int result = 0;
  if (writers_ != 0) {
    // Another writer got in: queue behind it as a reader, and take the write side if the
    // caller turns out to be the only reader afterwards.
    WaitForRead(INFINITE_WAIT);
    if (readers_ == 1) {
      readers_ = 0;
      writers_ = 1;
      result = 1;
    }
  } else {
    ++readers_;
  }
  mutex_.Unlock();
  return result;
}

void CRWLock::LookAgainWhileBusy(bool forWrite) {
  auto busy = [&] { return writers_ != 0 || (forWrite && readers_ != 0); };
  if (!busy()) return;
  const int64_t start = MonotonicNanoseconds();
  do {
    mutex_.Unlock();
    sched_yield();
    mutex_.Lock();
  } while (busy() && MonotonicNanoseconds() - start < kLookingNanoseconds);
}

int32_t CRWLock::FindThread(uint32_t threadId) const {
  for (int32_t i = 0; i < size_; ++i) {
    if (threads_[i]->threadId == threadId) return i;
  }
  return -1;
}

// Aborts when a few bytes can't be had: without its record the thread could never unlock.
void CRWLock::AppendThread(uint32_t threadId, uint32_t depths) {
  ThreadLockRecord* record = spare_;
  spare_ = nullptr;
  if (record == nullptr) {
    record = static_cast<ThreadLockRecord*>(std::calloc(1, sizeof(ThreadLockRecord)));
    if (record == nullptr) std::abort();
  }
  record->threadId = threadId;
  record->depths = depths;
  if (size_ + 1 > capacity_) {
    int32_t newCapacity = size_ + 1;
    if (threads_ != nullptr) {
      int32_t step = growBy_ != 0 ? growBy_ : std::clamp(size_ / 8, 4, 1024);
      newCapacity = std::max(size_ + 1, capacity_ + step);
    }
    auto* grown = static_cast<ThreadLockRecord**>(
        std::calloc(static_cast<size_t>(newCapacity), sizeof(ThreadLockRecord*)));
    if (grown == nullptr) std::abort();
    if (size_ > 0) std::memcpy(grown, threads_, static_cast<size_t>(size_) * sizeof(*threads_));
    std::free(threads_);
    threads_ = grown;
    capacity_ = newCapacity;
  }
  threads_[size_++] = record;
}

void CRWLock::RemoveThread(int32_t index) {
  // One record is kept back for the next first acquisition: a lock taken and left again by one
  // thread at a time then costs no heap call at all.
  if (spare_ == nullptr) {
    spare_ = threads_[index];
  } else {
    std::free(threads_[index]);
  }
  std::memmove(threads_ + index, threads_ + index + 1,
               static_cast<size_t>(size_ - index - 1) * sizeof(*threads_));
  threads_[--size_] = nullptr;
}

// ---- Re-entrant face. ----

int CRWLock::ReadLock(uint32_t timeoutMs) {
  const uint32_t self = GetCurrentThreadNumber();
  mutex_.Lock();
  int32_t index = FindThread(self);
  if (index >= 0) {
    // A writer takes read depth here too, without counting as a reader.
    ThreadLockRecord* record = threads_[index];
    mutex_.Unlock();
    record->depths += 1;
    return 1;
  }
  if (timeoutMs != 0) LookAgainWhileBusy(false);
  if (writers_ == 0) {
    ++readers_;
  } else if (timeoutMs == 0 || WaitForRead(timeoutMs) == 0) {
    mutex_.Unlock();
    return 0;
  }
  AppendThread(self, 1);
  mutex_.Unlock();
  return 1;
}

int CRWLock::WriteLock(uint32_t timeoutMs) {
  const uint32_t self = GetCurrentThreadNumber();
  mutex_.Lock();
  int32_t index = FindThread(self);
  if (index >= 0) {
    ThreadLockRecord* record = threads_[index];
    if (record->depths >= kWriteHold) {
      mutex_.Unlock();
    } else if (readers_ == 1) {
      // The only reader becomes the writer at once.
      readers_ = 0;
      ++writers_;
      mutex_.Unlock();
    } else if (UpgradeCore(timeoutMs) == 0) {
      return 0;
    }
    // The read depth, if any, stays in the low half.
    record->depths += kWriteHold;
    return 1;
  }
  if (timeoutMs != 0) LookAgainWhileBusy(true);
  if (writers_ == 0 && readers_ == 0) {
    ++writers_;
    AppendThread(self, kWriteHold);
    mutex_.Unlock();
    return 1;
  }
  if (timeoutMs == 0 || WaitForWrite(timeoutMs) == 0) {
    mutex_.Unlock();
    return 0;
  }
  mutex_.Lock();
  AppendThread(self, kWriteHold);
  mutex_.Unlock();
  return 1;
}

void CRWLock::ReadUnlock() {
  const uint32_t self = GetCurrentThreadNumber();
  mutex_.Lock();
  int32_t index = FindThread(self);
  if (index >= 0 && --threads_[index]->depths == 0) {
    RemoveThread(index);
    ReleaseReadCore();
  }
  mutex_.Unlock();
}

void CRWLock::WriteUnlock() {
  const uint32_t self = GetCurrentThreadNumber();
  mutex_.Lock();
  int32_t index = FindThread(self);
  if (index >= 0) {
    ThreadLockRecord* record = threads_[index];
    record->depths -= kWriteHold;
    if (record->depths == 0) {
      RemoveThread(index);
      ReleaseCore(false);
    } else if (record->depths < kWriteHold) {
      // Read depth remains: the thread stays on as a plain reader.
      ReleaseCore(true);
    }
  }
  mutex_.Unlock();
}

void CRWLock::UnlockAll() {
  const uint32_t self = GetCurrentThreadNumber();
  mutex_.Lock();
  int32_t index = FindThread(self);
  if (index >= 0) {
    uint32_t depths = threads_[index]->depths;
    RemoveThread(index);
    if (depths > 0xffff) {
      ReleaseCore(false);
    } else {
      ReleaseReadCore();
    }
  }
  mutex_.Unlock();
}

uint32_t CRWLock::GetThreadLockCounts(uint32_t* readDepth, uint32_t* writeDepth) {
  const uint32_t self = GetCurrentThreadNumber();
  mutex_.Lock();
  int32_t index = FindThread(self);
  uint32_t depths = index >= 0 ? threads_[index]->depths : 0;
  mutex_.Unlock();
  if (readDepth != nullptr) *readDepth = depths & 0xffff;
  if (writeDepth == nullptr) return depths;
  *writeDepth = depths >> 16;
  return *writeDepth;
}

// ---- Thread-blind face. ----

int CRWLock::AcquireRead(uint32_t timeoutMs) {
  mutex_.Lock();
  if (timeoutMs != 0) LookAgainWhileBusy(false);
  int result = 0;
  if (writers_ == 0) {
    ++readers_;
    result = 1;
  } else if (timeoutMs != 0) {
    result = WaitForRead(timeoutMs);
  }
  mutex_.Unlock();
  return result;
}

void CRWLock::ReleaseRead() {
  mutex_.Lock();
  ReleaseReadCore();
  mutex_.Unlock();
}

int CRWLock::AcquireWrite(uint32_t timeoutMs) {
  mutex_.Lock();
  if (timeoutMs != 0) LookAgainWhileBusy(true);
  if (writers_ == 0 && readers_ == 0) {
    ++writers_;
    mutex_.Unlock();
    return 1;
  }
  if (timeoutMs != 0 && WaitForWrite(timeoutMs) != 0) return 1;
  mutex_.Unlock();
  return 0;
}

void CRWLock::ReleaseWrite() {
  mutex_.Lock();
  ReleaseCore(false);
  mutex_.Unlock();
}

void CRWLock::Downgrade() {
  mutex_.Lock();
  ReleaseCore(true);
  mutex_.Unlock();
}

int CRWLock::Upgrade(uint32_t timeoutMs) {
  mutex_.Lock();
  return UpgradeCore(timeoutMs);
}

// ---- Observation. ----

bool CRWLock::HasReaderEvent() const {
  mutex_.Lock();
  bool present = readerEvent_ != nullptr;
  mutex_.Unlock();
  return present;
}

bool CRWLock::HasWriterEvent() const {
  mutex_.Lock();
  bool present = writerEvent_ != nullptr;
  mutex_.Unlock();
  return present;
}

uint32_t CRWLock::writers() const {
  mutex_.Lock();
  uint32_t value = writers_;
  mutex_.Unlock();
  return value;
}

uint32_t CRWLock::readers() const {
  mutex_.Lock();
  uint32_t value = readers_;
  mutex_.Unlock();
  return value;
}

uint32_t CRWLock::readerWaiters() const {
  mutex_.Lock();
  uint32_t value = readerWaiters_;
  mutex_.Unlock();
  return value;
}

int32_t CRWLock::threadCount() const {
  mutex_.Lock();
  int32_t value = size_;
  mutex_.Unlock();
  return value;
}

int32_t CRWLock::threadCapacity() const {
  mutex_.Lock();
  int32_t value = capacity_;
  mutex_.Unlock();
  return value;
}

}  // namespace vsm
