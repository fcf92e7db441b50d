#pragma once

#include <condition_variable>
#include <cstddef>
#include <cstdint>
#include <deque>
#include <list>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

#include "reference/xrt/SleepWaker.h"
#include "sdk/base/thread.h"

/// A named pool that runs tasks on its own detached threads.
///
/// Shared by the manager, until the last holder has released the pool, and by the pool's threads,
/// the last of which frees it. Thread-safe. If the system cannot create a thread, that is logged
/// and false is returned. Tasks, the log and the task observer are called without the mutex.
class Pool : public std::enable_shared_from_this<Pool> {
 public:
  explicit Pool(std::string name);

  /// Raises the bounds and starts threads until there are at least `least`, and at least one. False
  /// when there are fewer.
  bool Grow(int least, int most, int reserved);

  /// Adds the calling thread as a holder: whenever one of the pool's tasks has ended, its sleep
  /// ends early (SleepWaker). A thread that holds the pool twice is two holders.
  void AddHolder();

  /// Removes the calling thread as a holder; when it is none, the holder that came first. A thread
  /// that ends without release stays a holder, whom no task wakes. Returns how many are left.
  std::size_t RemoveHolder();

  /// False when the pool is closed.
  bool Post(std::shared_ptr<CTMTask> task, bool urgent);

  /// Accepts no more tasks; the threads end when no task is left.
  void Close();

  /// Returns when all tasks posted so far have ended. Must not be called on the pool's threads.
  void WaitForTasks();

  /// How many tasks of all pools wait or run.
  static std::size_t UnfinishedOfAll();

  /// Whether the calling thread belongs to this pool.
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
  bool EndTask(const Entry& entry);

  const std::string m_name;

  std::mutex m_mutex;
  std::condition_variable m_work;   // a task may begin, or the threads have to end
  std::condition_variable m_ended;  // a wave has ended

  // Guarded by m_mutex.
  std::list<Entry> m_urgent;
  std::list<Entry> m_ordinary;
  int m_announced = 0;  // tasks that are counted and observed but not yet in a list
  int m_least = 1;
  int m_most = 1;
  int m_reserved = 0;
  int m_threads = 0;  // including those that are being started
  int m_running = 0;
  int m_urgentRunning = 0;  // included in m_running
  bool m_closed = false;
  std::vector<SleepWaker> m_holders;  // in the order in which they came
  // Tasks are grouped in waves: WaitForTasks begins a new wave and waits for all earlier ones. Each
  // element counts the unfinished tasks of a wave, oldest first; the last is the current wave.
  std::deque<std::size_t> m_waves{0};
  std::uint64_t m_oldestWave = 0;
};
