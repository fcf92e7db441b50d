#include "sdk/base/path.h"

#include "reference/os/LocalText.h"
#include "sdk/xrt/runtime.h"

std::string GetCurExeDir() {
  // Longer than any path that a system returns.
  std::string path(65536, '\0');
  if (XRT_GetCurExePath(path.data(), static_cast<std::int32_t>(path.size())) != 0)
    return std::string();
  path.resize(path.find('\0'));
  return path.substr(0, path.find_last_of("/\\") + 1);
}

std::wstring LocalToWide(const std::string& text) {
  return WideFromLocal(text);
}
