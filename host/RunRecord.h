#pragma once

#include <cstddef>
#include <filesystem>
#include <optional>
#include <string>
#include <vector>

#include "host/Commands.h"
#include "host/Finding.h"
#include "host/LastRun.h"
#include "host/RunClock.h"
#include "reference/os/FileLock.h"
#include "workbench/record/FlightRecord.h"

/// The flight record of this run, and the folder with the records of the product's earlier runs.
///
/// Created before the run, destroyed after it; holds the product's lock meanwhile. WriteLine is
/// called by one thread at a time; the other functions by the run's thread.
class RunRecord {
 public:
  /// Opens the record given by `options`, or one in the user's state folder. If that fails, it is a
  /// finding and the run goes on; only a --record that cannot be written throws UsageError. `bin`:
  /// the full path of the product's bin folder.
  RunRecord(const Options& options, const std::filesystem::path& bin, const RunClock& clock);
  RunRecord(const RunRecord&) = delete;
  RunRecord& operator=(const RunRecord&) = delete;

  void WriteLine(const std::string& line);

  /// The run has ended in order, and its record says so.
  void End();

  /// The record's full path; empty when there is none.
  std::filesystem::path File() const;

  /// The file to which a crash appends its line: the record, or for a run without a record the file
  /// that the next run reads (LastRun::Unrecorded). Empty when there is neither.
  std::filesystem::path CrashFile() const;
  std::size_t LostLines() const;

  /// What to report when the run begins: that another HUB runs the product, that its last run did
  /// not end in order, why there is no record.
  const std::vector<Finding>& Findings() const { return m_findings; }

 private:
  std::filesystem::path UseStateFolder(const std::filesystem::path& state,
                                       const std::filesystem::path& bin, const RunClock& clock);
  void TakeLock(const std::filesystem::path& file);
  void Recall(const std::filesystem::path& next);
  void Remember();

  std::optional<RecordFolder> m_folder;  // none: there is no state folder
  std::optional<FileLock> m_lock;
  std::optional<RecordWriter> m_writer;
  std::optional<LastRun> m_lastRun;          // none: the product's lock is not held
  std::optional<RecordWriter> m_unrecorded;  // of a run without a record: only the head is written
  bool m_headIsWritten = false;
  std::vector<Finding> m_findings;
};
