#pragma once

#include <filesystem>
#include <string>

#include "workbench/replay/ReplayFiles.h"

// Replayed products on disk.

/// Throws UsageError, with a sentence that begins with `option`, when `folder` is there and is not
/// an empty folder.
void RequireNewFolder(const char* option, const std::filesystem::path& folder);

/// Writes the product into `folder`, which is created. The stub library is that beside HUB.
/// `description`: the text of REPLAY.txt. Throws UsageError that names the file which cannot be
/// read or written.
void WriteReplayProduct(const std::filesystem::path& folder, const Replay& replay,
                        const std::string& description);

/// Writes one file of the product. Throws UsageError.
void WriteReplayFile(const std::filesystem::path& folder, const ReplayFile& file);
