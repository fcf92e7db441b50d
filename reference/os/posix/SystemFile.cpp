#include "reference/os/SystemFile.h"

#include <fcntl.h>
#include <unistd.h>

SystemFile OpenForAppending(const std::filesystem::path& file) {
  const int descriptor = open(file.c_str(), O_WRONLY | O_APPEND | O_CLOEXEC);
  return descriptor < 0 ? kNoFile : descriptor;
}

void CloseFile(SystemFile file) {
  close(static_cast<int>(file));
}
