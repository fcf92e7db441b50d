#include "host/RunFiles.h"

#include <stdexcept>
#include <system_error>

#include "host/Commands.h"
#include "reference/os/LocalText.h"
#include "reference/os/UserFolders.h"
#include "workbench/record/FlightRecord.h"

namespace fs = std::filesystem;

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
    return ReadRecordedRun(file);
  } catch (const std::runtime_error& error) {
    throw UsageError(error.what());
  }
}

std::vector<RecordedRun> ReadRunFiles(const std::vector<std::string>& files,
                                      const LogOptions& logs) {
  std::vector<fs::path> paths;
  paths.reserve(files.size());
  for (const std::string& file : files) paths.push_back(PathFromLocal(file));
  try {
    return ReadRuns(paths, logs);
  } catch (const std::runtime_error& error) {
    throw UsageError(error.what());
  }
}
