#pragma once

// Shared by the source files of the crash handler.

#include "reference/os/CrashHandler.h"
#include "sdk/os/os.h"

/// Where the stack of the crash begins.
struct StackBegin {
  CONTEXT context = {};
  const void* caller = nullptr;  // the return address of the first frame to show; null: all
  bool withNames = true;  // false when there is too little stack, or locks may be held for ever
};

/// Constant while the crash is reported.
const StackBegin& CrashStackBegin() noexcept;

/// Runs `action(argument)` on the reporting thread. False when it crashed; it is then abandoned,
/// and locks that it holds stay locked.
bool RunGuarded(void (*action)(void*), void* argument) noexcept;
