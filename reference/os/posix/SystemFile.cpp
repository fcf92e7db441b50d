#include "reference/os/SystemFile.h"

#include <fcntl.h>
#include <poll.h>
#include <unistd.h>

#include <cerrno>
#include <climits>

namespace {

/// Waits until PIPE_BUF bytes can be written without blocking, at most `longestWait` milliseconds.
bool WaitForReader(int file, int longestWait) noexcept {
  pollfd ready = {file, POLLOUT, 0};
  const int count = poll(&ready, 1, longestWait);
  return count > 0 || (count < 0 && errno == EINTR);
}

}  // namespace

SystemFile OpenForAppending(const std::filesystem::path& file) {
  return open(file.c_str(), O_WRONLY | O_APPEND | O_CLOEXEC);
}

void CloseFile(SystemFile file) {
  close(static_cast<int>(file));
}

SystemFile StandardError() noexcept {
  return STDERR_FILENO;
}

bool WriteWhole(SystemFile file, std::string_view text, int longestWait) noexcept {
  const int descriptor = static_cast<int>(file);
  // A larger write might block even after a successful poll.
  const std::size_t most = longestWait == kForEver ? text.size() : PIPE_BUF;
  while (!text.empty()) {
    if (!WaitForReader(descriptor, longestWait)) return false;
    const ssize_t written = write(descriptor, text.data(), text.substr(0, most).size());
    if (written < 0 && errno != EINTR && errno != EAGAIN) return false;
    if (written > 0) text.remove_prefix(static_cast<std::size_t>(written));
  }
  return true;
}
