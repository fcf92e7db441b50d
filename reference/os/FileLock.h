#pragma once

#include <cstdint>
#include <filesystem>
#include <optional>

/// A lock on a file that at most one process at a time holds. Move-only.
///
/// Released by the destructor or when the process ends in any way. The file is not removed:
/// otherwise two processes could lock two different files with the same name. Programs that the
/// process starts do not inherit the lock, but a forked child that never calls exec keeps it even
/// after its parent has ended.
/// Not thread-safe; different objects may be used on different threads.
class FileLock {
 public:
  /// Locks `file`, which is created if it is missing; its folder must exist. Empty when it is
  /// already locked, by another process or by this one. Throws std::system_error with the file's
  /// name when it cannot be opened or locked.
  static std::optional<FileLock> TryLock(const std::filesystem::path& file);

  FileLock(FileLock&& other) noexcept;
  FileLock& operator=(FileLock&& other) noexcept;
  ~FileLock();

 private:
  static constexpr std::intptr_t kNone = -1;

  explicit FileLock(std::intptr_t file) : m_file(file) {}
  void Release() noexcept;

  std::intptr_t m_file;  // the descriptor, on Windows the handle; kNone once moved from
};
