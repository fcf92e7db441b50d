#include "reference/os/CrashHandler.h"

#include <pthread.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <atomic>
#include <csetjmp>
#include <csignal>
#include <cstdlib>
#include <exception>

#include "reference/os/UncaughtException.h"
#include "reference/os/posix/AlternateStack.h"
#include "reference/os/posix/CrashRun.h"

namespace {

constexpr unsigned kReportSeconds = 10;

struct FatalSignal {
  int number;
  const char* name;
};
constexpr FatalSignal kFatalSignals[] = {
    {SIGSEGV, "SIGSEGV"},     {SIGBUS, "SIGBUS"},   {SIGILL, "SIGILL"},   {SIGFPE, "SIGFPE"},
    {SIGABRT, "SIGABRT"},     {SIGSYS, "SIGSYS"},   {SIGTRAP, "SIGTRAP"}, {SIGQUIT, "SIGQUIT"},
    {SIGALRM, "SIGALRM"},     {SIGUSR1, "SIGUSR1"}, {SIGUSR2, "SIGUSR2"}, {SIGXCPU, "SIGXCPU"},
    {SIGVTALRM, "SIGVTALRM"}, {SIGPROF, "SIGPROF"}, {SIGIO, "SIGIO"},
};

// Written by InstallCrashHandler, constant afterwards. g_process is written last.
CrashReportFn g_report = nullptr;
int g_exitStatus = 0;
std::terminate_handler g_terminateBefore = nullptr;
std::atomic<pid_t> g_process{0};

std::atomic<bool> g_exitExpected{false};
std::atomic<pid_t> g_reporter{0};  // the one thread that reports; the process ends with it

// Used by the reporting thread alone: where RunGuarded continues after a crash or a hang.
sigjmp_buf* volatile g_recovery = nullptr;

bool IsWatched() noexcept {
  return getpid() == g_process;  // false in a forked child
}

void SetAction(int signal, void (*handler)(int)) noexcept {
  struct sigaction action = {};
  action.sa_handler = handler;
  action.sa_flags = SA_ONSTACK;
  sigemptyset(&action.sa_mask);
  sigaction(signal, &action, nullptr);
}

void Unblock(int signal) noexcept {
  sigset_t set;
  sigemptyset(&set);
  sigaddset(&set, signal);
  pthread_sigmask(SIG_UNBLOCK, &set, nullptr);
}

[[noreturn]] void EndBy(int signal) noexcept {
  SetAction(signal, SIG_DFL);
  Unblock(signal);
  tgkill(getpid(), gettid(), signal);  // raise() would address the parent's thread after a vfork
  // Process 1 of a container is not ended by a signal that it sends itself.
  EndProcessNow(128 + signal);
}

void Recover() noexcept {
  // NOLINTNEXTLINE(cert-err52-cpp): there is no other way out of a crash
  if (g_recovery != nullptr) siglongjmp(*g_recovery, 1);
}

/// True for the first thread that calls it. Any other thread waits here until that one ends the
/// process. When the reporting thread itself crashes, it continues after the guarded action.
bool BecomeReporter() noexcept {
  pid_t reporter = 0;
  if (g_reporter.compare_exchange_strong(reporter, gettid())) return true;
  while (reporter != gettid()) pause();
  Recover();
  return false;
}

void OnAlarm(int) {
  if (gettid() == g_reporter) {
    Recover();
  } else {
    tgkill(getpid(), g_reporter, SIGALRM);
  }
}

void Report(Crash& crash, const void* stackBegin) noexcept {
  SetAction(SIGALRM, &OnAlarm);
  Unblock(SIGALRM);
  BeginStackAt(stackBegin);
  RunGuarded(
      kReportSeconds, [](void* argument) { g_report(*static_cast<Crash*>(argument)); }, &crash);
}

bool IsNear(std::uintptr_t address, std::uintptr_t other) {
  constexpr std::uintptr_t distance = 0x10000;
  return address - other + distance < 2 * distance;
}

/// Whether another process sent the signal.
bool IsSent(const siginfo_t& info) {
  const bool hasSender =
      info.si_code == SI_USER || info.si_code == SI_QUEUE || info.si_code == SI_TKILL;
  return hasSender && info.si_pid != getpid();
}

void Describe(CrashText& text, int signal, const siginfo_t& info, std::uintptr_t stackPointer) {
  for (const FatalSignal& fatal : kFatalSignals) {
    if (fatal.number == signal) text.Add(fatal.name);
  }
  const bool hasAddress = info.si_code > 0 && info.si_code != SI_KERNEL;
  if (hasAddress && (signal == SIGSEGV || signal == SIGBUS)) {
    const auto address = reinterpret_cast<std::uintptr_t>(info.si_addr);
    text.Add(" at address ").AddHex(address);
    if (IsNear(address, stackPointer)) text.Add(": the stack overflowed");
  } else if (IsSent(info)) {
    text.Add(" sent by process ").AddNumber(info.si_pid);
  } else if (signal == SIGABRT) {
    text.Add(": abort() was called");
  }
}

void OnSignal(int signal, siginfo_t* info, void* context) {
  if (!IsWatched()) EndBy(signal);
  if (!BecomeReporter()) EndBy(signal);
  const Interrupted interrupted = InterruptedCode(context);
  CrashText what;
  Describe(what, signal, *info, interrupted.stackPointer);
  Crash crash;
  crash.kind = Crash::Kind::kSignal;
  crash.code = signal;
  crash.what = what.CStr();
  crash.sent = IsSent(*info);
  // NOLINTNEXTLINE(performance-no-int-to-ptr): nothing is read there
  crash.address = reinterpret_cast<const void*>(interrupted.instruction);
  Report(crash, nullptr);
  EndBy(signal);
}

void OnTerminate() {
  const void* caller = __builtin_return_address(0);
  if (!IsWatched()) {
    g_terminateBefore();
    std::abort();
  }
  // Before BecomeReporter, so that a crash in the exception's what() is reported as a crash.
  CrashText what;
  DescribeUncaughtException(what);
  if (BecomeReporter()) {
    Crash crash;
    crash.kind = Crash::Kind::kTerminate;
    crash.code = SIGABRT;
    crash.what = what.CStr();
    Report(crash, caller);
  }
  EndBy(SIGABRT);
}

}  // namespace

bool RunGuarded(unsigned seconds, void (*action)(void*), void* argument) noexcept {
  sigjmp_buf* volatile const outer = g_recovery;
  volatile bool completed = false;
  sigjmp_buf recovery;
  // NOLINTNEXTLINE(cert-err52-cpp): there is no other way out of a crash
  if (sigsetjmp(recovery, 1) == 0) {
    g_recovery = &recovery;
    alarm(seconds);
    action(argument);
    completed = true;
  }
  g_recovery = outer;
  alarm(outer != nullptr ? kReportSeconds : 0);
  return completed;
}

bool ExitIsReported() noexcept {
  return IsWatched() && !g_exitExpected;
}

void ReportExit(Crash::Kind kind, std::int64_t status, const char* function,
                const void* caller) noexcept {
  if (BecomeReporter()) {
    CrashText what;
    what.Add(function).Add("(").AddNumber(status).Add(")");
    Crash crash;
    crash.kind = kind;
    crash.code = status;
    crash.what = what.CStr();
    crash.address = caller;
    Report(crash, caller);
  }
  EndProcessNow(g_exitStatus);
}

void EndProcessNow(int status) noexcept {
  while (true) syscall(SYS_exit_group, status);
}

void InstallCrashHandler(CrashReportFn report, int exitStatus) {
  g_report = report;
  g_exitStatus = exitStatus;
  PrepareStack();
  UseAlternateStack();
  g_terminateBefore = std::set_terminate(&OnTerminate);
  g_process = getpid();
  for (const FatalSignal& fatal : kFatalSignals) {
    struct sigaction action = {};
    action.sa_sigaction = &OnSignal;
    // A crash in the handler must reach the handler again.
    action.sa_flags = SA_SIGINFO | SA_ONSTACK | SA_NODEFER;
    sigemptyset(&action.sa_mask);
    sigaction(fatal.number, &action, nullptr);
    Unblock(fatal.number);
  }
}

/// The exit functions in ExitCalls.cpp report themselves, so only one case is left here: the
/// process ends because its last thread has ended.
void ReportUnexpectedExit() {
  if (ExitIsReported()) {
    ReportExit(Crash::Kind::kExit, 0, "exit", __builtin_return_address(0));
  }
}

void ExpectExit() {
  g_exitExpected = true;
}
