#include <algorithm>
#include <cstdlib>
#include <exception>
#include <iostream>
#include <string>
#include <vector>

#include "workbench/timeline/Advice.h"
#include "workbench/timeline/Prediction.h"

// what_if_figures RECORD [CHANGE]...: predicts start and stop of a recorded run, and prints for
// each a line of JSON: the times in nanoseconds, and how far the plugin that is reproduced worst is
// off.

namespace {

std::int64_t WorstPlugin(const PhaseTimeline& phase, FrameLooks::Mode mode,
                         const Timeline& timeline) {
  const RecordedWork recorded = WorkOf(timeline, phase, mode);
  const Schedule schedule = MakeSchedule(recorded.work);
  std::int64_t worst = 0;
  for (std::size_t i = 0; i < schedule.tasks.size(); ++i) {
    const PluginSpan& span = phase.spans[i];
    const ScheduledTask& task = schedule.tasks[i];
    worst = std::max({worst, std::abs(task.posted - (span.posted - phase.begin)),
                      std::abs(task.begin - (span.begin - phase.begin)),
                      std::abs(task.end - (span.end - phase.begin))});
  }
  return worst;
}

void Print(const char* name, const Timeline& timeline, const PhaseTimeline& phase,
           const std::vector<WhatIfChange>& changes) {
  const FrameLooks::Mode mode = ModeOf(timeline);
  const PhasePrediction prediction = Predict(timeline, phase, mode, changes);
  std::cout << R"({"phase":")" << name << R"(","unknown":")" << prediction.unknown
            << R"(","recorded":)" << prediction.recorded << R"(,"reproduced":)"
            << prediction.reproduced << R"(,"resolution":)" << prediction.resolution
            << R"(,"worstPlugin":)" << WorstPlugin(phase, mode, timeline) << R"(,"predicted":)"
            << prediction.predicted << R"(,"shortest":)" << prediction.shortest << R"(,"longest":)"
            << prediction.longest << "}\n";
}

int Run(const std::vector<std::string>& arguments) {
  const Timeline timeline = MakeTimeline(ReadRecordedRun(arguments.at(0)));
  const ParsedWhatIf parsed = ParseWhatIf({arguments.begin() + 1, arguments.end()}, timeline);
  if (!parsed.error.empty()) {
    std::cerr << parsed.error << "\n";
    return 2;
  }
  Print("start", timeline, timeline.start, parsed.changes);
  Print("stop", timeline, timeline.stop, parsed.changes);
  return 0;
}

}  // namespace

int main(int argc, char** argv) {
  try {
    return Run({argv + 1, argv + argc});
  } catch (const std::exception& error) {
    std::cerr << error.what() << "\n";
    return 2;
  }
}
