#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <vector>

// How the frame and its pool would do given work: functions from values to values. Times are
// nanoseconds since the phase began.

/// One plugin of a phase, as the scheduler needs it. Ready: it waits for no other plugin any more.
struct PluginWork {
  std::vector<std::size_t> waitsFor;  // other plugins; without cycles
  std::size_t position = 0;           // in the order in which the frame visits the plugins
  std::int64_t work = 0;
  std::int64_t toPost = 0;    // from the post before it in the same look to its own post
  std::int64_t toBegin = 0;   // from when it is posted and a thread is free to its begin
  std::int64_t toWake = 0;    // early end: from its end until the frame's sleep is ended
  std::int64_t readyLag = 0;  // from the end of the last plugin that it waits for until the frame
                              // finds it ready; may be negative, with an early end never positive
};

/// Some sleeps of the frame, one after the other.
struct Sleeps {
  std::int64_t count = 0;
  std::int64_t length = 0;
};

/// When the frame looks for ready plugins. The phase ends with the look that finds every plugin
/// ended.
struct FrameLooks {
  enum class Mode {
    kSleep,    // after each look it sleeps
    kEarlyEnd  // as kSleep, and a task's end ends the sleep
  };

  Mode mode = Mode::kSleep;
  bool always = false;         // it looks all the time and sleeps never, whatever the mode
  std::int64_t first = 0;      // the first look
  std::vector<Sleeps> sleeps;  // of kSleep, the first ones
  std::int64_t sleep = 0;      // length of every further one; above 0
  std::int64_t interval = 0;   // least time between two looks after sleeps that ended early
  std::int64_t endLag = 0;     // of kSleep: from the last end until the frame finds all ended
};

/// The work of one phase and what does it.
struct PhaseWork {
  std::vector<PluginWork> plugins;
  FrameLooks looks;
  std::size_t threads = 1;  // that do the work, in the order of the posts
};

/// When a plugin's task was posted, began and ended.
struct ScheduledTask {
  std::int64_t posted = 0;
  std::int64_t begin = 0;
  std::int64_t end = 0;
  std::optional<std::size_t> releasedBy;  // the last plugin to end of those that it waits for

  bool operator==(const ScheduledTask& other) const;
};

struct Schedule {
  std::vector<ScheduledTask> tasks;  // one for each plugin
  std::int64_t end = 0;              // of the phase
  bool threadsWereShort = false;     // a task waited for a thread

  bool operator==(const Schedule& other) const;
};

/// Whether the plugins can be ordered so that each stands after all that it waits for.
bool HasNoCycle(const std::vector<PluginWork>& plugins);

/// When everything happens. Takes O((plugins + edges) log plugins), however long the times are.
/// `work` has no cycle, and no sum of its times exceeds an int64_t.
Schedule MakeSchedule(const PhaseWork& work);
