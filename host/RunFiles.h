#pragma once

#include <filesystem>
#include <optional>
#include <string>
#include <vector>

#include "host/Commands.h"
#include "workbench/record/LogRuns.h"
#include "workbench/record/RecordedRun.h"

// The runs that the command line names.

/// The record of the last run: of the product in `bin`, or of any when `bin` is empty; none when
/// the user's state folder has no such record.
std::optional<std::filesystem::path> FindLastRecord(const std::string& bin);

/// The same; throws UsageError when there is none.
std::filesystem::path LastRecord(const std::string& bin);

/// The run of a flight record. Throws UsageError with a sentence when it cannot be read.
RecordedRun ReadRecord(const std::filesystem::path& file);

/// How the logs among `files` are read: with the dependencies of the product in --bin, which is
/// read only when there is a log. Throws UsageError when the product or the time format cannot be
/// used.
LogOptions LogOptionsOf(const std::vector<std::string>& files, const RunsOptions& runs,
                        const Options& options, HostContext& context);

/// The run that `runs` names. Throws UsageError with a sentence when it cannot be read.
RecordedRun ReadRun(const RunsOptions& runs, const Options& options, const LogOptions& logs);

/// The runs of flight records and logs, in the order of the files; at least one. Throws UsageError
/// with a sentence when one cannot be read.
std::vector<RecordedRun> ReadRunFiles(const std::vector<std::string>& files,
                                      const LogOptions& logs);
