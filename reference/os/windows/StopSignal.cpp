#include "reference/os/StopSignal.h"

#include <algorithm>
#include <system_error>

#include "sdk/os/os.h"

namespace {

/// Set by each wish, reset by the one who is told of it. Made by the constructor and never closed:
/// the system may call the handler, on a thread of its own, until the process is gone.
HANDLE g_asked = nullptr;

BOOL WINAPI TakeWish(DWORD kind) {
  SetEvent(g_asked);
  // After Ctrl-C and Ctrl-Break the program goes on. After the others (window closed, logged off,
  // shut down) the system ends the process as soon as this returns; so it never does, and the
  // program has until its own end, or until the system's patience is over, to stop its plugins.
  if (kind != CTRL_C_EVENT && kind != CTRL_BREAK_EVENT) Sleep(INFINITE);
  return TRUE;
}

[[noreturn]] void Fail(DWORD error) {
  throw std::system_error(static_cast<int>(error), std::system_category(),
                          "the console's stop signals cannot be taken");
}

}  // namespace

StopSignal::StopSignal() {
  g_asked = CreateEventW(nullptr, FALSE, FALSE, nullptr);
  if (g_asked == nullptr) Fail(GetLastError());
  if (SetConsoleCtrlHandler(&TakeWish, TRUE) == 0) Fail(GetLastError());
}

bool StopSignal::WaitFor(std::chrono::milliseconds limit) {
  constexpr long long longest = 0x7FFFFFFF;
  const auto wait = std::clamp<long long>(limit.count(), 0, longest);
  return WaitForSingleObject(g_asked, static_cast<DWORD>(wait)) == WAIT_OBJECT_0;
}

void SuppressErrorDialogs() {
  SetErrorMode(SEM_FAILCRITICALERRORS | SEM_NOGPFAULTERRORBOX | SEM_NOOPENFILEERRORBOX);
}
