#pragma once

// What the parts of the crash handler share.

#include "reference/os/CrashHandler.h"
#include "sdk/os/os.h"

/// Where the stack of the crash begins.
struct StackBegin {
  CONTEXT context = {};
  const void* caller = nullptr;  // frames before the one that continues here are not shown
  bool withNames = true;  // false where there is too little stack, or locks may be held for ever
};

/// Constant while the crash is reported.
const StackBegin& CrashStackBegin() noexcept;

/// Runs `action(argument)` on the reporting thread. False when it crashed; it is left where it was
/// then, with whatever it holds.
bool RunGuarded(void (*action)(void*), void* argument) noexcept;
