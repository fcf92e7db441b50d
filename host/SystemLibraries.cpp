#include "host/SystemLibraries.h"

#include <utility>

#include "host/FrameLibrary.h"
#include "reference/os/FileStatus.h"
#include "reference/os/LibrarySearch.h"
#include "reference/os/LocalText.h"
#include "reference/os/ProcessPath.h"

namespace fs = std::filesystem;

namespace {

FileFacts::Kind KindOf(FileStatus::Kind kind) {
  switch (kind) {
    case FileStatus::Kind::kNone:
      return FileFacts::Kind::kNone;
    case FileStatus::Kind::kFile:
      return FileFacts::Kind::kFile;
    case FileStatus::Kind::kFolder:
      return FileFacts::Kind::kFolder;
    case FileStatus::Kind::kOther:
      return FileFacts::Kind::kOther;
  }
  return FileFacts::Kind::kOther;
}

FileFacts FactsOf(const fs::path& file) {
  FileStatus status = StatusOfFile(file);
  return {KindOf(status.kind), std::move(status.identity), status.isWritableByAll,
          status.isExecutable};
}

}  // namespace

LibrarySystem ThisLibrarySystem(const fs::path& bin) {
  LibrarySearch search = SystemLibrarySearch();
  LibrarySystem system;
  system.executable = PathFromLocal(ProcessPath());
  system.loaded = {PathFromLocal(FrameLibrary::PathBesideProgram())};
  system.environmentFolders = std::move(search.environment);
  system.cache = std::move(search.cache);
  system.folders = std::move(search.folders);
  system.ignoresCase = search.ignoresCase;
  system.facts = &FactsOf;
  if (search.looksBesideProgram) {
    system.folders.insert(system.folders.begin(), {system.executable.parent_path(), bin});
  }
  return system;
}
