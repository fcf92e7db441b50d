#include "reference/os/CrashText.h"

#include <unistd.h>

#include <cerrno>

bool WriteCrashText(SystemFile file, std::string_view text) noexcept {
  while (!text.empty()) {
    const ssize_t written = write(static_cast<int>(file), text.data(), text.size());
    if (written < 0 && errno != EINTR) return false;
    if (written > 0) text.remove_prefix(static_cast<std::size_t>(written));
  }
  return true;
}

SystemFile StandardError() noexcept {
  return STDERR_FILENO;
}
