#include "host/RunClock.h"

#include <gtest/gtest.h>

#include <regex>

namespace {

/// 2026-11-21 18:46:59.123 UTC at 5 s of the steady clock.
RunClock SomeClock() {
  RunClock clock;
  clock.wall = std::chrono::system_clock::time_point(std::chrono::milliseconds(1795286819123));
  clock.nanoseconds = 5'000'000'000;
  return clock;
}

TEST(RunClock, TurnsSteadyTimesIntoWallTimes) {
  EXPECT_EQ("2026-11-21T18:46:59.123Z", SomeClock().UtcText(5'000'000'000));
  EXPECT_EQ("2026-11-21T18:47:00.000Z", SomeClock().UtcText(5'877'000'000));
  EXPECT_EQ("2026-11-21T18:46:58.999Z", SomeClock().UtcText(4'876'000'000));
}

TEST(RunClock, ReadsBothClocksOfNow) {
  const RunClock clock = RunClock::Now();
  const auto off = std::chrono::system_clock::now() - clock.wall;
  EXPECT_LT(off, std::chrono::seconds(10));
  EXPECT_GE(SteadyNanoseconds(), clock.nanoseconds);
}

TEST(RunClock, NamesTheLocalZoneByItsOffset) {
  EXPECT_TRUE(std::regex_match(SomeClock().ZoneText(), std::regex("[+-]\\d\\d:\\d\\d")));
}

}  // namespace
