#pragma once

#include <cstdint>
#include <utility>

#include "sdk/base/thread.h"
#include "src/PluginFrame/PluginFrameTask.h"

namespace PluginFrame {

/// The frame's thread pool, held for one phase and given back at its end, whatever ends it.
class ThreadPoolLease {
 public:
  /// Asks for a pool with up to `threads` threads.
  explicit ThreadPoolLease(std::int32_t threads)
      : m_granted(CThreadManager::Instance().GetAvailableThreadpool(kThreadPool, 1, threads, 0) !=
                  0) {}

  ~ThreadPoolLease() {
    try {
      Release();
    } catch (...) {
      // Something else has been thrown already, and that is told.
    }
  }
  ThreadPoolLease(const ThreadPoolLease&) = delete;
  ThreadPoolLease& operator=(const ThreadPoolLease&) = delete;

  bool Granted() const { return m_granted; }

  void Release() {
    if (std::exchange(m_granted, false)) {
      CThreadManager::Instance().ReleaseThread(kThreadPool, false);
    }
  }

 private:
  bool m_granted;
};

}  // namespace PluginFrame
