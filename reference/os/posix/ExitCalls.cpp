// Replaces the C library's exit functions for all libraries of the process, since the loader finds
// this library before the C library. An exit that needs no report goes on as in the C library.

#include <dlfcn.h>
#include <unistd.h>

#include <cstdlib>

#include "reference/os/posix/CrashRun.h"

namespace {

using ExitFn = void (*)(int);

/// Calls the C library's function; ends the process even if that is not found or returns.
[[noreturn]] void CallNext(const char* function, int status) {
  const auto next = reinterpret_cast<ExitFn>(dlsym(RTLD_NEXT, function));
  if (next != nullptr) next(status);
  EndProcessNow(status);
}

}  // namespace

// NOLINTBEGIN(bugprone-reserved-identifier,cert-dcl37-c,cert-dcl51-cpp): names of the C library
extern "C" {

void exit(int status) noexcept {
  if (ExitIsReported()) {
    ReportExit(Crash::Kind::kExit, status, "exit", __builtin_return_address(0));
  }
  CallNext("exit", status);
}

void quick_exit(int status) noexcept {
  if (ExitIsReported()) {
    ReportExit(Crash::Kind::kExit, status, "quick_exit", __builtin_return_address(0));
  }
  CallNext("quick_exit", status);
}

// These two are called by children of a fork, where only the plain system call is safe.

void _exit(int status) {
  if (ExitIsReported()) {
    ReportExit(Crash::Kind::kImmediateExit, status, "_exit", __builtin_return_address(0));
  }
  EndProcessNow(status);
}

void _Exit(int status) noexcept {
  if (ExitIsReported()) {
    ReportExit(Crash::Kind::kImmediateExit, status, "_Exit", __builtin_return_address(0));
  }
  EndProcessNow(status);
}

}  // extern "C"
// NOLINTEND(bugprone-reserved-identifier,cert-dcl37-c,cert-dcl51-cpp)
