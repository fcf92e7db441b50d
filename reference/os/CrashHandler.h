#pragma once

#include <cstdint>

#include "reference/os/CrashText.h"

/// Why the process ends without the program having decided it.
struct Crash {
  enum class Kind {
    kSignal,         // a fatal signal; on Windows only SIGABRT
    kException,      // an unhandled structured exception of Windows
    kTerminate,      // std::terminate: an uncaught exception, a pure virtual call
    kExit,           // exit() or quick_exit(); on Windows everything that calls ExitProcess
    kImmediateExit,  // _exit() or _Exit(); not on Windows
  };
  Kind kind = Kind::kSignal;
  std::int64_t code = 0;          // the signal, the exception's code, the exit status if known
  const char* what = "";          // in one line: "SIGSEGV at address 0x10", "exit(0)", "abort()"
  const void* address = nullptr;  // of the instruction that crashed; null when there is none
  bool alone = false;             // the system has already ended all other threads
  bool sent = false;              // sent by another process: the thread it interrupted is arbitrary
};

/// Called at most once, on the thread that crashed or called exit. It may only do what is
/// async-signal-safe (no heap, no lock, no stream). Other threads still run. If it crashes, or
/// hangs for more than some seconds, the process ends as if it had returned.
using CrashReportFn = void (*)(const Crash& crash) noexcept;

/// Calls `report` at every end of the process that the program did not announce by ExpectExit. Then
/// the process ends: by the signal, or with the exception's code (after abort() and std::terminate
/// by SIGABRT, on Windows with 0xC0000409), after an exit with `exitStatus`.
///
/// Called once, at the start of main on its thread, after OwnOutput. A stack overflow is reported
/// on that thread and on every thread that is created by pthread_create; under a sanitizer only
/// after PrepareWorkerThread. Children of a fork report nothing and end as if this had never been
/// called. Not reported are: SIGKILL, the plain system call that ends a process, and on Windows
/// TerminateProcess and abort() of another C runtime.
void InstallCrashHandler(CrashReportFn report, int exitStatus);

/// Reports an exit that the program did not announce. The executable itself must register it with
/// std::atexit; functions registered by a library run later, on Windows when the system has already
/// ended all other threads.
void ReportUnexpectedExit();

/// Announces that the program itself ends the process from now on. Thread-safe.
void ExpectExit();

/// The innermost code address on the calling thread's stack for which `isWanted` is true; null when
/// there is none. Only for a CrashReportFn.
const void* FindInCrashStack(bool (*isWanted)(const void* code)) noexcept;

/// Writes the stack of the calling thread, one line for each frame: "#0 function at file:line in
/// library"; unknown parts are left out. Only for a CrashReportFn. Takes a few seconds at most; if
/// it crashes, only the rest of the stack is missing.
void WriteCrashStack(SystemFile file) noexcept;
