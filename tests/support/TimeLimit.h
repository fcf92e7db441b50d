#pragma once

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <cstdlib>
#include <stdexcept>
#include <thread>

// What makes a test that hangs fail, before the test runner ends it without a reason.

/// How long a test waits for something that takes a moment unless the code is broken.
constexpr std::chrono::seconds kLongestWait{30};

/// Fails the test and ends the process: a thread that hangs cannot be joined.
[[noreturn]] inline void FailAndExit(const char* reason) {
  ADD_FAILURE() << reason;
  std::_Exit(1);
}

/// Waits until `holds()`. After kLongestWait, ends the process with the failure `reason`.
template <typename Holds>
void AwaitThat(const char* reason, Holds holds) {
  const auto end = std::chrono::steady_clock::now() + kLongestWait;
  while (!holds()) {
    if (std::chrono::steady_clock::now() > end) FailAndExit(reason);
    std::this_thread::yield();
  }
}

/// Ends a loop that calls Check in each round and gets no further for kLongestWait. Thread-safe.
class TimeLimit {
 public:
  void Restart() { m_begin = Clock::now(); }

  /// Fails the test and throws when the last Restart, or the constructor, is kLongestWait ago.
  void Check(const char* reason) const {
    if (Clock::now() - m_begin.load() < kLongestWait) return;
    ADD_FAILURE() << reason;
    throw std::runtime_error(reason);
  }

 private:
  using Clock = std::chrono::steady_clock;

  std::atomic<Clock::time_point> m_begin{Clock::now()};
};
