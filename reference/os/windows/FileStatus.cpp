#include "reference/os/FileStatus.h"

#include "sdk/os/os.h"

FileStatus StatusOfFile(const std::filesystem::path& file) {
  FileStatus status;
  // Without this flag a folder cannot be opened.
  const HANDLE handle =
      CreateFileW(file.c_str(), 0, FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE, nullptr,
                  OPEN_EXISTING, FILE_FLAG_BACKUP_SEMANTICS, nullptr);
  if (handle == INVALID_HANDLE_VALUE) return status;
  BY_HANDLE_FILE_INFORMATION found = {};
  const bool isKnown = GetFileInformationByHandle(handle, &found) != 0;
  CloseHandle(handle);
  if (!isKnown) {
    status.kind = FileStatus::Kind::kOther;
    return status;
  }
  const bool isFolder = (found.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY) != 0;
  status.kind = isFolder ? FileStatus::Kind::kFolder : FileStatus::Kind::kFile;
  status.identity = std::to_string(found.dwVolumeSerialNumber) + ":" +
                    std::to_string(found.nFileIndexHigh) + ":" +
                    std::to_string(found.nFileIndexLow);
  return status;
}
