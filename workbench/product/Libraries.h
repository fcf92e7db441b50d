#pragma once

#include <filesystem>
#include <optional>
#include <string>
#include <vector>

#include "workbench/product/LocalNames.h"

// Dynamic libraries as their headers describe them; nothing is loaded or run. Any offset may be
// wrong: nothing is read beyond the file.

/// The names of the libraries that an ELF or PE library needs, in its order. None when the file is
/// neither, or is cut short or broken where they stand.
std::optional<std::vector<std::string>> NeededLibraries(const std::filesystem::path& file);

/// The names that an ELF or PE library exports, in its order, as far as its headers can be read.
std::vector<std::string> ExportedNames(const std::filesystem::path& file);

/// Where a library is being loaded.
struct LoadingProgram {
  std::filesystem::path executable;  // its machine is the one that a library must be for

  /// Folders in which the system's loader looks for a needed PE library besides the plugin's own.
  /// Empty: not known, so that no needed PE library is called missing.
  std::vector<std::filesystem::path> folders;
};

/// Why the system's loader refused `library`, in one line that begins with the library's path or
/// with what it needs; `loaderWords` where nothing better can be said.
std::string WhyNotLoaded(const std::filesystem::path& library, const std::string& loaderWords,
                         const LoadingProgram& program, const LocalNames& names);
