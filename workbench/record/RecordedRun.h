#pragma once

#include <cstdint>
#include <filesystem>
#include <string>
#include <vector>

#include "workbench/record/FlightRecord.h"

/// One run, as read from a flight record or from a log.
///
/// A log does not say everything that a record does: what is not known is said here, and is not
/// derived from anything else.
struct RecordedRun {
  enum class Source { kRecord, kLog };

  Source source = Source::kRecord;
  std::string name;             // for messages: the file; of several runs in a log also which one
  FlightRecord record;          // of a log: the events that its lines stand for
  std::int64_t resolution = 1;  // nanoseconds; closer times cannot be told apart
  bool knowsTasks = true;       // when tasks were posted and begun
  bool knowsThreads = true;
  bool knowsEdges = true;          // PluginHead::dependsOn
  std::vector<std::string> notes;  // sentences: why times or results may be wrong or are missing
  std::int64_t now = 0;  // of a run that still goes on: when it was read, on the record's clock
};

/// Sentences on how the run was asked to go that matter for its times: that starts were delayed, or
/// that the frame slept its whole time.
std::vector<std::string> NotesOn(const RunHead& head);

/// The run of a flight record. Throws as ReadFlightRecord does.
RecordedRun ReadRecordedRun(const std::filesystem::path& file);
