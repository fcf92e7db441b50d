#include "reference/os/LibrarySearch.h"

#include <dlfcn.h>

#include <algorithm>

#include <cstdio>
#include <cstdlib>
#include <string>

namespace fs = std::filesystem;

namespace {

/// The folders in `list`, separated by colons or semicolons. An empty one, which means the current
/// folder, is left out.
std::vector<fs::path> Folders(const std::string& list) {
  std::vector<fs::path> folders;
  for (std::size_t begin = 0; begin < list.size();) {
    const std::size_t end = std::min(list.find_first_of(":;", begin), list.size());
    if (end > begin) folders.emplace_back(list.substr(begin, end - begin));
    begin = end + 1;
  }
  return folders;
}

/// The folder of the C library: it depends on the processor, and is the first default folder.
fs::path FolderOfTheCLibrary() {
  Dl_info info = {};
  const bool isFound = dladdr(reinterpret_cast<void*>(&std::fopen), &info) != 0;
  return isFound && info.dli_fname != nullptr ? fs::path(info.dli_fname).parent_path() : fs::path();
}

}  // namespace

LibrarySearch SystemLibrarySearch() {
  LibrarySearch search;
  // NOLINTNEXTLINE(concurrency-mt-unsafe): see the header
  const char* environment = std::getenv("LD_LIBRARY_PATH");
  if (environment != nullptr) search.environment = Folders(environment);
  search.cache = "/etc/ld.so.cache";
  const fs::path own = FolderOfTheCLibrary();
  if (own.is_absolute()) search.folders = {own, "/usr" / own.relative_path()};
  for (const char* folder : {"/lib64", "/usr/lib64", "/lib", "/usr/lib"}) {
    search.folders.emplace_back(folder);
  }
  return search;
}
