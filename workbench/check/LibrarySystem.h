#pragma once

#include <filesystem>
#include <string>
#include <vector>

/// What the system says of a file.
struct FileFacts {
  enum class Kind { kNone, kFile, kFolder, kOther };

  Kind kind = Kind::kNone;
  std::string identity;  // the same for two names of one file
  bool isWritableByAll = false;
  bool isExecutable = true;
};

/// How this system loads libraries. The caller's operating-system layer knows it.
struct LibrarySystem {
  /// The program that loads the plugins: its format and machine are those that libraries need.
  std::filesystem::path executable;

  /// Libraries that the program loads before the plugins, besides those that it needs.
  std::vector<std::filesystem::path> loaded;

  /// Folders that a run's environment adds to an ELF library's search.
  std::vector<std::filesystem::path> environmentFolders;

  /// The cache of the loader of ELF libraries.
  std::filesystem::path cache;

  /// ELF: the folders that are looked in last. PE: all folders in the order in which they are
  /// looked in, those of the system as well.
  std::vector<std::filesystem::path> folders;

  /// Whether a file is found by a name in other letter case.
  bool ignoresCase = false;

  FileFacts (*facts)(const std::filesystem::path& file) = nullptr;
};
