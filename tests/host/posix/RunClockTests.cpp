// The time zone of a run, in zones other than UTC.

#include "host/RunClock.h"

#include <gtest/gtest.h>

#include <chrono>
#include <cstdlib>
#include <ctime>
#include <string>

namespace {

std::string ZoneTextIn(const char* zone) {
  setenv("TZ", zone, 1);
  tzset();
  RunClock clock;
  clock.wall = std::chrono::system_clock::time_point(std::chrono::seconds(1795286819));
  const std::string text = clock.ZoneText();
  unsetenv("TZ");
  tzset();
  return text;
}

TEST(RunClock, HasTheSignHoursAndMinutesOfTheZone) {
  EXPECT_EQ("+00:00", ZoneTextIn("UTC0"));
  EXPECT_EQ("+05:45", ZoneTextIn("EAST-05:45"));
  EXPECT_EQ("-10:30", ZoneTextIn("WEST+10:30"));
  EXPECT_EQ("-00:01", ZoneTextIn("NEAR+00:01"));
}

TEST(RunClock, HasTheZonesOffsetInSummerToo) {
  // Summer time from October on, as in the south.
  EXPECT_EQ("+11:00", ZoneTextIn("EAST-10SUMMER-11,M10.1.0,M4.1.0/3"));
}

}  // namespace
