#include "host/RunFiles.h"

#include <algorithm>
#include <stdexcept>
#include <system_error>
#include <utility>

#include "host/LastRun.h"
#include "host/PluginHeads.h"
#include "host/ProductCheck.h"
#include "host/RunClock.h"
#include "reference/os/FileLock.h"
#include "reference/os/LocalText.h"
#include "reference/os/UserFolders.h"
#include "workbench/output/Text.h"
#include "workbench/record/FlightRecord.h"
#include "workbench/record/LogStamp.h"

namespace fs = std::filesystem;

namespace {

/// Whether a HUB still writes the record: its run is the last one of the product, which it locks.
bool GoesOn(const fs::path& file, const RecordedRun& run) {
  const std::string& bin = run.record.head.path;
  if (bin.empty()) return false;
  const RecordFolder folder(UserStateFolder(), fs::u8path(bin).parent_path());
  std::error_code error;
  if (!fs::equivalent(LastRun(folder.Path()).Record(), file, error) || error) return false;
  try {
    return !FileLock::TryLock(folder.Path() / "lock");
  } catch (const std::system_error&) {
    return false;
  }
}

/// Lets the time of a record's run that still goes on reach until now.
void ReachUntilNow(RecordedRun& run) {
  if (run.source != RecordedRun::Source::kRecord) return;
  if (GoesOn(fs::u8path(run.name), run)) run.now = SteadyNanoseconds();
}

}  // namespace

std::optional<fs::path> FindLastRecord(const std::string& bin) {
  const fs::path state = UserStateFolder();
  if (bin.empty()) return NewestRecord(state);
  std::error_code error;
  const fs::path full = fs::absolute(PathFromLocal(bin));
  const fs::path resolved = fs::weakly_canonical(full, error);
  return RecordFolder(state, error ? full : resolved).Newest();
}

fs::path LastRecord(const std::string& bin) {
  if (const std::optional<fs::path> newest = FindLastRecord(bin)) return *newest;
  throw UsageError((bin.empty() ? "there is no record of a run"
                                : "there is no record of a run of the product in " + bin) +
                   "; HUB run writes one, or name its file: HUB report FILE");
}

RecordedRun ReadRecord(const fs::path& file) {
  try {
    RecordedRun run = ReadRecordedRun(file);
    ReachUntilNow(run);
    return run;
  } catch (const std::runtime_error& error) {
    throw UsageError(error.what());
  }
}

LogOptions LogOptionsOf(const std::vector<std::string>& files, const RunsOptions& runs,
                        const Options& options, HostContext& context) {
  LogOptions logs;
  logs.timeFormat = runs.timeFormat;
  if (!runs.timeFormat.empty()) {
    const std::string problem = LogStamps::Problem(runs.timeFormat);
    if (!problem.empty()) throw UsageError("--time-format: " + problem);
  }
  const bool all = std::all_of(files.begin(), files.end(), [](const std::string& file) {
    return IsFlightRecord(PathFromLocal(file));
  });
  if (options.bin.empty() || all) return logs;
  if (const auto product = ReadProductIn(options.bin, options.module, context)) {
    logs.plugins = PluginHeads(product->model, options.bin + "/");
  }
  return logs;
}

RecordedRun ReadRun(const RunsOptions& runs, const Options& options, const LogOptions& logs) {
  if (runs.files.empty()) return ReadRecord(LastRecord(options.bin));
  std::vector<RecordedRun> all = ReadRunFiles(runs.files, logs);
  if (runs.run > all.size()) {
    throw UsageError("--run: there " + std::string(all.size() == 1 ? "is " : "are ") +
                     Count(all.size(), "run"));
  }
  return std::move(all[runs.run == 0 ? all.size() - 1 : runs.run - 1]);
}

std::vector<RecordedRun> ReadRunFiles(const std::vector<std::string>& files,
                                      const LogOptions& logs) {
  std::vector<fs::path> paths;
  paths.reserve(files.size());
  for (const std::string& file : files) paths.push_back(PathFromLocal(file));
  try {
    std::vector<RecordedRun> runs = ReadRuns(paths, logs);
    for (RecordedRun& run : runs) ReachUntilNow(run);
    return runs;
  } catch (const std::runtime_error& error) {
    throw UsageError(error.what());
  }
}
