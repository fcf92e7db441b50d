#include "reference/os/SystemFile.h"

#include <algorithm>

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

SystemFile StandardError() noexcept {
  return reinterpret_cast<SystemFile>(GetStdHandle(STD_ERROR_HANDLE));
}

bool WriteWhole(SystemFile file, std::string_view text, int) noexcept {
  constexpr std::size_t most = 1U << 30U;
  while (!text.empty()) {
    const auto count = static_cast<DWORD>(std::min(most, text.size()));
    DWORD written = 0;
    if (WriteFile(reinterpret_cast<HANDLE>(file), text.data(), count, &written, nullptr) == 0) {
      return false;
    }
    text.remove_prefix(written);
  }
  return true;
}
