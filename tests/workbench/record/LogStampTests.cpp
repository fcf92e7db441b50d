#include "workbench/record/LogStamp.h"

#include <gtest/gtest.h>

namespace {

/// The stamp in `text` as "time zone digits", or "none".
std::string Found(LogStamps& stamps, const std::string& text) {
  const auto stamp = stamps.Find(text);
  if (!stamp) return "none";
  return TimeText(*stamp) + " " + (stamp->offset ? ZoneText(*stamp) : "?") + " " +
         std::to_string(stamp->digits);
}

std::string Found(const std::string& text, const std::string& format = "") {
  LogStamps stamps(format);
  return Found(stamps, text);
}

TEST(LogStamp, OfHubIsRead) {
  EXPECT_EQ("2026-11-23T12:42:08.271Z +01:00 3",
            Found("2026-11-23 13:42:08.271+01:00 [3] [4344] [host] "));
  EXPECT_EQ("2026-11-23T23:12:08.271Z -09:30 3",
            Found("2026-11-23 13:42:08.271-09:30 [3] [4344] [host] "));
}

TEST(LogStamp, OfAKnownFormIsRead) {
  EXPECT_EQ("2026-11-23T13:42:08.271Z +00:00 6", Found("2026-11-23T13:42:08.271999Z INFO "));
  EXPECT_EQ("2026-11-23T11:42:08.271Z +02:00 3", Found("2026-11-23T13:42:08,271+0200 INFO "));
  EXPECT_EQ("2026-11-23T13:42:08.271 ? 3", Found("[2026-11-23 13:42:08,271] [main] "));
  EXPECT_EQ("2026-11-23T13:42:08.000 ? 0", Found("<6>2026/11/23 13:42:08 server: "));
  EXPECT_EQ("2026-11-23T13:42:08.271 ? 3", Found("INFO 23.11.2026 13:42:08:271 "));
  EXPECT_EQ("2026-11-23T12:42:08.000Z +01:00 0", Found("a - [23/Nov/2026:13:42:08 +0100] "));
  EXPECT_EQ("11-23T13:42:08.000 ? 0", Found("Nov 23 13:42:08 harbour host[12]: "));
  EXPECT_EQ("02-29T13:42:08.000 ? 0", Found("Feb 29 13:42:08 harbour host[12]: "));
  EXPECT_EQ("13:42:08.271 ? 9", Found("(13:42:08.271000000) "));
  EXPECT_EQ("2026-11-23T13:42:08.500 ? 1", Found("20261123 13:42:08.5 I "));
}

TEST(LogStamp, IsNotGuessedFromOtherNumbers) {
  EXPECT_EQ("none", Found("[host] 1.2.3 4711 "));
  EXPECT_EQ("none", Found("[3] [4344] 1700000000.123 "));
  EXPECT_EQ("none", Found("2026-13-40 99:42:08 "));
  EXPECT_EQ("none", Found(""));
}

TEST(LogStamp, WithADateThatCannotBeUsedHasATimeOnly) {
  EXPECT_EQ("00:00:01.000 ? 0", Found("9999-01-01 00:00:01 "));
  EXPECT_EQ("13:42:08.271 ? 3", Found("11/12/2026 13:42:08.271 "));
}

TEST(LogStamp, OfANamedFormatIsRead) {
  EXPECT_EQ("2026-12-11T13:42:08.271 ? 3",
            Found("[W] 11/12/2026 13:42:08.271 ", "%d/%m/%Y %H:%M:%S"));
  EXPECT_EQ("2026-12-11T12:42:08.271Z +01:00 3",
            Found("at 11/12/2026 13:42:08,271 (+0100) ", "at %d/%m/%Y %H:%M:%S (%z)"));
  EXPECT_EQ("2026-12-11T12:42:08.000Z +01:00 0", Found("11Dec26_134208+01:00", "%d%b%y_%H%M%S%Ez"));
  EXPECT_EQ("12-11T13:42:08.000 ? 0", Found("11 Dec 13:42:08", "%d %b %H:%M:%S"));
  EXPECT_EQ("13:42:08.250 ? 2", Found("01:42:08.25 PM", "%I:%M:%S %p"));
  EXPECT_EQ("none", Found("2026-11-23 13:42:08 ", "%d/%m/%Y %H:%M:%S"));
}

TEST(LogStamp, IsFoundAgainWhereALineIsLonger) {
  LogStamps stamps("");
  EXPECT_EQ("13:42:08.000 ? 0", Found(stamps, "thread 9: 13:42:08 "));
  EXPECT_EQ("13:42:09.000 ? 0", Found(stamps, "thread 10: 13:42:09 "));
  EXPECT_EQ("13:42:10.000 ? 0", Found(stamps, "thread 9: 13:42:10 "));
}

TEST(LogStamp, FormatWithoutATimeOfDayIsRefused) {
  EXPECT_EQ("", LogStamps::Problem("%d/%m/%Y %H:%M:%S"));
  EXPECT_EQ("", LogStamps::Problem("[%F %T]"));
  EXPECT_EQ("", LogStamps::Problem("%I:%M:%S %p"));
  const std::string why =
      " does not give the time of day to the second; a format is written as for strptime, such as "
      "%d/%m/%Y %H:%M:%S";
  for (const std::string format : {"%F", "%H:%M", "%I:%M:%S", "time", "%"}) {
    EXPECT_EQ("\"" + format + "\"" + why, LogStamps::Problem(format));
  }
}

}  // namespace
