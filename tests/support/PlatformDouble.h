#pragma once

#include <atomic>
#include <cstdint>
#include <mutex>
#include <string>
#include <thread>

#include "sdk/kpx/platform.h"

/// What the double of the platform library does unless a test scripts it: keeps the order of the
/// calls, and calls back on a thread of its own.
///
/// Owned by the Seam. Init, Start, Stop and UnInit: the host's thread; the rest: any thread.
class PlatformDouble {
 public:
  ~PlatformDouble();

  std::int32_t Init();
  std::int32_t Start(KPXStartFinishFn finished);
  std::int32_t Stop();
  std::int32_t UnInit();
  std::int32_t GetLastError(char* text, std::int32_t size);
  static std::int32_t GetVersion(char* text, std::int32_t size);

 private:
  std::int32_t Refuse(const std::string& reason);

  bool m_up = false;
  std::thread m_starter;

  std::mutex m_mutex;
  std::string m_error;  // guarded by m_mutex; empty: none
};

/// The same of the local-procedure-call framework.
class LpcDouble {
 public:
  std::int32_t Init();
  std::int32_t UnInit();

 private:
  std::atomic<bool> m_up{false};
};
