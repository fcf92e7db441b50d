#pragma once

#include <memory>

/// Ends the sleeps (XRT_Sleep) of one thread early.
///
/// A value; each copy refers to the same thread, which may end before its wakers do. A thread of
/// which no waker exists, and every thread until EndSleepsEarly(true), sleeps its whole time.
/// Thread-safe.
class SleepWaker {
 public:
  /// A waker of the calling thread.
  static SleepWaker OfThisThread();

  bool IsOfThisThread() const;

  /// Ends the thread's sleep, or its next one when it does not sleep now. Wakes that come before
  /// the thread goes on count as one. Of an ended thread: does nothing.
  void Wake() const;

  struct Sleeper;

 private:
  explicit SleepWaker(std::shared_ptr<Sleeper> sleeper);

  std::shared_ptr<Sleeper> m_sleeper;
};

/// Whether wakers end sleeps early; without a call they do not, so that a host keeps the times that
/// it asks for until it decides otherwise. Sleeps that have begun are not affected. Thread-safe.
void EndSleepsEarly(bool early);
