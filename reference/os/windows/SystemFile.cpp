#include "reference/os/SystemFile.h"

#include "sdk/os/os.h"

SystemFile OpenForAppending(const std::filesystem::path& file) {
  const HANDLE handle = CreateFileW(file.c_str(), FILE_APPEND_DATA,
                                    FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE, nullptr,
                                    OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr);
  return handle == INVALID_HANDLE_VALUE ? kNoFile : reinterpret_cast<SystemFile>(handle);
}

void CloseFile(SystemFile file) {
  CloseHandle(reinterpret_cast<HANDLE>(file));
}
