#pragma once

#include <cstdint>
#include <string>

#include "workbench/timeline/Schedule.h"
#include "workbench/timeline/Timeline.h"

/// How long the frame sleeps between two looks, when nothing ends the sleep.
constexpr std::int64_t kFrameSleep = 200'000'000;

/// How the frame slept in a run, as its head says.
FrameLooks::Mode ModeOf(const Timeline& timeline);

/// The work of a recorded phase, for the scheduler.
///
/// Its times are measured: each plugin's work, how long its post and its thread took, and how long
/// the frame slept. So MakeSchedule(work) is the recorded phase again, unless the record
/// contradicts what the frame does.
struct RecordedWork {
  std::string unknown;  // why the phase cannot be scheduled; if not empty, the rest is not filled
  PhaseWork work;
  std::int64_t wall = 0;  // as recorded

  /// How exactly the record tells times: the clock's resolution, and how late the frame woke up at
  /// most; with an early end a millisecond at least. Schedules that differ by less are the same.
  std::int64_t resolution = 0;
};

/// `phase`: the start or the stop of `timeline`. `mode`: how the frame slept.
RecordedWork WorkOf(const Timeline& timeline, const PhaseTimeline& phase, FrameLooks::Mode mode);
