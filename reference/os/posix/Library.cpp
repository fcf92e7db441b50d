// The library loader and the clock under their Windows names, over dlopen and the steady clock.

#include <dlfcn.h>
#include <elf.h>
#include <unistd.h>

#include <atomic>
#include <chrono>
#include <cstdio>
#include <cstring>
#include <fstream>
#include <string>

#include "reference/os/LoaderLog.h"
#include "reference/os/LocalText.h"
#include "sdk/os/os.h"

namespace {

void PrintMessage(const char* text) noexcept {
  std::fprintf(stderr, "%s\n", text);
}

std::atomic<LoaderLogFn> g_log{&PrintMessage};

thread_local DWORD t_error = 0;

bool Contains(const std::string& text, const char* words) {
  return text.find(words) != std::string::npos;
}

/// Why the loader refused the library at `path`, as a code; `message` is what it said.
DWORD ErrorCode(const std::string& path, const std::string& message) {
  if (access(path.c_str(), F_OK) != 0) return ERROR_MOD_NOT_FOUND;
  if (access(path.c_str(), R_OK) != 0) return ERROR_ACCESS_DENIED;
  if (Contains(message, "undefined symbol") || Contains(message, "symbol lookup error")) {
    return ERROR_PROC_NOT_FOUND;
  }
  char magic[SELFMAG] = {};
  std::ifstream(path, std::ios::binary).read(magic, sizeof(magic));
  if (std::memcmp(magic, ELFMAG, SELFMAG) != 0) return ERROR_BAD_EXE_FORMAT;
  // The library itself is there: what cannot be opened is one that it needs.
  if (Contains(message, "cannot open shared object file")) return ERROR_MOD_NOT_FOUND;
  return ERROR_BAD_EXE_FORMAT;
}

/// "path: message", where the loader itself may have begun its message with the path.
std::string WithPath(const std::string& path, const std::string& message) {
  return message.compare(0, path.size(), path) == 0 ? message : path + ": " + message;
}

}  // namespace

void SetLoaderLog(LoaderLogFn log) {
  g_log = log;
}

HMODULE LoadLibraryW(const wchar_t* path) {
  const std::string local = LocalFromWide(path);
  void* library = dlopen(local.c_str(), RTLD_NOW | RTLD_LOCAL);
  const char* reason = library == nullptr ? dlerror() : nullptr;
  if (library != nullptr) return library;
  const std::string message = reason != nullptr ? reason : "the loader gave no reason";
  t_error = ErrorCode(local, message);
  g_log.load()(WithPath(local, message).c_str());
  return nullptr;
}

FARPROC GetProcAddress(HMODULE library, const char* name) {
  if (library == nullptr) {
    t_error = ERROR_INVALID_HANDLE;
    return nullptr;
  }
  void* symbol = dlsym(library, name);
  if (symbol == nullptr) t_error = ERROR_PROC_NOT_FOUND;
  return reinterpret_cast<FARPROC>(symbol);
}

BOOL FreeLibrary(HMODULE library) {
  if (library == nullptr || dlclose(library) != 0) {
    t_error = ERROR_INVALID_HANDLE;
    return 0;
  }
  return 1;
}

DWORD GetLastError() {
  return t_error;
}

ULONGLONG GetTickCount64() {
  const auto now = std::chrono::steady_clock::now().time_since_epoch();
  return static_cast<ULONGLONG>(std::chrono::duration_cast<std::chrono::milliseconds>(now).count());
}
