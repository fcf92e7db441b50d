#include "host/RunRecord.h"

#include <exception>
#include <system_error>
#include <utility>

#include "reference/os/LocalText.h"
#include "reference/os/ProcessInfo.h"
#include "reference/os/UserFolders.h"

namespace fs = std::filesystem;

namespace {

constexpr char kWithoutRecord[] = "; --no-record runs without one, --record FILE writes elsewhere";

}  // namespace

RunRecord::RunRecord(const Options& options, const fs::path& bin, const RunClock& clock) {
  try {
    if (!options.record.empty()) {
      m_writer.emplace(fs::absolute(PathFromLocal(options.record)));
    }
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
  if (m_writer) {
    m_writer->WriteLine(line);
  } else if (m_unrecorded && !std::exchange(m_headIsWritten, true)) {
    m_unrecorded->WriteLine(line);
  }
}

void RunRecord::End() {
  if (m_lastRun) m_lastRun->End();
}

fs::path RunRecord::File() const {
  return m_writer ? m_writer->File() : fs::path();
}

fs::path RunRecord::CrashFile() const {
  return m_unrecorded ? m_unrecorded->File() : File();
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
  if (!options.noRecord && options.record.empty()) {
    m_writer.emplace(file);
    folder.Prune();
  }
  if (m_lock) RememberRun(folder);
}

void RunRecord::TakeLock(const fs::path& file) {
  m_lock = FileLock::TryLock(file);
  if (m_lock) return;
  m_findings.push_back({Finding::Severity::kWarning,
                        "another HUB runs this product at the same time; both use its files"});
}

void RunRecord::RememberRun(const RecordFolder& folder) {
  m_lastRun.emplace(folder.Path());
  if (const auto sentence = m_lastRun->Recall()) {
    m_findings.push_back({Finding::Severity::kNote, *sentence});
  }
  if (!m_writer) m_unrecorded.emplace(m_lastRun->Unrecorded());
  m_lastRun->Begin(File());
}
