#pragma once

#include <cstddef>
#include <filesystem>
#include <optional>
#include <string>
#include <vector>

#include "host/Commands.h"
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

  /// The record's path; empty when there is none.
  std::filesystem::path File() const;
  std::size_t LostLines() const;

  /// What is to be said at the begin: that another HUB runs the product, how its last run ended
  /// when that was a crash, why there is no record.
  const std::vector<Finding>& Findings() const { return m_findings; }

 private:
  void OpenInStateFolder(const Options& options, const std::filesystem::path& bin,
                         const RunClock& clock);
  void TakeLock(const std::filesystem::path& file);
  void RecallLastRun(const RecordFolder& folder);

  std::optional<FileLock> m_lock;
  std::optional<RecordWriter> m_writer;
  bool m_alone = false;  // nobody else holds the product's lock
  std::vector<Finding> m_findings;
};

/// How an earlier run ended, when it ended by itself neither well nor badly but was torn off: "by
/// SIGSEGV in a.server". None for a run that has an end.
std::optional<std::string> TornOff(const FlightRecord& record);
