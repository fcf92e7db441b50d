#include "stub/OwnLibrary.h"

#include <dlfcn.h>

namespace {

std::string OwnPath() {
  static const char inThisLibrary = 0;
  Dl_info info{};
  const bool found = dladdr(&inThisLibrary, &info) != 0 && info.dli_fname != nullptr;
  return found ? info.dli_fname : "";
}

}  // namespace

std::string OwnName() {
  const std::string path = OwnPath();
  const std::string name = path.substr(path.find_last_of('/') + 1);
  return name.substr(0, name.find_last_of('.'));
}

std::FILE* OpenBesideLibrary(const std::string& name) {
  const std::string path = OwnPath();
  return std::fopen((path.substr(0, path.find_last_of('/') + 1) + name).c_str(), "re");
}
