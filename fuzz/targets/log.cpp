// A log: the runs in it are in the order of time, and what the log does not say stays unknown. A
// first line "--time-format FORMAT" is that option, and not part of the log.

#include <algorithm>
#include <set>
#include <stdexcept>
#include <utility>

#include "fuzz/FuzzTarget.h"
#include "fuzz/ReportTarget.h"
#include "workbench/record/LogRuns.h"
#include "workbench/record/LogStamp.h"

namespace {

void CheckRun(const RecordedRun& run) {
  Check(!run.knowsTasks && !run.knowsEdges, "a log knows no tasks and no edges");
  Check(run.resolution >= 1 && run.resolution <= 1'000'000'000, "a resolution is at most a second");
  std::set<std::string> plugins;
  for (const PluginHead& plugin : run.record.plugins) plugins.insert(plugin.id);
  Check(plugins.size() == run.record.plugins.size(), "a plugin is listed once");
  std::int64_t last = run.record.head.nanoseconds;
  for (const RunEvent& event : run.record.events) {
    Check(event.nanoseconds >= last, "times do not decrease");
    last = event.nanoseconds;
    Check(run.knowsThreads || event.thread == 0, "no thread is made up");
    Check(event.plugin.empty() || plugins.count(event.plugin) != 0, "a plugin of events is listed");
  }
}

}  // namespace

void Fuzz(const std::string& input) {
  const std::string option = "--time-format ";
  LogOptions options;
  std::string log = input;
  if (input.compare(0, option.size(), option) == 0) {
    const std::size_t end = std::min(input.find('\n'), input.size());
    options.timeFormat = input.substr(option.size(), end - option.size());
    log.erase(0, end + 1);
    if (!LogStamps::Problem(options.timeFormat).empty()) return;
  }
  const std::string file = FuzzFolder::Instance().Write("run.log", log);
  std::vector<RecordedRun> runs;
  try {
    runs = ReadLogRuns({file}, options);
  } catch (const std::runtime_error& error) {
    Check(std::string(error.what()).find(file) == 0, "a problem names the file");
    return;
  }
  Check(!runs.empty(), "a log without a run is a problem");
  for (RecordedRun& run : runs) {
    CheckRun(run);
    FuzzReport(std::move(run));
  }
}
