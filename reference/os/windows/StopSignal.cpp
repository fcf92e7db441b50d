#include "reference/os/StopSignal.h"

#include <algorithm>
#include <climits>
#include <system_error>

#include "sdk/os/os.h"

namespace {

constexpr int kRequests = 3;

/// One semaphore for each StopRequest, which counts those not yet returned. Created by the
/// constructor, never closed: the system calls the handler on its own thread until the process
/// ends.
HANDLE g_requests[kRequests] = {};

/// An event for Wake, created and kept likewise; reset by the wait that it ends.
HANDLE g_wake = nullptr;

StopRequest RequestOf(DWORD event) {
  if (event == CTRL_C_EVENT) return StopRequest::kInterrupt;
  return event == CTRL_BREAK_EVENT ? StopRequest::kTerminate : StopRequest::kHangUp;
}

BOOL WINAPI OnConsoleEvent(DWORD event) {
  const StopRequest request = RequestOf(event);
  ReleaseSemaphore(g_requests[static_cast<int>(request)], 1, nullptr);
  // After Ctrl-C and Ctrl-Break the program continues. After the other events (window closed, user
  // logged off, shutdown) the system ends the process as soon as this returns. So it does not
  // return, and the program has time to stop its plugins until the system's time limit expires.
  if (request == StopRequest::kHangUp) Sleep(INFINITE);
  return TRUE;
}

[[noreturn]] void Fail(DWORD error) {
  throw std::system_error(static_cast<int>(error), std::system_category(),
                          "the console's stop signals cannot be received");
}

}  // namespace

const char* Name(StopRequest request) {
  if (request == StopRequest::kInterrupt) return "Ctrl-C";
  return request == StopRequest::kTerminate ? "Ctrl-Break" : "the end of the console or session";
}

StopSignal::StopSignal() {
  for (HANDLE& semaphore : g_requests) {
    semaphore = CreateSemaphoreW(nullptr, 0, LONG_MAX, nullptr);
    if (semaphore == nullptr) Fail(GetLastError());
  }
  g_wake = CreateEventW(nullptr, FALSE, FALSE, nullptr);
  if (g_wake == nullptr) Fail(GetLastError());
  if (SetConsoleCtrlHandler(&OnConsoleEvent, TRUE) == 0) Fail(GetLastError());
}

std::optional<StopRequest> StopSignal::WaitFor(std::chrono::milliseconds limit) {
  const auto wait = std::clamp<long long>(limit.count(), 0, INT_MAX);
  const HANDLE objects[] = {g_requests[0], g_requests[1], g_requests[2], g_wake};
  const DWORD which =
      WaitForMultipleObjects(kRequests + 1, objects, FALSE, static_cast<DWORD>(wait));
  if (which >= WAIT_OBJECT_0 + kRequests) return std::nullopt;
  return static_cast<StopRequest>(which - WAIT_OBJECT_0);
}

void StopSignal::Wake() {
  SetEvent(g_wake);
}

std::vector<StopRequest> StopSignal::Displaced() const {
  return {};
}

void SuppressErrorDialogs() {
  SetErrorMode(SEM_FAILCRITICALERRORS | SEM_NOGPFAULTERRORBOX | SEM_NOOPENFILEERRORBOX);
}
