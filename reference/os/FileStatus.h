#pragma once

#include <filesystem>
#include <string>

/// What the system says of a file, links followed.
struct FileStatus {
  enum class Kind { kNone, kFile, kFolder, kOther };

  Kind kind = Kind::kNone;
  std::string identity;          // the same for every name of one file; empty when it is not known
  bool isWritableByAll = false;  // false where the system has no such permission
  bool isExecutable = true;      // by anybody; true where the system has no such permission
};

/// Thread-safe. Throws only std::bad_alloc.
FileStatus StatusOfFile(const std::filesystem::path& file);
