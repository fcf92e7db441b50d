#pragma once

#include <chrono>
#include <condition_variable>
#include <mutex>

/// Opens after `arrivals` calls of Arrive. Wait returns false after 20 seconds, so that a fault
/// makes a test fail instead of hang.
class Latch {
 public:
  explicit Latch(int arrivals = 1) : m_missing(arrivals) {}

  void Arrive() {
    const std::lock_guard<std::mutex> lock(m_mutex);
    if (--m_missing == 0) m_opened.notify_all();
  }

  bool Wait() {
    std::unique_lock<std::mutex> lock(m_mutex);
    return m_opened.wait_for(lock, std::chrono::seconds(20), [this] { return m_missing <= 0; });
  }

  bool ArriveAndWait() {
    Arrive();
    return Wait();
  }

 private:
  std::mutex m_mutex;
  std::condition_variable m_opened;
  int m_missing;  // guarded by m_mutex
};
