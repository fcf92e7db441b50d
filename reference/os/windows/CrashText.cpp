#include "reference/os/CrashText.h"

#include "sdk/os/os.h"

bool WriteCrashText(SystemFile file, std::string_view text) noexcept {
  while (!text.empty()) {
    DWORD written = 0;
    const auto count = static_cast<DWORD>(text.size());
    if (WriteFile(reinterpret_cast<HANDLE>(file), text.data(), count, &written, nullptr) == 0) {
      return false;
    }
    text.remove_prefix(written);
  }
  return true;
}

SystemFile StandardError() noexcept {
  return reinterpret_cast<SystemFile>(GetStdHandle(STD_ERROR_HANDLE));
}
