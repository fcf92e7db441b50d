#pragma once

#include <cstddef>
#include <cstdint>

/// Decides when a stop has taken too long: after the given number of seconds in which no plugin
/// finished, or after at most five seconds when no plugin can finish any more.
///
/// Not thread-safe. All times are the steady clock's.
class StopLimit {
 public:
  StopLimit(double seconds, std::int64_t beginNs);

  /// `finished`: how many plugins have finished so far. `stuck`: the plugins that are left wait for
  /// each other or can never be counted.
  bool Expired(std::int64_t nowNs, std::size_t finished, bool stuck);

  /// The limit that applies now, in seconds.
  double Seconds() const { return m_stuck ? m_stuckSeconds : m_seconds; }

 private:
  const double m_seconds;
  const double m_stuckSeconds;
  std::int64_t m_sinceNs;
  std::size_t m_finished = 0;
  bool m_stuck = false;
};
