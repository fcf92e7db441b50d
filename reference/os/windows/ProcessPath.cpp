#include "reference/os/ProcessPath.h"

#include "reference/os/LocalText.h"
#include "sdk/os/os.h"

std::string ProcessPath() {
  std::wstring path(MAX_PATH, L'\0');
  while (true) {
    const DWORD length = GetModuleFileNameW(nullptr, &path[0], static_cast<DWORD>(path.size()));
    if (length < path.size()) {  // 0 on failure
      path.resize(length);
      return LocalFromWide(path);
    }
    path.resize(path.size() * 2);
  }
}
