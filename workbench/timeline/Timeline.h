#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "workbench/record/RecordedRun.h"
#include "workbench/record/RunState.h"

// A run laid out in time. All times are nanoseconds since the run began (RunHead::nanoseconds);
// kUnknown where the run does not say.

constexpr std::int64_t kUnknown = -1;

/// What one plugin did in one phase.
///
/// Known times are in this order: waiting for other plugins until `ready`, for the frame's next
/// look until `posted`, for a thread until `begin`; then the plugin's own work until `end`, with
/// its code between `codeBegin` and `codeEnd`. Of a phase that ended early, and in a log, any of
/// them may be unknown.
struct PluginSpan {
  enum class Result {
    kNotBegun,     // it waited until the phase, or the run, ended
    kNotReturned,  // its work began and has not ended
    kOk,
    kFailed,  // its Init
    kNotLoaded,
    kRefused,        // its stop
    kNothingToStop,  // the stop found nothing that was loaded
    kNotKnown        // its work has ended; a log does not say how
  };

  std::int64_t ready = kUnknown;
  std::int64_t posted = kUnknown;
  std::int64_t begin = kUnknown;
  std::int64_t loaded = kUnknown;     // of a start: its library was loaded, or was found unusable
  std::int64_t codeBegin = kUnknown;  // of Init or UnInit
  std::int64_t codeEnd = kUnknown;
  std::int64_t end = kUnknown;  // it was counted
  std::size_t endsAs = 0;       // its place in the order in which plugins were counted

  Result result = Result::kNotBegun;
  std::int64_t milliseconds = kUnknown;   // of its code, as measured by the frame
  std::uint64_t thread = 0;               // 0: not known
  std::optional<std::size_t> releasedBy;  // the last plugin that it waited for
  std::int64_t slack = kUnknown;          // see FillSlack

  bool HasBegun() const { return begin != kUnknown; }
  bool HasEnded() const { return end != kUnknown; }
};

/// One plugin of the critical path, with the waiting before it. Times in nanoseconds.
struct PathStep {
  std::size_t plugin = 0;
  std::optional<std::size_t> releasedBy;
  std::int64_t look = 0;  // until the frame looked and posted its task
  std::int64_t idle = 0;  // until the first look, or until a thread began its task
  std::int64_t work = 0;
};

/// Where a phase's time went: wall = path + look + idle.
struct TimeBalance {
  std::int64_t wall = 0;
  std::int64_t path = 0;  // work of the plugins on the critical path
  std::int64_t look = 0;  // waiting for the frame's next look
  std::int64_t idle = 0;  // neither: posting, waiting for a thread
  std::int64_t work = 0;  // of all plugins

  /// How many plugins worked at the same time on average.
  double Parallelism() const;
};

/// The start or the stop of the plugins.
struct PhaseTimeline {
  bool begun = false;
  bool ended = false;
  std::int64_t begin = kUnknown;
  std::int64_t end = kUnknown;  // of a phase that has not ended: the run's last event

  std::vector<PluginSpan> spans;                   // one for each of Timeline::plugins
  std::vector<std::vector<std::size_t>> waitsFor;  // the plugins that each of them waits for

  /// The plugins, first to last, each of which was released by the one before it, and the last of
  /// which ended last: what the phase's end waited for. Of a phase that has not ended, the last one
  /// is the plugin that has worked longest. Empty when the run does not say what waits for what.
  std::vector<PathStep> path;
  std::int64_t lastWait = 0;  // from the end of the path to the phase's end
  TimeBalance balance;        // without a path only wall and work are filled

  /// Whether it is known from its begin to its end, with the end of every plugin that began in it,
  /// in the start of every plugin. Not so of a start that a stop ended, and of a log that is cut.
  bool IsComplete(bool isStart) const;

  /// Whether the phase's end waited for the frame's look after the end of the path. Not so when the
  /// phase has not ended, or ended with plugins that never began: it waited for these.
  bool EndsWithLook() const;

  /// The plugins that wait for each plugin: `waitsFor` the other way round.
  std::vector<std::vector<std::size_t>> Waiters() const;
};

/// A run laid out in time.
struct Timeline {
  RecordedRun run;
  RunState state;                   // after the last event
  std::vector<PluginHead> plugins;  // that the frame starts, in the model's order
  std::int64_t last = 0;            // time of the last event
  PhaseTimeline start;
  PhaseTimeline stop;

  /// The state of one of `plugins`.
  const PluginRun& State(std::size_t plugin) const;
};

/// Lays out a run. Events may be missing, contradictory or out of order: times are then unknown, or
/// moved into the order that PluginSpan has.
Timeline MakeTimeline(RecordedRun run);
