// Clocks, sleeping and thread numbers.
//
// GetTickMilliseconds is the module's monotonic clock: milliseconds in unsigned 32 bits that
// wrap, so differences of two ticks are taken in unsigned arithmetic. LocalSystemTime is the
// broken-down local time in the shape the log line needs. All functions are thread-safe.
#ifndef VSM_SUPPORT_CLOCK_H_
#define VSM_SUPPORT_CLOCK_H_

#include <cstdint>
#include <ctime>

namespace vsm {

// CLOCK_MONOTONIC as tv_nsec / 1000000 + 1000 * tv_sec, cut to 32 bits.
uint32_t GetTickMilliseconds();

// usleep(ms * 1000).
void SleepMilliseconds(uint32_t ms);

// The kernel's number of the calling thread (gettid), fetched once per thread and kept; a child
// of fork fetches its own again.
uint32_t GetCurrentThreadNumber();

struct LocalSystemTime {
  uint16_t year;       // full year, tm_year + 1900
  uint16_t month;      // 1 to 12
  uint16_t dayOfWeek;  // always written 0
  uint16_t day;
  uint16_t hour;
  uint16_t minute;
  uint16_t second;
  uint16_t milliseconds;
};

// Fills `record` from gettimeofday and localtime.
void GetLocalSystemTime(LocalSystemTime* record);
// The same, by value.
LocalSystemTime GetLocalSystemTime();
// Fills `record` from `time` in local time; milliseconds are left as they were. A time that
// localtime can't break down leaves the record alone.
void SystemTimeFromUnixTime(LocalSystemTime* record, time_t time);

}  // namespace vsm

#endif  // VSM_SUPPORT_CLOCK_H_
