#pragma once

#include <condition_variable>
#include <cstddef>
#include <cstdint>
#include <deque>
#include <list>
#include <memory>
#include <mutex>
#include <string>

#include "sdk/base/thread.h"

/// One named pool, which runs tasks on detached threads of its own.
///
/// Shared by the manager, until its last holder has released it, and by the pool's threads, the
/// last of which frees it. All members may be called from any thread. A thread that the system
/// refuses is a logged false. Tasks, the log and the task observer are called without the mutex.
class Pool : public std::enable_shared_from_this<Pool> {
 public:
  explicit Pool(std::string name);

  /// Raises the bounds and sees to it that `least` threads, and one at the least, are there. False
  /// when there are fewer.
  bool Grow(int least, int most, int reserved);

  /// False when the pool is closed.
  bool Post(std::shared_ptr<CTMTask> task, bool urgent);

  /// Takes no task any more; the threads end when none is left.
  void Close();

  /// Returns when the tasks that have been posted until now have ended. Not for the pool's threads.
  void WaitForTasks();

  /// How many tasks of all pools wait or run.
  static std::size_t UnfinishedOfAll();

  /// Is the calling thread one of the pool's?
  bool IsOnOwnThread() const;

 private:
  struct Entry {
    std::shared_ptr<CTMTask> task;
    std::uint64_t number;
    std::uint64_t wave;
    bool urgent;
  };

  int Takeable() const;
  bool IsAtEnd() const;
  bool NeedsThread() const;
  bool StartThread();
  void Run();
  void Execute(std::shared_ptr<CTMTask> task, std::uint64_t number);
  void EndTask(const Entry& entry);

  const std::string m_name;

  std::mutex m_mutex;
  std::condition_variable m_work;   // a task may be taken, or the threads shall end
  std::condition_variable m_ended;  // a wave has ended

  // Guarded by m_mutex.
  std::list<Entry> m_urgent;
  std::list<Entry> m_ordinary;
  int m_announced = 0;  // tasks that are counted and observed but not yet in a list
  int m_least = 1;
  int m_most = 1;
  int m_reserved = 0;
  int m_threads = 0;  // with those that are being started
  int m_running = 0;
  int m_urgentRunning = 0;  // of those
  bool m_closed = false;
  // Who waits for tasks begins a new wave of them and waits for the waves before: how many tasks of
  // each have not ended, from the oldest on. The last one is the present wave.
  std::deque<std::size_t> m_waves{0};
  std::uint64_t m_oldestWave = 0;
};
