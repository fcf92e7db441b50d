#pragma once

#include <filesystem>
#include <string>
#include <vector>

#include "workbench/record/RecordedRun.h"

/// What is known of logs besides their lines.
struct LogOptions {
  std::string timeFormat;           // of the stamps, see LogStamps; empty: a form that is known
  std::vector<PluginHead> plugins;  // of the product; empty: not known
};

/// The runs of the log that these files are, oldest first. A run may begin in one file and end in
/// the next. Throws std::runtime_error with a sentence that names a file when it cannot be opened,
/// when no file has a line of the frame, or when no stamp of such a line can be read.
std::vector<RecordedRun> ReadLogRuns(const std::vector<std::filesystem::path>& files,
                                     const LogOptions& options);

/// Whether a file begins as a flight record does. False for a file that cannot be read.
bool IsFlightRecord(const std::filesystem::path& file);

/// The runs of flight records and logs, in the order of the files; renamed files of one log are
/// read as one (see GroupLogFiles). Throws std::runtime_error with a sentence that names the file
/// that cannot be read, is empty or is neither.
std::vector<RecordedRun> ReadRuns(const std::vector<std::filesystem::path>& files,
                                  const LogOptions& options);
