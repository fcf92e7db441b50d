#include "host/ProductFolder.h"

#include <filesystem>

#include "reference/os/LibraryFolder.h"
#include "reference/os/LocalText.h"
#include "reference/os/ProcessPath.h"
#include "reference/xrt/ExecutablePath.h"

namespace fs = std::filesystem;

void UseProductFolder(const std::string& bin) {
  if (bin.empty()) return;
  const fs::path extension = fs::path(ProcessPath()).extension();
  const fs::path folder = fs::absolute(PathFromLocal(bin)).make_preferred();
  SetExecutablePath(LocalFromPath(folder / fs::path("HUB").replace_extension(extension)));
  LookForLibrariesIn(LocalFromPath(folder));
}
