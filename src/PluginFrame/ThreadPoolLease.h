#pragma once

#include <cstdint>
#include <utility>

#include "sdk/base/thread.h"
#include "src/PluginFrame/PluginFrameTask.h"

namespace PluginFrame {

/// Requests the frame's thread pool and releases it: in Release, or in the destructor when an
/// exception ends the phase.
class ThreadPoolLease {
 public:
  /// Requests a pool with up to `threads` threads.
  explicit ThreadPoolLease(std::int32_t threads)
      : m_granted(CThreadManager::Instance().GetAvailableThreadpool(kThreadPool, 1, threads, 0) !=
                  0) {}

  ~ThreadPoolLease() {
    try {
      Release();
    } catch (...) {
      // Another exception is unwinding: that one is reported.
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
