#include "host/RunClock.h"

#include <fmt/chrono.h>

#include <cstdlib>
#include <ctime>

namespace {

using std::chrono::duration_cast;
using std::chrono::system_clock;

}  // namespace

RunClock RunClock::Now() {
  return {system_clock::now(), SteadyNanoseconds()};
}

std::string RunClock::UtcText(std::int64_t steadyNanoseconds) const {
  const std::chrono::nanoseconds since(steadyNanoseconds - nanoseconds);
  const auto time = wall + duration_cast<system_clock::duration>(since);
  const auto second = std::chrono::floor<std::chrono::seconds>(time);
  return fmt::format("{:%Y-%m-%dT%H:%M:%S}.{:03}Z", fmt::gmtime(system_clock::to_time_t(second)),
                     duration_cast<std::chrono::milliseconds>(time - second).count());
}

std::string RunClock::ZoneText() const {
  const std::time_t time = system_clock::to_time_t(wall);
  std::tm utc = fmt::gmtime(time);
  utc.tm_isdst = fmt::localtime(time).tm_isdst;
  const auto minutes = static_cast<int>(std::difftime(time, std::mktime(&utc)) / 60);
  return fmt::format("{}{:02}:{:02}", minutes < 0 ? '-' : '+', std::abs(minutes) / 60,
                     std::abs(minutes) % 60);
}

std::int64_t SteadyNanoseconds() {
  return duration_cast<std::chrono::nanoseconds>(
             std::chrono::steady_clock::now().time_since_epoch())
      .count();
}
