#pragma once

#include <chrono>
#include <optional>
#include <vector>

/// How a user or the system requested the stop: SIGINT, SIGTERM, SIGHUP; on Windows Ctrl-C,
/// Ctrl-Break, and the end of the console or of the session.
enum class StopRequest { kInterrupt, kTerminate, kHangUp };

/// The name of the request on this system: "SIGINT", or "Ctrl-C" on Windows.
const char* Name(StopRequest request);

/// Receives stop requests instead of letting them end the process.
///
/// Created once, at the start of main before any other thread, after OwnOutput. On POSIX systems it
/// installs signal handlers and blocks or ignores nothing, so that child programs start with the
/// default actions; only SIGHUP stays ignored if it was ignored before (nohup). Writing to a broken
/// pipe, or beyond the limit of a file's size, fails with an error instead of ending the process.
/// These signals end a forked child that has not called exec, as by default.
class StopSignal {
 public:
  /// Throws std::system_error when a pipe or a handler cannot be installed.
  StopSignal();
  ~StopSignal() = default;  // the handlers stay: a second request must not end a running stop
  StopSignal(const StopSignal&) = delete;
  StopSignal& operator=(const StopSignal&) = delete;

  /// Waits for a request or a call of Wake, at most for `limit`. Requests received before the call
  /// are kept; each is returned once. Thread-safe.
  std::optional<StopRequest> WaitFor(std::chrono::milliseconds limit);

  /// Ends a call of WaitFor without a request: the running one, or else the next. Several calls
  /// before that count as one. Thread-safe.
  void Wake();

  /// The requests that are not received any more, because other code in the process has installed
  /// another handler or ignores the signal. Always empty on Windows, where this is not known.
  std::vector<StopRequest> Displaced() const;
};

/// Prevents the system from showing a dialog when a library cannot be loaded or the process
/// crashes: a service has no user who could close it.
void SuppressErrorDialogs();
