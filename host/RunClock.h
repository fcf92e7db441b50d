#pragma once

#include <chrono>
#include <cstdint>
#include <string>

/// The wall's clock and the steady one, read together: turns steady times of a run into wall times.
struct RunClock {
  std::chrono::system_clock::time_point wall;
  std::int64_t nanoseconds = 0;  // of the steady clock

  static RunClock Now();

  /// A time of the steady clock as 2026-11-21T18:46:59.123Z.
  std::string UtcText(std::int64_t steadyNanoseconds) const;

  /// The local zone's offset at the reading, as +01:00.
  std::string ZoneText() const;
};

/// The steady clock's reading, in nanoseconds.
std::int64_t SteadyNanoseconds();
