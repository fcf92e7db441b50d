#pragma once

#include <chrono>
#include <condition_variable>
#include <functional>
#include <mutex>
#include <thread>

/// Does some work on a thread of its own, at once and then once in each period, until it is
/// destroyed, which waits for the work under way. It is the last member of the class whose members
/// the work uses.
class Every {
 public:
  Every(std::chrono::milliseconds period, std::function<void()> work)
      : m_period(period), m_work(std::move(work)), m_thread([this] { Run(); }) {}

  ~Every() {
    {
      const std::lock_guard<std::mutex> lock(m_mutex);
      m_ended = true;
    }
    m_end.notify_one();
    m_thread.join();
  }

  Every(const Every&) = delete;
  Every& operator=(const Every&) = delete;

 private:
  void Run() {
    auto next = std::chrono::steady_clock::now();
    std::unique_lock<std::mutex> lock(m_mutex);
    while (!m_ended) {
      lock.unlock();
      m_work();
      next += m_period;
      lock.lock();
      m_end.wait_until(lock, next, [this] { return m_ended; });
    }
  }

  const std::chrono::milliseconds m_period;
  const std::function<void()> m_work;
  std::mutex m_mutex;
  std::condition_variable m_end;
  bool m_ended = false;  // guarded by m_mutex
  std::thread m_thread;
};
