#include "reference/os/FileLock.h"

#include <utility>

FileLock::FileLock(FileLock&& other) noexcept : m_file(std::exchange(other.m_file, kNone)) {}

FileLock& FileLock::operator=(FileLock&& other) noexcept {
  if (this == &other) return *this;
  Release();
  m_file = std::exchange(other.m_file, kNone);
  return *this;
}

FileLock::~FileLock() {
  Release();
}
