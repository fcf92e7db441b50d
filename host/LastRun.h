#pragma once

#include <filesystem>
#include <optional>
#include <string>

#include "workbench/record/FlightRecord.h"

/// Remembers in a product's folder of records, between two runs, a run that has not ended: its file
/// `last` names the record of the run that goes on, and is removed when the run has ended. So the
/// next run learns of one that was killed or crashed, wherever its record lies.
///
/// Used by the one HUB that holds the product's lock. Failures of the file system lose the memory
/// and nothing else.
class LastRun {
 public:
  explicit LastRun(const std::filesystem::path& folder) : m_folder(folder) {}

  /// The record of the run that goes on, or that has not ended; empty for none.
  std::filesystem::path Record() const;

  /// What is to be said of the run before, in a sentence; none when it has ended. Before Begin.
  /// `next`: the record that is about to be written.
  std::optional<std::string> Recall(const std::filesystem::path& next) const;

  /// `record`: of the run that begins, its full path; empty when it has none.
  void Begin(const std::filesystem::path& record) const;

  void End() const;

  /// Where a run without a record leaves its head, and how it crashed.
  std::filesystem::path Unrecorded() const { return m_folder / "last-unrecorded"; }

 private:
  std::filesystem::path Memory() const { return m_folder / "last"; }

  const std::filesystem::path m_folder;
};

/// How a run without an end ended: by a crash, "so: SIGSEGV in a.server", or it was killed. None
/// for a run that has an end and no crash.
std::optional<std::string> HowItBroke(const FlightRecord& record);
