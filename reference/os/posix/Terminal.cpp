#include "reference/os/Terminal.h"

#include <fcntl.h>
#include <sys/ioctl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <system_error>

namespace {

[[noreturn]] void Refuse(const char* what) {
  throw std::system_error(errno, std::generic_category(), what);
}

/// Opens the null device as `descriptor` if that is closed. True when it was closed.
bool OpenIfClosed(int descriptor) {
  if (fcntl(descriptor, F_GETFD) != -1 || errno != EBADF) return false;
  // open returns the lowest free descriptor, and all below `descriptor` are open.
  if (open("/dev/null", O_RDWR) != descriptor) Refuse("a standard descriptor cannot be opened");
  return true;
}

bool AreOneTerminal(int one, int other) {
  struct stat first = {};
  struct stat second = {};
  return isatty(one) == 1 && isatty(other) == 1 && fstat(one, &first) == 0 &&
         fstat(other, &second) == 0 && first.st_rdev == second.st_rdev;
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
    m_isTerminalOfErrors = AreOneTerminal(STDOUT_FILENO, STDERR_FILENO);
  }
  if (dup2(STDERR_FILENO, STDOUT_FILENO) < 0) Refuse("standard output cannot be redirected");
}

OwnOutput::~OwnOutput() {
  if (m_file != kNoFile) close(static_cast<int>(m_file));
}

bool OwnOutput::Write(std::string_view text) {
  const std::lock_guard<std::mutex> lock(m_mutex);
  if (m_failed) return false;
  if (!WriteWhole(m_file, text, kForEver)) Fail(errno);
  return !m_failed;
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
