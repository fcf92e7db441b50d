#include "reference/os/ProcessPath.h"

#include <filesystem>
#include <system_error>

std::string ProcessPath() {
  std::error_code error;
  return std::filesystem::read_symlink("/proc/self/exe", error).string();
}
