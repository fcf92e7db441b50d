#include "reference/os/CrashHandler.h"

#include <csignal>
#include <exception>

#include "reference/os/UncaughtException.h"
#include "reference/os/windows/CrashRun.h"

namespace {

constexpr DWORD kReportMilliseconds = 10000;
constexpr DWORD kAborted = 0xC0000409;  // after abort() of Microsoft's current C runtime

// Written by InstallCrashHandler, constant afterwards.
CrashReportFn g_report = nullptr;
DWORD g_exitStatus = 0;
HANDLE g_reportBegun = nullptr;

volatile LONG g_exitExpected = 0;
volatile LONG g_reporter = 0;  // the one thread that reports; the process ends with it

// Written by the reporting thread, before it sets g_reportBegun where other threads read it.
DWORD g_endCode = 0;
StackBegin g_stackBegin;

// Used by the reporting thread alone: where RunGuarded continues after a crash.
CONTEXT g_recovery = {};
bool g_canRecover = false;

/// Reserves part of the calling thread's stack for the report of a stack overflow.
void ReserveStack() noexcept {
  ULONG reserve = 64 * 1024;
  SetThreadStackGuarantee(&reserve);
}

[[noreturn]] void EndWith(DWORD code) noexcept {
  while (true) TerminateProcess(GetCurrentProcess(), code);
}

/// A thread that ends the process when the report hangs. At an exit the system ends this thread
/// before it notifies the libraries, so the report of such an exit has no time limit.
DWORD WINAPI EndHangingReport(void*) {
  WaitForSingleObject(g_reportBegun, INFINITE);
  Sleep(kReportMilliseconds);
  EndWith(g_endCode);
}

/// True for the first thread that calls it. Any other thread waits here until that one ends the
/// process. False when the reporting thread itself calls it again.
bool BecomeReporter() noexcept {
  const auto self = static_cast<LONG>(GetCurrentThreadId());
  const LONG reporter = InterlockedCompareExchange(&g_reporter, self, 0);
  if (reporter == 0) return true;
  if (reporter != self) Sleep(INFINITE);
  return false;
}

[[noreturn]] void ReportAndEnd(Crash& crash, DWORD endCode) noexcept {
  g_endCode = endCode;
  SetEvent(g_reportBegun);
  RunGuarded([](void* argument) { g_report(*static_cast<Crash*>(argument)); }, &crash);
  EndWith(endCode);
}

/// Reports an end without a structured exception. `alone`: all other threads have been ended.
[[noreturn]] void ReportCall(Crash::Kind kind, int code, const char* what, const void* caller,
                             DWORD endCode, bool alone = false) noexcept {
  if (!BecomeReporter()) EndWith(g_endCode);
  RtlCaptureContext(&g_stackBegin.context);
  g_stackBegin.caller = caller;
  g_stackBegin.withNames = !alone;  // the ended threads may have held locks that dbghelp needs
  Crash crash;
  crash.alone = alone;
  crash.kind = kind;
  crash.code = code;
  crash.what = what;
  crash.address = caller;
  ReportAndEnd(crash, endCode);
}

const char* NameOf(DWORD code) {
  switch (code) {
    case EXCEPTION_ACCESS_VIOLATION:
      return "access violation";
    case EXCEPTION_STACK_OVERFLOW:
      return "stack overflow";
    case EXCEPTION_IN_PAGE_ERROR:
      return "a mapped file cannot be read";
    case EXCEPTION_ILLEGAL_INSTRUCTION:
      return "illegal instruction";
    case EXCEPTION_PRIV_INSTRUCTION:
      return "privileged instruction";
    case EXCEPTION_INT_DIVIDE_BY_ZERO:
      return "integer division by zero";
    case EXCEPTION_DATATYPE_MISALIGNMENT:
      return "misaligned data";
    case EXCEPTION_BREAKPOINT:
      return "breakpoint";
    case 0xC0000374:
      return "the heap is corrupted";
    case 0xE06D7363:
      return "an exception of Microsoft's C++ was not caught";
    default:
      return nullptr;
  }
}

void Describe(CrashText& text, const EXCEPTION_RECORD& record) {
  text.Add("exception ").AddHex(record.ExceptionCode);
  if (const char* name = NameOf(record.ExceptionCode)) text.Add(": ").Add(name);
  if (record.ExceptionCode == EXCEPTION_ACCESS_VIOLATION && record.NumberParameters >= 2) {
    text.Add(" at address ").AddHex(record.ExceptionInformation[1]);
  }
}

/// Whether it is an uncaught C++ exception of GCC: when continued, it calls std::terminate.
bool IsGccException(DWORD code) {
  return (code & 0x20FFFFFFU) == 0x20474343U;
}

LONG WINAPI OnException(EXCEPTION_POINTERS* exception) {
  const EXCEPTION_RECORD& record = *exception->ExceptionRecord;
  if (IsGccException(record.ExceptionCode)) return EXCEPTION_CONTINUE_EXECUTION;
  if (!BecomeReporter()) {
    if (!g_canRecover) EndWith(g_endCode);
    *exception->ContextRecord = g_recovery;
    return EXCEPTION_CONTINUE_EXECUTION;
  }
  g_stackBegin.context = *exception->ContextRecord;
  g_stackBegin.withNames = record.ExceptionCode != EXCEPTION_STACK_OVERFLOW;
  CrashText what;
  Describe(what, record);
  Crash crash;
  crash.kind = Crash::Kind::kException;
  crash.code = record.ExceptionCode;
  crash.what = what.CStr();
  crash.address = record.ExceptionAddress;
  ReportAndEnd(crash, record.ExceptionCode);
}

void OnAbort(int signal) {
  ReportCall(Crash::Kind::kSignal, signal, "SIGABRT: abort() was called",
             __builtin_return_address(0), kAborted);
}

void OnTerminate() {
  // Before BecomeReporter, so that a crash in the exception's what() is reported as a crash.
  CrashText what;
  DescribeUncaughtException(what);
  ReportCall(Crash::Kind::kTerminate, SIGABRT, what.CStr(), __builtin_return_address(0), kAborted);
}

}  // namespace

const StackBegin& CrashStackBegin() noexcept {
  return g_stackBegin;
}

bool RunGuarded(void (*action)(void*), void* argument) noexcept {
  const CONTEXT outer = g_recovery;
  const bool outerCanRecover = g_canRecover;
  volatile bool begun = false;
  volatile bool completed = false;
  RtlCaptureContext(&g_recovery);  // after a crash, execution continues here with `begun` set
  if (!begun) {
    begun = true;
    g_canRecover = true;
    action(argument);
    completed = true;
  }
  g_recovery = outer;
  g_canRecover = outerCanRecover;
  return completed;
}

void InstallCrashHandler(CrashReportFn report, int exitStatus) {
  g_exitStatus = static_cast<DWORD>(exitStatus);
  g_reportBegun = CreateEventW(nullptr, TRUE, FALSE, nullptr);
  const HANDLE thread = CreateThread(nullptr, 0, &EndHangingReport, nullptr, 0, nullptr);
  if (thread != nullptr) CloseHandle(thread);
  ReserveStack();
  std::set_terminate(&OnTerminate);
  std::signal(SIGABRT, &OnAbort);
  SetUnhandledExceptionFilter(&OnException);
  g_report = report;
}

void ReportUnexpectedExit() {
  if (g_exitExpected == 0) {
    ReportCall(Crash::Kind::kExit, 0, "exit()", nullptr, g_exitStatus);
  }
}

void ExpectExit() {
  InterlockedExchange(&g_exitExpected, 1);
}

/// The system calls this at the start of every thread, also those of plugins, and at every kind of
/// exit, when it has ended all other threads.
extern "C" BOOL WINAPI DllMain(HINSTANCE, DWORD reason, void* processEnds) {
  if (reason == DLL_THREAD_ATTACH) ReserveStack();
  if (reason == DLL_PROCESS_DETACH && processEnds != nullptr && g_report != nullptr &&
      g_exitExpected == 0) {
    ReportCall(Crash::Kind::kExit, 0, "_exit() or ExitProcess()", nullptr, g_exitStatus, true);
  }
  return TRUE;
}
