#include "reference/os/LibrarySearch.h"

#include <algorithm>
#include <string>

#include "sdk/os/os.h"

namespace fs = std::filesystem;

namespace {

/// What `get(buffer, size)` writes: it returns the length, or the size that it needs. Empty when it
/// fails.
template <typename Get>
std::wstring Text(Get get) {
  std::wstring text(MAX_PATH, L'\0');
  while (true) {
    const DWORD length = get(&text[0], static_cast<DWORD>(text.size()));
    const bool fits = length < text.size();
    text.resize(length);
    if (fits) return text;
  }
}

}  // namespace

LibrarySearch SystemLibrarySearch() {
  LibrarySearch search;
  search.looksBesideProgram = true;
  search.ignoresCase = true;
  search.folders.emplace_back(
      Text([](wchar_t* text, DWORD size) { return GetSystemDirectoryW(text, size); }));
  search.folders.emplace_back(
      Text([](wchar_t* text, DWORD size) { return GetWindowsDirectoryW(text, size); }));
  const std::wstring path =
      Text([](wchar_t* text, DWORD size) { return GetEnvironmentVariableW(L"PATH", text, size); });
  for (std::size_t begin = 0; begin < path.size();) {
    const std::size_t end = std::min(path.find(L';', begin), path.size());
    const fs::path folder = path.substr(begin, end - begin);
    if (folder.is_absolute()) search.folders.push_back(folder);
    begin = end + 1;
  }
  return search;
}
