#pragma once

#include <cstdint>
#include <filesystem>
#include <optional>

/// A lock between processes, kept by a file: at most one process at a time holds it. Move-only.
///
/// It is released by the destructor, or when the process ends in any way. The file stays: to remove
/// it would let two processes lock two files of one name. Programs that the process starts do not
/// inherit the lock, but a child of a fork that never calls exec keeps it beyond its parent's end.
/// Not thread-safe; different objects may be used on different threads.
class FileLock {
 public:
  /// Locks `file`, which is created when missing (its folder is not). Empty when it is locked
  /// already, by another process or by this one. Throws std::system_error with the file's name when
  /// it cannot be opened or locked.
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
