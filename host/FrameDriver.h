#pragma once

#include <chrono>
#include <condition_variable>
#include <functional>
#include <mutex>
#include <queue>
#include <thread>

/// The thread that drives the frame: every call of its entries is made here, in order, and so is
/// all reading of the product's files, so that the run's own thread stays free for stop requests
/// and the screen however long a call takes.
///
/// One thread uses it. The destructor waits for the calls that have begun; a program that leaves
/// one behind ends without destroying its driver.
class FrameDriver {
 public:
  FrameDriver();
  ~FrameDriver();
  FrameDriver(const FrameDriver&) = delete;
  FrameDriver& operator=(const FrameDriver&) = delete;

  /// Begins `call` on the driver's thread, after those before it. What it throws ends the program.
  void Begin(std::function<void()> call);

  /// Waits for the return of all calls, at most so long. False when one has not returned yet.
  bool WaitForEnd(std::chrono::milliseconds limit);

 private:
  void Run();

  std::mutex m_mutex;
  std::condition_variable m_changed;

  // Guarded by m_mutex.
  std::queue<std::function<void()>> m_calls;  // the running one in front
  bool m_ending = false;

  std::thread m_thread;
};
