#pragma once

#include <chrono>
#include <optional>
#include <vector>

/// How a person or the system asked the program to stop: SIGINT, SIGTERM, SIGHUP; on Windows
/// Ctrl-C, Ctrl-Break, and the end of the console or of the session.
enum class StopRequest { kInterrupt, kTerminate, kHangUp };

/// The request in the system's own words: "SIGINT", or "Ctrl-C" on Windows.
const char* Name(StopRequest request);

/// Receives stop requests instead of letting them end the process.
///
/// Created once, at the begin of main before any other thread, after OwnOutput. On POSIX systems
/// handlers are installed and nothing is blocked or ignored, so that a child process starts with
/// the default actions; SIGHUP alone stays ignored if it was (nohup). Writing to a broken pipe, or
/// beyond the limit of a file's size, fails with an error instead of ending the process. A child of
/// a fork that has not called exec is ended by these signals as by default.
class StopSignal {
 public:
  /// Throws std::system_error when the system refuses.
  StopSignal();
  ~StopSignal() = default;  // the handlers stay: a second request must not end a running stop
  StopSignal(const StopSignal&) = delete;
  StopSignal& operator=(const StopSignal&) = delete;

  /// Waits for a request, at most `limit`. A request that came before the call is kept; each is
  /// returned once. Any thread.
  std::optional<StopRequest> WaitFor(std::chrono::milliseconds limit);

  /// The requests that do not come here any more, since other code of the process has installed a
  /// handler of its own or ignores the signal. None on Windows, where that cannot be known.
  std::vector<StopRequest> Displaced() const;
};

/// Keeps the system from showing an error box for a library that cannot be loaded or a crash:
/// nobody sits in front of a service.
void SuppressErrorDialogs();
