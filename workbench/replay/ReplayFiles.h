#pragma once

#include <string>
#include <vector>

#include "workbench/replay/Replay.h"

/// A file of a replayed product.
struct ReplayFile {
  std::string path;  // below the product's folder, with '/'; ASCII
  std::string content;
};

/// All files of the product but the stubs' libraries: model files, the stubs' behavior, unusable
/// libraries, and REPLAY.txt.
std::vector<ReplayFile> ReplayFiles(const Replay& replay, const std::string& description);

/// The file that the stubs read.
ReplayFile BehaviorFile(const Replay& replay);

/// The paths of the stubs' libraries, as in ReplayFile.
std::vector<std::string> StubLibraries(const Replay& replay);

/// What REPLAY.txt says. `arguments`: of HUB run, beside --bin.
std::string ReplayDescription(const Replay& replay, const Timeline& timeline,
                              const ReplayOptions& options, const std::string& arguments);
