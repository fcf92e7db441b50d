#include "reference/os/FileLock.h"

#include <system_error>
#include <utility>

#include "reference/os/LocalText.h"
#include "sdk/os/os.h"

namespace {

HANDLE HandleOf(std::intptr_t file) {
  return reinterpret_cast<HANDLE>(file);
}

}  // namespace

std::optional<FileLock> FileLock::TryLock(const std::filesystem::path& file) {
  const HANDLE handle =
      CreateFileW(file.c_str(), GENERIC_READ | GENERIC_WRITE, FILE_SHARE_READ | FILE_SHARE_WRITE,
                  nullptr, OPEN_ALWAYS, FILE_ATTRIBUTE_NORMAL, nullptr);
  const auto fail = [&file](DWORD error, const char* what) {
    throw std::system_error(static_cast<int>(error), std::system_category(),
                            what + LocalFromPath(file));
  };
  if (handle == INVALID_HANDLE_VALUE) fail(GetLastError(), "cannot open ");
  FileLock lock(reinterpret_cast<std::intptr_t>(handle));
  OVERLAPPED place = {};
  const DWORD flags = LOCKFILE_EXCLUSIVE_LOCK | LOCKFILE_FAIL_IMMEDIATELY;
  if (LockFileEx(handle, flags, 0, 1, 0, &place) != 0) return lock;
  const DWORD error = GetLastError();
  if (error != ERROR_LOCK_VIOLATION && error != ERROR_IO_PENDING) fail(error, "cannot lock ");
  return std::nullopt;
}

void FileLock::Release() noexcept {
  if (m_file == kNone) return;
  CloseHandle(HandleOf(std::exchange(m_file, kNone)));  // releases the lock
}
