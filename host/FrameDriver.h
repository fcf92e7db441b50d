#pragma once

#include <chrono>
#include <condition_variable>
#include <functional>
#include <mutex>
#include <thread>

/// The thread that drives the frame: every call of its entries is made here, in order, so that the
/// host's own thread stays free for stop requests and the screen however long a call takes.
///
/// One thread uses it. The destructor waits for the call that is running; a program that leaves a
/// call behind ends without destroying its driver.
class FrameDriver {
 public:
  FrameDriver();
  ~FrameDriver();
  FrameDriver(const FrameDriver&) = delete;
  FrameDriver& operator=(const FrameDriver&) = delete;

  /// Begins `call` on the driver's thread. None may be running. What it throws ends the program.
  void Begin(std::function<void()> call);

  /// Waits for the last call's return, at most so long. False when it has not returned yet.
  bool WaitForEnd(std::chrono::milliseconds limit);

 private:
  void Run();

  std::mutex m_mutex;
  std::condition_variable m_changed;

  // Guarded by m_mutex.
  std::function<void()> m_call;
  bool m_busy = false;
  bool m_ending = false;

  std::thread m_thread;
};
