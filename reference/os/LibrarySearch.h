#pragma once

#include <filesystem>
#include <vector>

/// Where the system's loader looks for a library that another one needs by its name alone.
struct LibrarySearch {
  std::vector<std::filesystem::path> environment;  // folders that an environment variable adds
  std::filesystem::path cache;                     // a file that lists libraries; empty for none

  // The system's folders, in the order in which they are looked in. On Windows also those of PATH,
  // which is searched last.
  std::vector<std::filesystem::path> folders;

  // Before them the program's own folder and that of LookForLibrariesIn are looked in.
  bool looksBesideProgram = false;

  bool ignoresCase = false;  // a name in other letter case finds the file
};

/// Call it while no other thread changes the environment. Throws only std::bad_alloc.
LibrarySearch SystemLibrarySearch();
