#pragma once

// Shared by the source files of the crash handler. Everything but PrepareStack is
// async-signal-safe.

#include <cstdint>

#include "reference/os/CrashHandler.h"

/// The code that a signal has interrupted; 0 when unknown.
struct Interrupted {
  std::uintptr_t instruction = 0;
  std::uintptr_t stackPointer = 0;
};

/// `context`: the third argument of the signal handler. The unwinder is not used here: it reads the
/// instruction, which does not exist any more when the code was unmapped.
Interrupted InterruptedCode(const void* context) noexcept;

/// Prepares what WriteCrashStack needs; called before any crash.
void PrepareStack();

/// Sets where the stack that WriteCrashStack writes begins: at the frame whose return address is
/// `caller`; null: at the code that a signal has interrupted.
void BeginStackAt(const void* caller) noexcept;

/// Runs `action(argument)` on the reporting thread. False when it crashed or took longer than
/// `seconds`; it is then abandoned, and locks that it holds stay locked.
bool RunGuarded(unsigned seconds, void (*action)(void*), void* argument) noexcept;

/// Whether an exit of this process has to be reported.
bool ExitIsReported() noexcept;

/// Reports that `caller` called the exit function `function`, and ends the process.
[[noreturn]] void ReportExit(Crash::Kind kind, std::int64_t status, const char* function,
                             const void* caller) noexcept;

/// Ends the process at once, without running exit handlers or destructors.
[[noreturn]] void EndProcessNow(int status) noexcept;
