#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <string>

/// How many tasks wait or run in all pools, including released ones. Thread-safe.
std::size_t UnfinishedTasks();

/// Limits the threads of a pool in later calls of GetAvailableThreadpool to `most`; 0: no limit.
/// A pool that already has more threads keeps them. Thread-safe.
void LimitPoolThreads(int most);

/// One step of a task in a pool; `task` numbers tasks from 1 in the process.
struct TaskEvent {
  enum class Kind { kPosted, kBegun, kEnded };
  Kind kind;
  std::uint64_t task;
  const std::string& pool;
};

/// Called on the thread where the step happens, concurrently on several threads: kPosted on the
/// thread that posts, before the task can begin; kBegun and kEnded on the task's thread, before and
/// after Exec. At kEnded the pool has released the task, but UnfinishedTasks still counts it. Must
/// not post, release a pool or set an observer; exceptions are ignored.
using TaskObserver = std::function<void(const TaskEvent&)>;

/// Sets the observer; empty: none. After the return the former observer is not called any more.
void SetTaskObserver(TaskObserver observer);

/// Sets what is called, on the task's thread, each time a task has ended and UnfinishedTasks has
/// become 0; empty: nothing. The conditions are those of the task observer.
void SetIdleObserver(std::function<void()> observer);
