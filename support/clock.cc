#include "support/clock.h"

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

}  // namespace

uint32_t GetTickMilliseconds() {
  struct timespec now;
  clock_gettime(CLOCK_MONOTONIC, &now);
  uint64_t ms =
      static_cast<uint64_t>(now.tv_nsec / 1000000) + 1000u * static_cast<uint64_t>(now.tv_sec);
  return static_cast<uint32_t>(ms);
}

void SleepMilliseconds(uint32_t ms) { usleep(static_cast<useconds_t>(ms * 1000u)); }

uint32_t GetCurrentThreadNumber() { return static_cast<uint32_t>(syscall(SYS_gettid)); }

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
