#include "support/thread_start.h"

#include <cstdlib>

#include "support/event.h"

namespace vsm {

static_assert(sizeof(pthread_t) == 8, "StartThread hands out 8-byte thread handles");

pthread_t* StartThread(void* attributes, size_t stackSize, ThreadRoutine routine, void* argument,
                       uint32_t flags, uint32_t* threadIdOut, pthread_t* handle) {
  pthread_t* target = handle;
  if (target == nullptr) {
    target = static_cast<pthread_t*>(std::malloc(sizeof(pthread_t)));
    if (target == nullptr) return nullptr;
  }
  if (pthread_create(target, nullptr, routine, argument) != 0) {
    if (handle == nullptr) std::free(target);
    return nullptr;
  }
  return target;
}

int StopThread(pthread_t* handle, uint32_t timeoutMs) {
  if (handle == nullptr) return -1;
  if (timeoutMs != INFINITE_WAIT) pthread_cancel(*handle);
  return pthread_join(*handle, nullptr);
}

}  // namespace vsm
