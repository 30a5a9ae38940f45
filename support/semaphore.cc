#include "support/semaphore.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstring>

#include "support/clock.h"
#include "support/event.h"
#include "support/named_semaphore.h"

namespace vsm {

namespace {

std::atomic<uint32_t> semaphoreNameCounter{0};

}  // namespace

void GenerateSemaphoreName(char* buffer) {
  std::memset(buffer, 0, kSemaphoreNameSize);
  std::snprintf(buffer, kSemaphoreNameSize, "Sem%u_%u_%d", static_cast<unsigned>(getpid()),
                ++semaphoreNameCounter, GetEventNameInstance());
}

SemaphoreHandle* CreateSemaphore(void* attributes, int32_t initialCount, int32_t maximumCount,
                                 const char* name) {
  char generated[kSemaphoreNameSize];
  if (name == nullptr) {
    GenerateSemaphoreName(generated);
    name = generated;
  }
  sem_t* sem = OpenNamedSemaphore(name, O_CREAT | O_EXCL, static_cast<unsigned>(initialCount));
  if (sem == SEM_FAILED) {
    std::printf("sem_open failed %d\n", errno);
    return nullptr;
  }
  SemaphoreHandle* handle = new SemaphoreHandle();
  handle->sem = sem;
  handle->count.store(0);
  return handle;
}

int ReleaseSemaphore(SemaphoreHandle* handle, int32_t amount, int32_t* previousCount) {
  if (handle == nullptr) return 0;
  if (sem_post(handle->sem) != 0) {
    std::printf("sem_post failed %d\n", errno);
    return 1;
  }
  int32_t previous = handle->count.fetch_add(1);
  if (previousCount != nullptr) *previousCount = previous;
  return 1;
}

uint32_t WaitForSemaphore(SemaphoreHandle* handle, uint32_t timeoutMs) {
  if (handle == nullptr) return 0xFFFFFFFF;
  if (timeoutMs == INFINITE_WAIT) {
    if (sem_wait(handle->sem) != 0) {
      std::printf("sem_wait failed %d\n", errno);
      return 0;
    }
    handle->count.fetch_sub(1);
    return 0;
  }
  const uint64_t step = timeoutMs < 8 ? 1 : timeoutMs / 8;
  uint64_t waited = step;
  bool taken = sem_trywait(handle->sem) == 0;
  while (!taken && waited <= timeoutMs) {
    SleepMilliseconds(static_cast<uint32_t>(step));
    if (waited >= timeoutMs) return 0xFFFFFFFF;
    waited += step;
    taken = sem_trywait(handle->sem) == 0;
  }
  if (!taken) {
    // The last step overshot the timeout; sleep only the part of it that is left.
    SleepMilliseconds(static_cast<uint32_t>(step + timeoutMs - waited));
    return 0xFFFFFFFF;
  }
  handle->count.fetch_sub(1);
  return 0;
}

void CloseSemaphore(SemaphoreHandle* handle) {
  if (handle == nullptr) return;
  CloseNamedSemaphore(handle->sem);
  // A no-op on glibc after sem_close; kept because the close sequence has always ended so.
  sem_destroy(handle->sem);
  delete handle;
}

}  // namespace vsm
