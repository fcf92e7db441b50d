#pragma once

#include <condition_variable>
#include <cstdint>
#include <list>
#include <memory>
#include <mutex>
#include <set>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include "sdk/base/thread.h"

/// One granted pool: runs tasks on as many threads as it must have, in the order in which they are
/// handed over.
///
/// Owned by the Seam. Its threads start with the first task and end with the object. Any thread.
class PoolDouble {
 public:
  explicit PoolDouble(std::string name) : m_name(std::move(name)) {}
  ~PoolDouble();

  const std::string& Name() const { return m_name; }
  bool IsGranted();

  /// Counts one grant more.
  void Grant(int least, int reserved);

  /// Takes one grant back.
  void Release();

  void Run(std::shared_ptr<CTMTask> task, bool urgent);

  /// Returns when the tasks that have been handed over until now have ended; after kLongestWait,
  /// ends the process as a failed test.
  void AwaitTasks();

  bool IsOnOwnThread() const;

 private:
  struct Entry {
    std::shared_ptr<CTMTask> task;
    std::uint64_t number;
    bool urgent;
  };

  void StartThreads();
  std::list<Entry>::iterator FindNext();
  void Work();

  const std::string m_name;

  std::mutex m_mutex;
  std::condition_variable m_changed;

  // Guarded by m_mutex.
  int m_grants = 0;
  int m_least = 1;
  int m_reserved = 0;
  int m_ordinaryRunning = 0;
  bool m_closing = false;
  std::list<Entry> m_waiting;
  std::uint64_t m_lastNumber = 0;
  std::set<std::uint64_t> m_unfinished;
  std::vector<std::thread> m_threads;
};
