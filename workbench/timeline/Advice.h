#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "workbench/timeline/RecordedWork.h"

/// What the whole phase would gain at most by a change, in nanoseconds.
struct PluginGain {
  std::size_t plugin = 0;  // if its work took no time
  std::int64_t gain = 0;
};
struct EdgeGain {
  std::size_t plugin = 0;  // if it did not depend
  std::size_t other = 0;   // on this one
  std::int64_t gain = 0;
};

/// The changes of a phase by what the whole phase would gain: upper bounds, since no plugin can
/// take less than no time, and a dependency is cut only when it is not needed. Gains of different
/// changes cannot be added up.
struct PhaseAdvice {
  static constexpr std::size_t kMost = 10;  // plugins, and edges

  std::string unknown;          // as in PhasePrediction
  std::int64_t reproduced = 0;  // the phase's time, as scheduled anew
  std::int64_t resolution = 0;  // smaller gains are left out

  std::vector<PluginGain> plugins;      // the greatest gain first
  std::vector<EdgeGain> edges;          // the greatest gain first
  std::optional<std::int64_t> poll;     // if nothing waited for the frame's looks
  std::optional<std::int64_t> workers;  // if there were a thread for each plugin
};

/// `phase`: the start or the stop of `timeline`. `mode`: how the frame slept.
PhaseAdvice Advise(const Timeline& timeline, const PhaseTimeline& phase, FrameLooks::Mode mode);

struct RunAdvice {
  PhaseAdvice start;
  PhaseAdvice stop;
};

RunAdvice Advise(const Timeline& timeline, FrameLooks::Mode mode);
