#include "host/RunRecord.h"

#include <exception>
#include <system_error>

#include "reference/os/LocalText.h"
#include "reference/os/ProcessInfo.h"
#include "reference/os/UserFolders.h"

namespace fs = std::filesystem;

namespace {

constexpr char kWithoutRecord[] = "; --no-record runs without one, --record FILE writes elsewhere";

}  // namespace

std::optional<std::string> TornOff(const FlightRecord& record) {
  std::optional<std::string> how = "without a last word: it was killed, or the machine went down";
  for (const RunEvent& event : record.events) {
    if (event.kind == RunEvent::Kind::kEnd) how.reset();
    if (event.kind == RunEvent::Kind::kCrash) how = "so: " + event.text;
  }
  return how;
}

RunRecord::RunRecord(const Options& options, const fs::path& bin, const RunClock& clock) {
  try {
    if (!options.record.empty()) m_writer.emplace(PathFromLocal(options.record));
  } catch (const std::runtime_error& error) {
    throw UsageError(error.what());
  }
  try {
    OpenInStateFolder(options, bin, clock);
  } catch (const std::exception& error) {
    if (!options.noRecord && options.record.empty()) {
      m_findings.push_back({Finding::Severity::kError,
                            std::string("no flight record: ") + error.what() + kWithoutRecord});
    }
  }
}

void RunRecord::WriteLine(const std::string& line) {
  if (m_writer) m_writer->WriteLine(line);
}

fs::path RunRecord::File() const {
  return m_writer ? m_writer->File() : fs::path();
}

std::size_t RunRecord::LostLines() const {
  return m_writer ? m_writer->LostLines() : 0;
}

/// The state folder has the product's lock and its last run, even when the record lies elsewhere.
void RunRecord::OpenInStateFolder(const Options& options, const fs::path& bin,
                                  const RunClock& clock) {
  const fs::path state = UserStateFolder();
  if (state.empty()) throw std::runtime_error("the user has no folder for it");
  std::error_code error;
  const fs::path resolved = fs::weakly_canonical(bin, error);  // one folder, however it is named
  const RecordFolder folder(state, error ? bin : resolved);
  const fs::path file = folder.NewRecord(clock.UtcText(clock.nanoseconds),
                                         static_cast<std::int64_t>(ProcessNumber()));
  TakeLock(folder.Path() / "lock");
  if (m_alone) RecallLastRun(folder);
  if (options.noRecord || !options.record.empty()) return;
  m_writer.emplace(file);
  folder.Prune();
}

void RunRecord::TakeLock(const fs::path& file) {
  m_lock = FileLock::TryLock(file);
  m_alone = m_lock.has_value();
  if (m_alone) return;
  m_findings.push_back({Finding::Severity::kWarning,
                        "another HUB runs this product at the same time; both use its files"});
}

void RunRecord::RecallLastRun(const RecordFolder& folder) {
  const std::optional<fs::path> last = folder.Last();
  if (!last) return;
  try {
    const FlightRecord record = ReadFlightRecord(*last);
    if (const auto how = TornOff(record)) {
      m_findings.push_back({Finding::Severity::kNote,
                            "the last run of this product, begun " + record.head.time + ", ended " +
                                *how + " (its record: " + LocalFromPath(*last) + ")"});
    }
  } catch (const std::exception&) {
    // A record that cannot be read says nothing about the last run.
  }
}
