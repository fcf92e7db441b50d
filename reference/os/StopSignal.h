#pragma once

#include <chrono>

/// A person's or the system's wish that the program stop: SIGINT or SIGTERM, or what a console
/// window has in their place.
///
/// To be made at the begin of main, before any other thread, and once; asked from any thread. A
/// wish that comes before anyone asks is kept.
class StopSignal {
 public:
  /// Throws std::system_error when the system refuses to tell of such wishes.
  StopSignal();
  ~StopSignal() = default;  // the signals stay taken: a second one must not end the stop midway
  StopSignal(const StopSignal&) = delete;
  StopSignal& operator=(const StopSignal&) = delete;

  /// Waits for a wish, at most so long. True when there was one; each wish is told once.
  bool WaitFor(std::chrono::milliseconds limit);
};

/// Keeps the system from showing an error box for a library that cannot be loaded or a crash:
/// nobody sits in front of a service.
void SuppressErrorDialogs();
