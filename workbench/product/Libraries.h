#pragma once

#include <filesystem>
#include <optional>
#include <string>
#include <vector>

#include "workbench/product/LocalNames.h"

// Information from the headers of dynamic libraries; nothing is loaded or run. Files may be
// damaged: nothing is read outside the file.

/// The names of the libraries that an ELF or PE library needs, in the file's order. None when the
/// file is neither, or is truncated or damaged so that they cannot be read.
std::optional<std::vector<std::string>> NeededLibraries(const std::filesystem::path& file);

/// The names that an ELF or PE library exports, in the file's order, as far as they can be read.
std::vector<std::string> ExportedNames(const std::filesystem::path& file);

/// The program that loads a library.
struct LoadingProgram {
  std::filesystem::path executable;  // libraries must be for the same machine type

  /// Folders in which the system's loader looks for a needed PE library, besides the plugin's own
  /// folder. Empty: not known; then no needed PE library is reported as missing.
  std::vector<std::filesystem::path> folders;
};

/// Why the system's loader refused `library`, in one line that begins with the library's path or
/// with "needs"; `loaderWords`, the loader's message, when no better reason is found.
std::string WhyNotLoaded(const std::filesystem::path& library, const std::string& loaderWords,
                         const LoadingProgram& program, const LocalNames& names);
