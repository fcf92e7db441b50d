#pragma once

#include <filesystem>
#include <functional>
#include <string_view>
#include <vector>

// The files of logs and their lines.

/// Calls `visit` for each line of a file, without its end; the last one may be incomplete. A line
/// that is longer than any of the frame's (256 KiB) is left out. Needs 1 MiB of memory. Throws
/// std::runtime_error with a sentence that names the file when it cannot be opened.
void VisitLines(const std::filesystem::path& file,
                const std::function<void(std::string_view)>& visit);

/// The files of one log, which a host renames when they are full, in the order of their age: the
/// newest is the last.
using LogFileGroup = std::vector<std::filesystem::path>;

/// The files that belong together by their names: hub.log, hub.1.log and hub.2.log, or hub.log,
/// hub.log.1 and hub.log.2, where the highest number is the oldest. Where a file without a number
/// is given, the renamed files beside it are added.
std::vector<LogFileGroup> GroupLogFiles(const std::vector<std::filesystem::path>& files);
