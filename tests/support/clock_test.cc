#include "support/clock.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <cstring>

namespace vsm {
namespace {

struct TimeCase {
  time_t time;
  uint16_t year, month, day, hour, minute, second;
};

class SystemTimeTest : public ::testing::TestWithParam<TimeCase> {};

TEST_P(SystemTimeTest, BreaksDownUnixTimeAndLeavesMilliseconds) {
  setenv("TZ", "UTC", 1);
  tzset();
  LocalSystemTime record = {1, 2, 5, 4, 5, 6, 7, 777};
  SystemTimeFromUnixTime(&record, GetParam().time);
  const TimeCase& e = GetParam();
  LocalSystemTime expected = {e.year, e.month, 0, e.day, e.hour, e.minute, e.second, 777};
  EXPECT_EQ(std::memcmp(&record, &expected, sizeof(record)), 0) << record.year << record.month;
}

INSTANTIATE_TEST_SUITE_P(Times, SystemTimeTest,
                         ::testing::Values(TimeCase{0, 1970, 1, 1, 0, 0, 0},
                                           TimeCase{951868799, 2000, 2, 29, 23, 59, 59},
                                           TimeCase{4102444800, 2100, 1, 1, 0, 0, 0}));

TEST(ClockTest, LocalSystemTimeMatchesTheCalendar) {
  LocalSystemTime now = GetLocalSystemTime();
  LocalSystemTime expected = {};
  SystemTimeFromUnixTime(&expected, time(nullptr));
  EXPECT_EQ(now.year, expected.year);
  EXPECT_EQ(now.month, expected.month);
  EXPECT_EQ(now.dayOfWeek, 0);
  EXPECT_LT(now.milliseconds, 1000);
}

}  // namespace
}  // namespace vsm
