#include "reference/os/FileStatus.h"

#include <sys/stat.h>

FileStatus StatusOfFile(const std::filesystem::path& file) {
  FileStatus status;
  struct stat found = {};
  if (stat(file.c_str(), &found) != 0) return status;
  if (S_ISREG(found.st_mode)) {
    status.kind = FileStatus::Kind::kFile;
  } else {
    status.kind = S_ISDIR(found.st_mode) ? FileStatus::Kind::kFolder : FileStatus::Kind::kOther;
  }
  status.identity = std::to_string(found.st_dev) + ":" + std::to_string(found.st_ino);
  const bool onlyOwn = status.kind == FileStatus::Kind::kFolder && (found.st_mode & S_ISVTX) != 0;
  status.isWritableByAll = (found.st_mode & S_IWOTH) != 0 && !onlyOwn;
  status.isExecutable = (found.st_mode & (S_IXUSR | S_IXGRP | S_IXOTH)) != 0;
  return status;
}
