#pragma once

#include <chrono>
#include <cstdint>
#include <string>

/// A reading of the system clock and of the steady clock at the same moment: converts steady times
/// of a run to wall-clock times.
struct RunClock {
  std::chrono::system_clock::time_point wall;
  std::int64_t nanoseconds = 0;  // of the steady clock

  static RunClock Now();

  /// A time of the steady clock as 2026-11-21T18:46:59.123Z.
  std::string UtcText(std::int64_t steadyNanoseconds) const;

  /// The local time zone's offset at that moment, as +01:00.
  std::string ZoneText() const;
};

/// The steady clock's reading, in nanoseconds.
std::int64_t SteadyNanoseconds();
