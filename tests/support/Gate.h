#pragma once

#include <chrono>
#include <condition_variable>
#include <mutex>

/// A place where one thread waits until another lets it go on. All waits end after 30 seconds, so
/// that a test that goes wrong fails instead of hanging.
class Gate {
 public:
  /// Waits until the gate is open. False when it stays closed.
  bool Pass() {
    std::unique_lock<std::mutex> lock(m_mutex);
    m_reached = true;
    m_changed.notify_all();
    return m_changed.wait_for(lock, std::chrono::seconds(30), [this] { return m_open; });
  }

  /// Waits until a thread has come to Pass. False when none comes.
  bool AwaitReached() {
    std::unique_lock<std::mutex> lock(m_mutex);
    return m_changed.wait_for(lock, std::chrono::seconds(30), [this] { return m_reached; });
  }

  bool Reached() {
    const std::lock_guard<std::mutex> lock(m_mutex);
    return m_reached;
  }

  void Open() {
    const std::lock_guard<std::mutex> lock(m_mutex);
    m_open = true;
    m_changed.notify_all();
  }

 private:
  std::mutex m_mutex;
  std::condition_variable m_changed;
  bool m_reached = false;
  bool m_open = false;
};
