#pragma once

#include <chrono>
#include <condition_variable>
#include <functional>
#include <mutex>
#include <queue>
#include <thread>

/// The thread that calls the frame. All calls of the frame's entries and all reading of the
/// product's files happen here, in order, so that the run's thread stays free for stop requests and
/// the screen, however long a call takes.
///
/// Not thread-safe. The destructor waits for all calls; a program that does not want to wait for a
/// call must end without destroying the driver.
class FrameDriver {
 public:
  /// `onEnd`: called on the driver's thread each time a call has returned and WaitForEnd knows it.
  explicit FrameDriver(std::function<void()> onEnd = [] {});
  ~FrameDriver();
  FrameDriver(const FrameDriver&) = delete;
  FrameDriver& operator=(const FrameDriver&) = delete;

  /// Runs `call` on the driver's thread, after the earlier calls. An exception ends the program.
  void Begin(std::function<void()> call);

  /// Waits until all calls have returned, at most for `limit`. False when one has not returned yet.
  bool WaitForEnd(std::chrono::milliseconds limit);

 private:
  void Run();

  const std::function<void()> m_onEnd;

  std::mutex m_mutex;
  std::condition_variable m_changed;

  // Guarded by m_mutex.
  std::queue<std::function<void()>> m_calls;  // the running one in front
  bool m_ending = false;

  std::thread m_thread;
};
