#pragma once

#include <cstdint>

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

  ~ThreadPoolLease() { Release(); }
  ThreadPoolLease(const ThreadPoolLease&) = delete;
  ThreadPoolLease& operator=(const ThreadPoolLease&) = delete;

  bool Granted() const { return m_granted; }

  void Release() {
    if (m_granted) CThreadManager::Instance().ReleaseThread(kThreadPool, false);
    m_granted = false;
  }

 private:
  bool m_granted;
};

}  // namespace PluginFrame
