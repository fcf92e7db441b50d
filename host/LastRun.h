#pragma once

#include <filesystem>
#include <optional>
#include <string>

#include "workbench/record/FlightRecord.h"

/// Lets a run find out that the run before it was killed or crashed. A run writes the path of its
/// record to the file `last` in the product's folder of records and removes that file when it has
/// ended; a file that is still there names the record of a run that did not end.
///
/// Used only by the HUB that holds the product's lock. When the file cannot be written, the next
/// run reports nothing; the run itself is not affected.
class LastRun {
 public:
  explicit LastRun(const std::filesystem::path& folder) : m_folder(folder) {}

  /// The record of the run that is running, or that did not end; empty when there is none.
  std::filesystem::path Record() const;

  /// A sentence on how the previous run ended; none when it ended in order. Call it before Begin.
  /// `next`: the record that this run is about to write.
  std::optional<std::string> Recall(const std::filesystem::path& next) const;

  /// `record`: full path of the record of the run that begins; empty when it has none.
  void Begin(const std::filesystem::path& record) const;

  void End() const;

  /// The file to which a run without a record writes its head and, if it crashes, the crash.
  std::filesystem::path Unrecorded() const { return m_folder / "last-unrecorded"; }

 private:
  std::filesystem::path MarkerFile() const { return m_folder / "last"; }

  const std::filesystem::path m_folder;
};

/// How a run ended that did not end in order: by a crash ("so: SIGSEGV in a.server"), or because it
/// was killed. None when the record has an end and no crash.
std::optional<std::string> AbnormalEnd(const FlightRecord& record);
