#include "sdk/xrt/runtime.h"

#include <cstring>
#include <mutex>

#include "reference/os/ProcessPath.h"
#include "reference/xrt/ExecutablePath.h"

namespace {

std::mutex g_mutex;

/// Guarded by g_mutex. Never destroyed: a plugin's thread may read it while the process ends.
std::string& ReportedPath() {
  static std::string& path = *new std::string;
  return path;
}

}  // namespace

void SetExecutablePath(const std::string& path) {
  const std::lock_guard<std::mutex> lock(g_mutex);
  ReportedPath() = path;
}

std::int32_t XRT_GetCurExePath(char* buffer, std::int32_t size) {
  if (buffer == nullptr || size <= 0) return -1;
  buffer[0] = '\0';
  std::string path;
  {
    const std::lock_guard<std::mutex> lock(g_mutex);
    path = ReportedPath();
  }
  if (path.empty()) path = ProcessPath();
  if (path.empty() || path.size() >= static_cast<std::size_t>(size)) return -1;
  std::memcpy(buffer, path.c_str(), path.size() + 1);
  return 0;
}
