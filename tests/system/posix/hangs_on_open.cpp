// Preloaded into HUB, simulates a folder that does not respond: a file whose path ends in
// TEV_HANGS_ON can be opened TEV_HANGS_AFTER times; every later open waits for ever.

#include <dlfcn.h>
#include <fcntl.h>
#include <unistd.h>

#include <atomic>
#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <string_view>

namespace {

std::atomic<int> g_opened{0};

void HangOn(std::string_view path) {
  const char* end = std::getenv("TEV_HANGS_ON");
  const char* after = std::getenv("TEV_HANGS_AFTER");
  if (end == nullptr || after == nullptr) return;
  const std::string_view wanted = end;
  if (path.size() < wanted.size() || path.substr(path.size() - wanted.size()) != wanted) return;
  if (g_opened.fetch_add(1) < std::atoi(after)) return;
  while (true) pause();
}

template <typename Function>
Function Next(const char* name) {
  return reinterpret_cast<Function>(dlsym(RTLD_NEXT, name));
}

}  // namespace

extern "C" {

FILE* fopen(const char* path, const char* mode) {
  HangOn(path);
  return Next<FILE* (*)(const char*, const char*)>("fopen")(path, mode);
}

FILE* fopen64(const char* path, const char* mode) {
  HangOn(path);
  return Next<FILE* (*)(const char*, const char*)>("fopen64")(path, mode);
}

}  // extern "C"
