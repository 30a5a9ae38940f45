#include "support/clock.h"

#include <pthread.h>
#include <sys/syscall.h>
#include <sys/time.h>
#include <unistd.h>

namespace vsm {

namespace {

void FillFromTm(LocalSystemTime* record, const struct tm& parts) {
  record->year = static_cast<uint16_t>(parts.tm_year + 1900);
  record->month = static_cast<uint16_t>(parts.tm_mon + 1);
  record->dayOfWeek = 0;
  record->day = static_cast<uint16_t>(parts.tm_mday);
  record->hour = static_cast<uint16_t>(parts.tm_hour);
  record->minute = static_cast<uint16_t>(parts.tm_min);
  record->second = static_cast<uint16_t>(parts.tm_sec);
}

// The calling thread's number, 0 until it has been fetched. Every lock operation and log line
// asks for it, and a system call each time would cost more than the rest of a free lock.
// Initial-exec: the four bytes live in the static TLS space the C library keeps spare for loaded
// libraries, not in a block allocated per thread on first use; walking such blocks of a loaded
// library at exit crashes the leak checker of the sanitizer builds.
__attribute__((tls_model("initial-exec"))) thread_local uint32_t cachedThreadNumber = 0;

// A child of fork runs on one thread with a number of its own, but inherits the forking
// thread's cache; the handler runs on that very thread in the child and forgets it.
void ForgetThreadNumber() { cachedThreadNumber = 0; }

uint32_t FetchThreadNumber() {
  // Registered before the first number is cached anywhere, so no cache can outlive a fork.
  static const int registered = pthread_atfork(nullptr, nullptr, &ForgetThreadNumber);
  (void)registered;
  cachedThreadNumber = static_cast<uint32_t>(syscall(SYS_gettid));
  return cachedThreadNumber;
}

}  // namespace

uint32_t GetTickMilliseconds() {
  struct timespec now;
  clock_gettime(CLOCK_MONOTONIC, &now);
  uint64_t ms =
      static_cast<uint64_t>(now.tv_nsec / 1000000) + 1000u * static_cast<uint64_t>(now.tv_sec);
  return static_cast<uint32_t>(ms);
}

void SleepMilliseconds(uint32_t ms) { usleep(static_cast<useconds_t>(ms * 1000u)); }

uint32_t GetCurrentThreadNumber() {
  const uint32_t number = cachedThreadNumber;
  return number != 0 ? number : FetchThreadNumber();
}

void GetLocalSystemTime(LocalSystemTime* record) {
  struct timeval now;
  gettimeofday(&now, nullptr);
  time_t seconds = now.tv_sec;
  struct tm parts;
  // localtime_r rather than localtime: any host thread may log at the same moment.
  if (localtime_r(&seconds, &parts) == nullptr) return;
  FillFromTm(record, parts);
  record->milliseconds = static_cast<uint16_t>(now.tv_usec / 1000);
}

LocalSystemTime GetLocalSystemTime() {
  LocalSystemTime record = {};
  GetLocalSystemTime(&record);
  return record;
}

void SystemTimeFromUnixTime(LocalSystemTime* record, time_t time) {
  struct tm parts;
  if (localtime_r(&time, &parts) == nullptr) return;
  FillFromTm(record, parts);
}

}  // namespace vsm
