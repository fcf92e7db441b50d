#include "host/ReplayProduct.h"

#include <fstream>
#include <system_error>

#include "host/Commands.h"
#include "reference/os/LocalText.h"
#include "reference/os/ProcessPath.h"

namespace fs = std::filesystem;

namespace {

fs::path StubBesideProgram() {
  return PathFromLocal(ProcessPath()).parent_path() / TEV_STUB_LIBRARY;
}

void MakeFolder(const fs::path& folder) {
  std::error_code error;
  fs::create_directories(folder, error);
  if (error) {
    throw UsageError("the folder " + LocalFromPath(folder) + " cannot be made: " + error.message());
  }
}

}  // namespace

void RequireNewFolder(const char* option, const fs::path& folder) {
  std::error_code error;
  const fs::file_status status = fs::symlink_status(folder, error);
  if (status.type() == fs::file_type::not_found) return;
  const std::string name = std::string(option) + ": " + LocalFromPath(folder);
  if (!fs::is_directory(folder, error)) throw UsageError(name + " is there and is no folder");
  const bool isEmpty = fs::is_empty(folder, error);
  if (error) throw UsageError(name + " cannot be read: " + error.message());
  if (!isEmpty) throw UsageError(name + " is not empty; a replay needs a new or empty folder");
}

void WriteReplayFile(const fs::path& folder, const ReplayFile& file) {
  const fs::path path = folder / fs::path(file.path);
  MakeFolder(path.parent_path());
  std::ofstream stream(path, std::ios::binary);
  stream << file.content;
  stream.close();
  if (!stream) throw UsageError(LocalFromPath(path) + " cannot be written");
}

void WriteReplayProduct(const fs::path& folder, const Replay& replay,
                        const std::string& description) {
  const fs::path stub = StubBesideProgram();
  std::error_code error;
  if (!fs::is_regular_file(stub, error)) {
    throw UsageError("the stub library " + LocalFromPath(stub) +
                     " is missing, which is part of HUB");
  }
  for (const ReplayFile& file : ReplayFiles(replay, description)) WriteReplayFile(folder, file);
  for (const std::string& name : StubLibraries(replay)) {
    const fs::path library = folder / fs::path(name);
    fs::copy_file(stub, library, error);
    if (error) {
      throw UsageError(LocalFromPath(library) + " cannot be written: " + error.message());
    }
  }
}
