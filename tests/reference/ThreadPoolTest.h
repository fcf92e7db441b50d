#pragma once

#include <gtest/gtest.h>

#include <chrono>
#include <functional>
#include <memory>
#include <mutex>
#include <string>
#include <thread>
#include <utility>

#include "reference/base/Log.h"
#include "reference/base/ThreadPools.h"
#include "sdk/base/thread.h"
#include "tests/support/FunctionTask.h"

constexpr char kPool[] = "pool";

/// A list of events, in order, to which several threads add. Thread-safe.
class EventList {
 public:
  void Add(const std::string& event) {
    const std::lock_guard<std::mutex> lock(m_mutex);
    m_events += (m_events.empty() ? "" : " ") + event;
  }
  std::string Text() {
    const std::lock_guard<std::mutex> lock(m_mutex);
    return m_events;
  }

 private:
  std::mutex m_mutex;
  std::string m_events;  // guarded by m_mutex
};

/// Waits for the end of all tasks; false when some are left after 20 seconds.
inline bool EverythingIsDone() {
  const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(20);
  while (UnfinishedTasks() != 0) {
    if (std::chrono::steady_clock::now() > end) return false;
    std::this_thread::yield();
  }
  return true;
}

/// A test of the thread manager with one pool, which is released at the end.
class ThreadPool : public testing::Test {
 protected:
  ThreadPool() { ConfigureLog({0, ""}); }
  ~ThreadPool() override {
    SetLogObserver({});
    SetTaskObserver({});
    LimitPoolThreads(0);
    while (m_manager.ReleaseThread(kPool, true)) {
    }
  }

  bool Grant(int least, int most, int reserved = 0) {
    return m_manager.GetAvailableThreadpool(kPool, least, most, reserved) != 0;
  }
  bool Post(std::function<void()> work, bool urgent = false) {
    return m_manager.PostTask(std::make_shared<FunctionTask>(kPool, std::move(work)), urgent);
  }
  bool Release(bool wait) { return m_manager.ReleaseThread(kPool, wait); }

  CThreadManager& m_manager = CThreadManager::Instance();
  EventList m_eventList;
};
