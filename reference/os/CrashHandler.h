#pragma once

#include <cstdint>

#include "reference/os/CrashText.h"

/// How the process is about to end although the program itself did not decide so.
struct Crash {
  enum class Kind {
    kSignal,         // a fatal signal; on Windows only SIGABRT
    kException,      // an unhandled structured exception of Windows
    kTerminate,      // std::terminate: an exception that nobody caught, a pure virtual call
    kExit,           // exit() or quick_exit(); on Windows whatever ends in ExitProcess
    kImmediateExit,  // _exit() or _Exit(); not on Windows
  };
  Kind kind = Kind::kSignal;
  std::int64_t code = 0;          // the signal, the exception's code, the exit status if known
  const char* what = "";          // in one line: "SIGSEGV at address 0x10", "exit(0)", "abort()"
  const void* address = nullptr;  // of the instruction that crashed; null when there is none
  bool alone = false;             // all other threads have been ended
  bool sent = false;              // by another process: which thread that interrupted is chance
};

/// Called at most once, on the thread that crashed or called exit, in whatever state the process
/// is: may only do what is async-signal-safe (no heap, no lock, no stream). Other threads still
/// run. A crash or a hang of more than some seconds in it ends the process as if it had returned.
using CrashReportFn = void (*)(const Crash& crash) noexcept;

/// Reports every end of the process that the program did not announce by ExpectExit. Afterwards the
/// process ends: by the signal or with the exception's code where there is one (for abort() and
/// std::terminate SIGABRT, on Windows 0xC0000409), else with `exitStatus`.
///
/// Called once, at the begin of main on its thread, after OwnOutput. An overflow of the stack is
/// reported on that thread and on every one that is created by pthread_create, under a sanitizer
/// only after PrepareWorkerThread. Children of a fork report nothing and end as if this had never
/// been called. What cannot be reported: SIGKILL, the plain system call that ends a process, and on
/// Windows TerminateProcess and abort() of another C runtime.
void InstallCrashHandler(CrashReportFn report, int exitStatus);

/// Reports an exit that the program did not announce; to be registered with std::atexit by the
/// executable itself. What a library registers is called later: on Windows when the system has
/// ended all other threads.
void ReportUnexpectedExit();

/// From now on an exit is the program's own. Any thread.
void ExpectExit();

/// The innermost code of the calling thread's stack that `isWanted`; null for none. Only for a
/// CrashReportFn.
const void* FindInCrashStack(bool (*isWanted)(const void* code)) noexcept;

/// Writes the stack of the calling thread, one line a frame: "#0 function at file:line in library".
/// What is not known of a frame is left out. Only for a CrashReportFn; takes a few seconds at most,
/// and a crash in it only cuts it short.
void WriteCrashStack(SystemFile file) noexcept;
