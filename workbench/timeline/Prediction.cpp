#include "workbench/timeline/Prediction.h"

#include <algorithm>
#include <cstdlib>
#include <utility>

#include "workbench/timeline/CriticalPath.h"

namespace {

constexpr std::int64_t kMicrosecond = 1000;

/// "806.25 ms"
std::string MillisecondsText(std::int64_t nanoseconds) {
  const std::int64_t hundredths = (nanoseconds + 5 * kMicrosecond) / (10 * kMicrosecond);
  const std::string decimals = std::to_string(100 + hundredths % 100).substr(1);
  return std::to_string(hundredths / 100) + "." + decimals + " ms";
}

PhaseTimeline TimelineOf(const PhaseTimeline& recorded, const PhaseWork& work,
                         const Schedule& schedule) {
  PhaseTimeline phase;
  phase.begun = true;
  phase.ended = true;
  phase.begin = recorded.begin;
  phase.end = recorded.begin + schedule.end;
  for (std::size_t i = 0; i < schedule.tasks.size(); ++i) {
    const ScheduledTask& task = schedule.tasks[i];
    PluginSpan span;
    span.releasedBy = task.releasedBy;
    span.posted = phase.begin + task.posted;
    span.begin = phase.begin + task.begin;
    span.end = phase.begin + task.end;
    const std::int64_t released = task.releasedBy ? schedule.tasks[*task.releasedBy].end : 0;
    span.ready = phase.begin + std::min(released, task.posted);
    span.result = recorded.spans[i].result;
    phase.spans.push_back(span);
    phase.waitsFor.push_back(work.plugins[i].waitsFor);
  }
  FillPath(phase, true);
  FillSlack(phase);
  return phase;
}

std::vector<MovedPlugin> Moved(const Schedule& before, const Schedule& after,
                               std::int64_t resolution) {
  std::vector<MovedPlugin> moved;
  for (std::size_t i = 0; i < before.tasks.size(); ++i) {
    const std::int64_t by = after.tasks[i].begin - before.tasks[i].begin;
    if (std::abs(by) > resolution) moved.push_back({i, by});
  }
  std::stable_sort(moved.begin(), moved.end(), [](const MovedPlugin& a, const MovedPlugin& b) {
    return std::abs(a.by) > std::abs(b.by);
  });
  return moved;
}

/// The phase's end when every plugin takes so many percent of its time.
std::int64_t EndWith(std::int64_t percent, PhaseWork work) {
  for (PluginWork& plugin : work.plugins) {
    plugin.work = plugin.work / 100 * percent + plugin.work % 100 * percent / 100;
  }
  return MakeSchedule(work).end;
}

}  // namespace

std::string WhyNotReproduced(const RecordedWork& recorded, const Schedule& schedule) {
  if (std::abs(schedule.end - recorded.wall) <= recorded.resolution) return std::string();
  return "it took " + MillisecondsText(recorded.wall) + ", and its work scheduled anew takes " +
         MillisecondsText(schedule.end) + ": more than its resolution of " +
         MillisecondsText(recorded.resolution) + " apart";
}

PhasePrediction Predict(const Timeline& timeline, const PhaseTimeline& phase, FrameLooks::Mode mode,
                        const std::vector<WhatIfChange>& changes) {
  PhasePrediction prediction;
  RecordedWork recorded = WorkOf(timeline, phase, mode);
  prediction.unknown = recorded.unknown;
  if (!prediction.unknown.empty()) return prediction;
  const Schedule before = MakeSchedule(recorded.work);
  prediction.recorded = recorded.wall;
  prediction.reproduced = before.end;
  prediction.resolution = recorded.resolution;
  prediction.unknown = WhyNotReproduced(recorded, before);
  if (!prediction.unknown.empty()) return prediction;
  Apply(changes, &phase == &timeline.stop, recorded);
  const Schedule after = MakeSchedule(recorded.work);
  prediction.predicted = after.end;
  const auto [shortest, longest] =
      std::minmax({after.end, EndWith(95, recorded.work), EndWith(105, recorded.work)});
  prediction.shortest = shortest;
  prediction.longest = longest;
  prediction.timeline = TimelineOf(phase, recorded.work, after);
  prediction.moved = Moved(before, after, recorded.resolution);
  return prediction;
}

RunPrediction Predict(const Timeline& timeline, FrameLooks::Mode mode,
                      std::vector<WhatIfChange> changes) {
  RunPrediction prediction;
  prediction.start = Predict(timeline, timeline.start, mode, changes);
  prediction.stop = Predict(timeline, timeline.stop, mode, changes);
  prediction.changes = std::move(changes);
  return prediction;
}
