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
  fs::path file;  // empty: no record is written
  try {
    file = UseStateFolder(
        options.state.empty() ? UserStateFolder() : fs::absolute(PathFromLocal(options.state)), bin,
        clock);
  } catch (const std::exception& error) {
    if (!options.noRecord && options.record.empty()) {
      m_findings.push_back(
          {Severity::kError, std::string("no flight record: ") + error.what() + kWithoutRecord});
    }
  }
  if (!options.record.empty()) file = fs::absolute(PathFromLocal(options.record));
  if (options.noRecord) file.clear();
  // Before the file is emptied, since it may be the last run's record.
  if (m_lastRun) Recall(file);
  try {
    if (!file.empty()) m_writer.emplace(file);
    if (m_folder) m_folder->Prune(LastRun(m_folder->Path()).Record());
  } catch (const std::runtime_error& error) {
    if (!options.record.empty()) throw UsageError(error.what());
    m_findings.push_back(
        {Severity::kError, std::string("no flight record: ") + error.what() + kWithoutRecord});
  }
  if (m_lastRun) Remember();
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

/// Takes the product's lock in the state folder, even when the record lies elsewhere.
/// Returns the path that this run's record would have in that folder.
fs::path RunRecord::UseStateFolder(const fs::path& state, const fs::path& bin,
                                   const RunClock& clock) {
  if (state.empty()) throw std::runtime_error("the user has no folder for it");
  std::error_code error;
  const fs::path resolved = fs::weakly_canonical(bin, error);  // the same for every spelling of it
  const RecordFolder& folder = m_folder.emplace(state, error ? bin : resolved);
  fs::path file = folder.NewRecord(clock.UtcText(clock.nanoseconds),
                                   static_cast<std::int64_t>(ProcessNumber()));
  TakeLock(folder.Path() / "lock");
  if (m_lock) m_lastRun.emplace(folder.Path());
  return file;
}

void RunRecord::TakeLock(const fs::path& file) {
  m_lock = FileLock::TryLock(file);
  if (m_lock) return;
  m_findings.push_back(
      {Severity::kWarning, "another HUB runs this product at the same time; both use its files"});
}

/// `next`: where this run's record will lie.
void RunRecord::Recall(const fs::path& next) {
  if (const auto sentence = m_lastRun->Recall(next)) {
    m_findings.push_back({Severity::kNote, *sentence});
  }
}

void RunRecord::Remember() {
  if (!m_writer) m_unrecorded.emplace(m_lastRun->Unrecorded());
  m_lastRun->Begin(File());
}
