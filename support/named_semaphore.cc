#include "support/named_semaphore.h"

#include <fcntl.h>

#include <mutex>

namespace vsm {

namespace {

// Never destroyed: semaphores may still be closed while the process exits.
std::mutex& TableMutex() {
  static std::mutex* mutex = new std::mutex();
  return *mutex;
}

}  // namespace

sem_t* OpenNamedSemaphore(const char* name, int flags, unsigned value) {
  std::lock_guard<std::mutex> hold(TableMutex());
  return sem_open(name, flags, 0666, value);
}

int CloseNamedSemaphore(sem_t* sem) {
  std::lock_guard<std::mutex> hold(TableMutex());
  return sem_close(sem);
}

}  // namespace vsm
