#pragma once

// What the parts of the crash handler share. All but PrepareStack is async-signal-safe.

#include <cstdint>

#include "reference/os/CrashHandler.h"

/// The code that a signal has interrupted; 0 when unknown.
struct Interrupted {
  std::uintptr_t instruction = 0;
  std::uintptr_t stackPointer = 0;
};

/// `context`: what the system gave to the signal's handler. Not by unwinding: the unwinder reads
/// the instruction, which is no longer there when the code was unmapped.
Interrupted InterruptedCode(const void* context) noexcept;

/// Opens what WriteCrashStack needs, while nothing has crashed yet.
void PrepareStack();

/// The stack that WriteCrashStack writes begins where the code at `caller` continues; with null, at
/// the code that a signal has interrupted.
void BeginStackAt(const void* caller) noexcept;

/// Runs `action(argument)` on the reporting thread. False when it crashed or took longer than so
/// many seconds; it is left where it was then, with whatever it holds.
bool RunGuarded(unsigned seconds, void (*action)(void*), void* argument) noexcept;

/// Does an exit of this process have to be reported?
bool ExitIsReported() noexcept;

/// Reports that `caller` called the exit function `function`, and ends the process.
[[noreturn]] void ReportExit(Crash::Kind kind, std::int64_t status, const char* function,
                             const void* caller) noexcept;

/// Ends the process without running anything else in it.
[[noreturn]] void LeaveNow(int status) noexcept;
