// The Windows functions for loading libraries and for the time, implemented by dlopen and the
// steady clock.

#include <dlfcn.h>
#include <elf.h>
#include <fcntl.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
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

bool StartsWith(const std::string& text, const std::string& words) {
  return text.compare(0, words.size(), words) == 0;
}

bool Contains(const std::string& text, const char* words) {
  return text.find(words) != std::string::npos;
}

bool IsElf(const std::string& path) {
  char magic[SELFMAG] = {};
  std::ifstream(path, std::ios::binary).read(magic, sizeof(magic));
  return std::memcmp(magic, ELFMAG, SELFMAG) == 0;
}

/// The Windows error code for a message of the loader. A message begins with the path of the
/// library or of one that it needs; only the text after it is compared, since a path may contain
/// any words.
DWORD ErrorCode(const std::string& path, const std::string& message) {
  const std::size_t nameEnd = message.find(": ", StartsWith(message, path) ? path.size() : 0);
  const std::string reason = nameEnd == std::string::npos ? message : message.substr(nameEnd);
  if (StartsWith(reason, ": undefined symbol") || Contains(reason, "not found (required by")) {
    return ERROR_PROC_NOT_FOUND;
  }
  if (faccessat(AT_FDCWD, path.c_str(), R_OK, AT_EACCESS) != 0) {
    return errno == EACCES ? ERROR_ACCESS_DENIED : ERROR_MOD_NOT_FOUND;
  }
  // The library itself exists. If it is an ELF file, the file that cannot be opened is a library
  // that it needs.
  const bool needed = IsElf(path) && !StartsWith(message, path + ": ");
  if (needed && Contains(reason, "cannot open shared object file")) return ERROR_MOD_NOT_FOUND;
  return ERROR_BAD_EXE_FORMAT;
}

/// "path: message"; the path is added unless the loader's message begins with it.
std::string WithPath(const std::string& path, const std::string& message) {
  return StartsWith(message, path + ": ") ? message : path + ": " + message;
}

/// noexcept ends the process when there is no memory for a path, or when a static constructor of
/// the library throws: the loader would stay locked, and the next load would wait for ever.
HMODULE Load(const wchar_t* path) noexcept {
  const std::string local = LocalFromWide(path);
  if (local.empty()) {  // for dlopen an empty path means the program itself
    t_error = ERROR_MOD_NOT_FOUND;
    g_log.load()("a library without a name was asked for");
    return nullptr;
  }
  void* library = dlopen(local.c_str(), RTLD_NOW | RTLD_LOCAL);
  // NOLINTNEXTLINE(concurrency-mt-unsafe): the message is stored for each thread
  const std::string message = library == nullptr ? dlerror() : std::string();
  if (library != nullptr) return library;
  t_error = ErrorCode(local, message);
  g_log.load()(WithPath(local, message).c_str());
  return nullptr;
}

}  // namespace

void SetLoaderLog(LoaderLogFn log) {
  g_log = log;
}

HMODULE LoadLibraryW(const wchar_t* path) {
  return Load(path);
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
