#include "host/LastRecord.h"

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
