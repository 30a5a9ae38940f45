#include "support/event.h"

#include <fcntl.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <ctime>

#include "support/clock.h"
#include "support/named_semaphore.h"

namespace vsm {

namespace {

std::atomic<int32_t> eventNameInstance{0};
std::atomic<uint32_t> eventNameCounter{0};

constexpr size_t kEventNameBuffer = 32;

// Copies `name` into the record, which has room for any name sem_open accepted.
EventHandle* NewEventHandle(sem_t* sem, uint8_t manualReset, const char* name) {
  EventHandle* handle = new EventHandle();
  handle->sem = sem;
  handle->manualReset = manualReset;
  std::strncpy(handle->name, name, sizeof(handle->name) - 1);
  return handle;
}

}  // namespace

void SetEventNameInstance(int32_t instance) { eventNameInstance.store(instance); }

int32_t GetEventNameInstance() { return eventNameInstance.load(); }

EventHandle* CreateEvent(void* attributes, int manualReset, int initialState, const char* name) {
  char semName[kEventNameBuffer] = {};
  if (name == nullptr) {
    // snprintf cuts an extreme pid/counter/instance combination at 31 characters rather than
    // running past the buffer.
    std::snprintf(semName, sizeof(semName), "ce0%u_%u_%d", static_cast<unsigned>(getpid()),
                  ++eventNameCounter, eventNameInstance.load());
  } else {
    std::strncpy(semName, name, sizeof(semName) - 1);
  }
  sem_t* sem = OpenNamedSemaphore(semName, O_CREAT | O_EXCL, static_cast<unsigned>(initialState));
  if (sem == SEM_FAILED) {
    std::printf("CreateEvent sem_open failed %d name %s\n", errno, semName);
    return nullptr;
  }
  return NewEventHandle(sem, manualReset != 0 ? 1 : 0, semName);
}

EventHandle* OpenEvent(uint32_t access, int inherit, const char* name) {
  if (name == nullptr) {
    errno = EINVAL;
    std::printf("OpenEvent sem_open failed %d\n", errno);
    return nullptr;
  }
  sem_t* sem = OpenNamedSemaphore(name, 0, 0);
  if (sem == SEM_FAILED) {
    std::printf("OpenEvent sem_open failed %d\n", errno);
    return nullptr;
  }
  return NewEventHandle(sem, 0, name);
}

int SetEvent(EventHandle* handle) {
  if (handle == nullptr) return 0;
  if (sem_post(handle->sem) != 0) {
    std::printf("SetEvent sem_post failed %d\n", errno);
    return 0;
  }
  return 1;
}

int ResetEvent(EventHandle* handle) {
  if (handle == nullptr) return 1;
  while (sem_trywait(handle->sem) != 0 && errno != EAGAIN) {
    int error = errno;
    SleepMilliseconds(50);
    std::printf("ResetEvent sem_trywait failed %d\n", error);
  }
  return 1;
}

uint32_t WaitForEvent(EventHandle* handle, uint32_t timeoutMs) {
  if (handle == nullptr) return WAIT_ERROR;
  const bool endless = timeoutMs == INFINITE_WAIT;
  const uint32_t budget = timeoutMs * 1000000u;
  if (!endless && budget == 0) return WAIT_TIMED_OUT;
  const uint64_t step = endless ? 2000000 : 1000000;
  uint64_t elapsed = step;
  for (;;) {
    if (sem_trywait(handle->sem) == 0) {
      if (handle->manualReset != 0) SetEvent(handle);
      return 0;
    }
    if (errno != EAGAIN) {
      std::printf("[%d]WaitForEvent sem_trywait failed %d\n", static_cast<int>(getpid()), errno);
      return WAIT_ERROR;
    }
    struct timespec pause = {0, static_cast<long>(step)};
    nanosleep(&pause, nullptr);
    bool reached = elapsed >= budget;
    elapsed += step;
    if (!endless && reached) return WAIT_TIMED_OUT;
  }
}

void CloseEvent(EventHandle* handle) {
  if (handle == nullptr) return;
  CloseNamedSemaphore(handle->sem);
  sem_unlink(handle->name);
  // A no-op on glibc after sem_close; kept because the close sequence has always ended so.
  sem_destroy(handle->sem);
  delete handle;
}

}  // namespace vsm
