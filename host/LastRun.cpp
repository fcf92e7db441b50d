#include "host/LastRun.h"

#include <exception>
#include <fstream>
#include <system_error>

#include "reference/os/LocalText.h"

namespace fs = std::filesystem;

namespace {

constexpr char kTheLastRun[] = "the last run of this product";
constexpr char kKilled[] = "before its end: it was killed, or the machine went down";

}  // namespace

std::optional<std::string> AbnormalEnd(const FlightRecord& record) {
  std::optional<std::string> how = kKilled;
  for (const RunEvent& event : record.events) {
    if (event.kind == RunEvent::Kind::kEnd) how.reset();
    if (event.kind == RunEvent::Kind::kCrash) how = "so: " + event.text;
  }
  return how;
}

fs::path LastRun::Record() const {
  std::string name;
  std::getline(std::ifstream(MarkerFile(), std::ios::binary), name);
  return fs::u8path(name);
}

std::optional<std::string> LastRun::Recall(const fs::path& next) const {
  const fs::path file = Record();
  if (file.empty()) return std::nullopt;
  std::string place = " (its record: " + LocalFromPath(file) + ")";
  if (file == Unrecorded()) place = " (it kept no record)";
  if (file == next) place = " (this run replaces its record)";
  try {
    const FlightRecord record = ReadFlightRecord(file);
    const auto how = AbnormalEnd(record);
    if (!how) return std::nullopt;
    return kTheLastRun + (", begun " + record.head.time) + ", ended " + *how + place;
  } catch (const std::exception&) {  // killed before it wrote anything, or its record was removed
    return kTheLastRun + (std::string(" ended ") + kKilled) + place;
  }
}

void LastRun::Begin(const fs::path& record) const {
  const fs::path& file = record.empty() ? Unrecorded() : record;
  std::ofstream(MarkerFile(), std::ios::binary) << file.u8string() << "\n";
}

void LastRun::End() const {
  std::error_code ignored;
  fs::remove(MarkerFile(), ignored);
  fs::remove(Unrecorded(), ignored);
}
