#include "reference/os/UserFolders.h"

#include <pwd.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <vector>

namespace fs = std::filesystem;

namespace {

/// The absolute path in an environment variable; empty when there is none.
fs::path FromEnvironment(const char* name) {
  // NOLINTNEXTLINE(concurrency-mt-unsafe): UserStateFolder requires that no thread changes them
  const char* value = std::getenv(name);
  const fs::path path = value == nullptr ? "" : value;
  return path.is_absolute() ? path : fs::path();
}

fs::path HomeInUserDatabase() {
  std::vector<char> texts(1024);
  passwd entry = {};
  passwd* found = nullptr;
  while (getpwuid_r(getuid(), &entry, texts.data(), texts.size(), &found) == ERANGE) {
    texts.resize(texts.size() * 2);
  }
  const fs::path home = found == nullptr ? "" : found->pw_dir;
  return home.is_absolute() ? home : fs::path();
}

}  // namespace

fs::path UserStateFolder() {
  if (fs::path state = FromEnvironment("XDG_STATE_HOME"); !state.empty()) return state;
  fs::path home = FromEnvironment("HOME");
  if (home.empty()) home = HomeInUserDatabase();
  return home.empty() ? home : home / ".local" / "state";
}
