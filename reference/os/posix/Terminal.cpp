#include "reference/os/Terminal.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/ioctl.h>
#include <unistd.h>

#include <cerrno>
#include <system_error>

namespace {

[[noreturn]] void Refuse(const char* what) {
  throw std::system_error(errno, std::generic_category(), what);
}

/// Opens the null device as `descriptor` if that is closed. True when it was.
bool OpenIfClosed(int descriptor) {
  if (fcntl(descriptor, F_GETFD) != -1 || errno != EBADF) return false;
  // The lowest free descriptor is returned; those below are open.
  if (open("/dev/null", O_RDWR) != descriptor) Refuse("a standard descriptor cannot be opened");
  return true;
}

}  // namespace

OwnOutput::OwnOutput() {
  OpenIfClosed(STDIN_FILENO);
  const bool wasClosed = OpenIfClosed(STDOUT_FILENO);
  OpenIfClosed(STDERR_FILENO);
  if (wasClosed) {
    Fail(EBADF);
  } else {
    m_file = fcntl(STDOUT_FILENO, F_DUPFD_CLOEXEC, STDERR_FILENO + 1);
    if (m_file == kNoFile) Refuse("standard output cannot be duplicated");
    m_isTerminal = isatty(STDOUT_FILENO) == 1;
  }
  if (dup2(STDERR_FILENO, STDOUT_FILENO) < 0) Refuse("standard output cannot be redirected");
}

OwnOutput::~OwnOutput() {
  if (m_file != kNoFile) close(static_cast<int>(m_file));
}

bool OwnOutput::Write(std::string_view text) {
  const std::lock_guard<std::mutex> lock(m_mutex);
  return !m_failed && WriteAll(text);
}

bool OwnOutput::WriteAll(std::string_view text) {
  const int file = static_cast<int>(m_file);
  while (!text.empty()) {
    const ssize_t written = write(file, text.data(), text.size());
    if (written >= 0) {
      text.remove_prefix(static_cast<std::size_t>(written));
    } else if (errno == EAGAIN) {  // whoever shares the file made it non-blocking
      pollfd ready = {file, POLLOUT, 0};
      poll(&ready, 1, -1);
    } else if (errno != EINTR) {
      Fail(errno);
      return false;
    }
  }
  return true;
}

void OwnOutput::Fail(int code) {
  m_error = std::generic_category().message(code);
  m_failed = true;
}

int OwnOutput::Columns() const {
  constexpr int unknown = 80;
  winsize size = {};
  if (ioctl(static_cast<int>(m_file), TIOCGWINSZ, &size) != 0 || size.ws_col == 0) return unknown;
  return size.ws_col;
}
