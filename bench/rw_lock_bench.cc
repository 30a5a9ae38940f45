// What the polling design of CRWLock costs, beside std::shared_mutex measured in the same run.
//
// One thread: a lock/unlock pair on a free lock (one mutex, one linear search, one small record).
// Two threads: both hammer the same lock; a waiter sleeps in 1 or 2 ms steps instead of blocking
// in the kernel, so contended writes run at a few hundred per second. items_per_second counts
// pairs of both threads together.
#include <benchmark/benchmark.h>

#include <shared_mutex>

#include "support/rw_lock.h"

namespace {

vsm::CRWLock& SharedLock() {
  static vsm::CRWLock lock;
  return lock;
}

std::shared_mutex& SharedMutex() {
  static std::shared_mutex mutex;
  return mutex;
}

void BM_CRWLockRead(benchmark::State& state) {
  vsm::CRWLock& lock = SharedLock();
  for (auto _ : state) {
    lock.ReadLock(vsm::INFINITE_WAIT);
    lock.ReadUnlock();
  }
  state.SetItemsProcessed(state.iterations());
}

void BM_SharedMutexRead(benchmark::State& state) {
  std::shared_mutex& mutex = SharedMutex();
  for (auto _ : state) {
    mutex.lock_shared();
    mutex.unlock_shared();
  }
  state.SetItemsProcessed(state.iterations());
}

void BM_CRWLockWrite(benchmark::State& state) {
  vsm::CRWLock& lock = SharedLock();
  for (auto _ : state) {
    lock.WriteLock(vsm::INFINITE_WAIT);
    lock.WriteUnlock();
  }
  state.SetItemsProcessed(state.iterations());
}

void BM_SharedMutexWrite(benchmark::State& state) {
  std::shared_mutex& mutex = SharedMutex();
  for (auto _ : state) {
    mutex.lock();
    mutex.unlock();
  }
  state.SetItemsProcessed(state.iterations());
}

}  // namespace

BENCHMARK(BM_CRWLockRead)->Threads(1)->Threads(2)->UseRealTime();
BENCHMARK(BM_SharedMutexRead)->Threads(1)->Threads(2)->UseRealTime();
BENCHMARK(BM_CRWLockWrite)->Threads(1)->Threads(2)->UseRealTime();
BENCHMARK(BM_SharedMutexWrite)->Threads(1)->Threads(2)->UseRealTime();
