#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "workbench/timeline/RecordedWork.h"
#include "workbench/timeline/WhatIf.h"

/// A plugin that would begin at another time.
struct MovedPlugin {
  std::size_t plugin = 0;
  std::int64_t by = 0;  // nanoseconds; negative: earlier
};

/// What a phase would take if something were different. Times in nanoseconds.
struct PhasePrediction {
  /// Why nothing can be predicted, in words that may follow "because"; if not empty, nothing below
  /// is filled but the times up to `resolution` when the recorded phase is not reproduced.
  std::string unknown;

  std::int64_t recorded = 0;    // the phase's time
  std::int64_t reproduced = 0;  // with the recorded work scheduled anew, nothing changed
  std::int64_t resolution = 0;  // see RecordedWork
  std::int64_t predicted = 0;   // with the changes

  /// With the changes, when every plugin takes 5 % less or 5 % more. A frame that sleeps may then
  /// find a plugin one look earlier or later, so that they can be far apart.
  std::int64_t shortest = 0;
  std::int64_t longest = 0;

  PhaseTimeline timeline;          // as predicted: posted, begin, end, path, slack, balance
  std::vector<MovedPlugin> moved;  // by more than the resolution; the most first

  std::int64_t Gain() const { return reproduced - predicted; }
};

/// Why the recorded phase is not what its work gives when it is scheduled anew; empty when it is,
/// within the resolution.
std::string WhyNotReproduced(const RecordedWork& recorded, const Schedule& schedule);

/// Schedules the recorded work of the start or the stop of `timeline` anew, with the changes.
/// `mode`: how the frame slept. Nothing is predicted from a phase that is not reproduced.
PhasePrediction Predict(const Timeline& timeline, const PhaseTimeline& phase, FrameLooks::Mode mode,
                        const std::vector<WhatIfChange>& changes);

/// What start and stop of a run would take with some changes.
struct RunPrediction {
  std::vector<WhatIfChange> changes;
  PhasePrediction start;
  PhasePrediction stop;
};

RunPrediction Predict(const Timeline& timeline, FrameLooks::Mode mode,
                      std::vector<WhatIfChange> changes);
