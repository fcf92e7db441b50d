// The time of a log line in a time zone other than UTC.

#include <gmock/gmock.h>

#include <chrono>
#include <cstdlib>
#include <ctime>
#include <string>

#include "sdk/base/log.h"
#include "tests/reference/LogTest.h"

namespace {

using std::chrono::milliseconds;
using std::chrono::system_clock;

class TimeZone {
 public:
  explicit TimeZone(const char* zone) {
    setenv("TZ", zone, 1);
    tzset();
  }
  ~TimeZone() {
    unsetenv("TZ");
    tzset();
  }
  TimeZone(const TimeZone&) = delete;
  TimeZone& operator=(const TimeZone&) = delete;
};

struct LineTime {
  std::string offset;
  system_clock::time_point local;  // the local time, converted as if it were UTC
};

LineTime TimeOf(const std::string& line) {
  std::tm fields = {};
  const char* rest = strptime(line.c_str(), "%Y-%m-%d %H:%M:%S", &fields);
  if (rest == nullptr) return {};
  return {line.substr(23, 6),
          system_clock::from_time_t(timegm(&fields)) + milliseconds(std::atoi(rest + 1))};
}

TEST_F(Log, TimeIsLocalWithItsOffset) {
  struct Case {
    const char* zone;
    const char* offset;
    std::chrono::minutes minutes;
  };
  for (const Case& zone : {Case{"EAST-05:30", "+05:30", std::chrono::minutes(330)},
                           Case{"WEST+03:30", "-03:30", std::chrono::minutes(-210)}}) {
    const TimeZone here(zone.zone);
    ConfigureLog({0, m_folder / zone.zone});
    const auto before = std::chrono::floor<milliseconds>(system_clock::now());
    IKPXFormatLog(3, "m", "t");
    const auto after = system_clock::now();
    const LineTime time = TimeOf(m_folder.Read(zone.zone));
    EXPECT_EQ(zone.offset, time.offset);
    EXPECT_LE(before, time.local - zone.minutes);
    EXPECT_GE(after, time.local - zone.minutes);
  }
}

}  // namespace
