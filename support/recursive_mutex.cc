#include "support/recursive_mutex.h"

#include <cerrno>
#include <cstdio>

namespace vsm {

void RecursiveMutex::Init() {
  pthread_mutexattr_t attributes;
  if (pthread_mutexattr_init(&attributes) != 0) {
    std::printf("pthread_mutexattr_init failed %d\n", errno);
    std::printf("pthread_mutex_init failed %d\n", errno);
    return;
  }
  bool ok = true;
  if (pthread_mutexattr_settype(&attributes, PTHREAD_MUTEX_RECURSIVE) != 0) {
    std::printf("pthread_mutexattr_settype failed %d\n", errno);
    ok = false;
  } else if (pthread_mutex_init(&mutex_, &attributes) != 0) {
    ok = false;
  }
  if (!ok) std::printf("pthread_mutex_init failed %d\n", errno);
  pthread_mutexattr_destroy(&attributes);
}

void RecursiveMutex::Destroy() {
  if (pthread_mutex_destroy(&mutex_) != 0) std::printf("pthread_mutex_destroy failed %d\n", errno);
}

void RecursiveMutex::Lock() {
  if (pthread_mutex_lock(&mutex_) != 0) std::printf("pthread_mutex_lock failed %d\n", errno);
}

void RecursiveMutex::Unlock() {
  if (pthread_mutex_unlock(&mutex_) != 0) std::printf("pthread_mutex_unlock failed %d\n", errno);
}

}  // namespace vsm
