#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <string>

/// How many tasks wait or run, over all pools, those released included. Any thread.
std::size_t UnfinishedTasks();

/// Later calls of GetAvailableThreadpool grant at most so many threads, however many are asked for;
/// 0: no limit. A pool that has more already keeps them. Any thread.
void LimitPoolThreads(int most);

/// One step of a task in a pool; `task` numbers tasks from 1 in the process.
struct TaskEvent {
  enum class Kind { kPosted, kBegun, kEnded };
  Kind kind;
  std::uint64_t task;
  const std::string& pool;
};

/// Called on the thread where the step happens: kPosted on the one that posts, before any pool
/// thread can begin the task; kBegun and kEnded on the task's thread, around Exec (kEnded before
/// UnfinishedTasks counts it as finished, after the pool dropped the task). Several at once. Must
/// not post, release or set an observer; what it throws is dropped.
using TaskObserver = std::function<void(const TaskEvent&)>;

/// Sets the observer, or none when empty. The one before is not called any more after the return.
void SetTaskObserver(TaskObserver observer);
