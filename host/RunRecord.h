#pragma once

#include <cstddef>
#include <filesystem>
#include <optional>
#include <string>
#include <vector>

#include "host/Commands.h"
#include "host/LastRun.h"
#include "host/RunClock.h"
#include "reference/os/FileLock.h"
#include "workbench/product/Findings.h"
#include "workbench/record/FlightRecord.h"

/// The flight record of this run, in its place among those of earlier runs of the product.
///
/// Made before the run, destroyed after it; holds the product's lock meanwhile. WriteLine is called
/// from one thread at a time; the rest by the run's thread.
class RunRecord {
 public:
  /// Opens the record where `options` says, or in the user's state folder. What cannot be had is a
  /// finding, not a failure; but a --record that cannot be written throws UsageError: the user
  /// asked for it. `bin`: the product's, in full.
  RunRecord(const Options& options, const std::filesystem::path& bin, const RunClock& clock);
  RunRecord(const RunRecord&) = delete;
  RunRecord& operator=(const RunRecord&) = delete;

  void WriteLine(const std::string& line);

  /// The run has ended in order, and its record says so.
  void End();

  /// The record's full path; empty when there is none.
  std::filesystem::path File() const;

  /// Where a crash adds its line: the record, or without one what the next run recalls. Empty:
  /// nowhere.
  std::filesystem::path CrashFile() const;
  std::size_t LostLines() const;

  /// What is to be said at the begin: that another HUB runs the product, how its last run ended
  /// when that was a crash, why there is no record.
  const std::vector<Finding>& Findings() const { return m_findings; }

 private:
  std::filesystem::path UseStateFolder(const std::filesystem::path& bin, const RunClock& clock);
  void TakeLock(const std::filesystem::path& file);
  void Recall(const std::filesystem::path& next);
  void Remember();

  std::optional<RecordFolder> m_folder;  // none: there is no state folder
  std::optional<FileLock> m_lock;
  std::optional<RecordWriter> m_writer;
  std::optional<LastRun> m_lastRun;          // none: somebody else holds the product's lock
  std::optional<RecordWriter> m_unrecorded;  // of a run without a record: takes the head
  bool m_headIsWritten = false;
  std::vector<Finding> m_findings;
};
