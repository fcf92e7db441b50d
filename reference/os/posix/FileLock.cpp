#include "reference/os/FileLock.h"

#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>

#include <cerrno>
#include <system_error>
#include <utility>

std::optional<FileLock> FileLock::TryLock(const std::filesystem::path& file) {
  constexpr mode_t readableAndWritable = 0666;  // without the bits of the process's umask
  const int descriptor = open(file.c_str(), O_RDWR | O_CREAT | O_CLOEXEC, readableAndWritable);
  if (descriptor < 0) {
    throw std::system_error(errno, std::generic_category(), "cannot open " + file.string());
  }
  FileLock lock(descriptor);
  if (flock(descriptor, LOCK_EX | LOCK_NB) == 0) return lock;
  if (errno == EWOULDBLOCK) return std::nullopt;
  throw std::system_error(errno, std::generic_category(), "cannot lock " + file.string());
}

void FileLock::Release() noexcept {
  if (m_file == kNone) return;
  const int descriptor = static_cast<int>(std::exchange(m_file, kNone));
  flock(descriptor, LOCK_UN);  // close alone does not unlock it while a forked child has it open
  close(descriptor);
}
