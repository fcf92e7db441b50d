#include "reference/os/StopSignal.h"

#include <fcntl.h>
#include <poll.h>
#include <pthread.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <climits>
#include <csignal>
#include <system_error>

namespace {

struct Pipe {
  int readEnd = -1;
  int writeEnd = -1;
};

// Set before the handlers are installed, constant afterwards.
std::atomic<pid_t> g_process{0};
std::atomic<int> g_writeEnd{-1};
std::atomic<bool> g_hangUpIsIgnored{false};  // by nohup

/// In the pipe, stands for a call of Wake; other bytes are numbers of signals.
constexpr unsigned char kWake = 0;

std::atomic<bool> g_wakeIsInPipe{false};

[[noreturn]] void Fail(const char* what) {
  throw std::system_error(errno, std::generic_category(), what);
}

/// Shared by all objects and never closed: a handler may write at any time.
const Pipe& Requests() {
  static const Pipe pipe = [] {
    int ends[2];
    if (pipe2(ends, O_CLOEXEC | O_NONBLOCK) != 0) Fail("no pipe for stop signals");
    return Pipe{ends[0], ends[1]};
  }();
  return pipe;
}

void Install(int signal, void (*handler)(int)) {
  struct sigaction action = {};
  action.sa_handler = handler;
  action.sa_flags = SA_RESTART;
  sigemptyset(&action.sa_mask);
  if (sigaction(signal, &action, nullptr) != 0) Fail("a signal handler cannot be installed");
}

void OnStopSignal(int signal) {
  const int before = errno;
  if (getpid() == g_process) {
    const auto byte = static_cast<unsigned char>(signal);
    // A write to a full pipe fails, but then it contains more than enough requests.
    [[maybe_unused]] const ssize_t written = write(g_writeEnd, &byte, 1);
  } else {
    // A forked child still has the parent's pipe. The signal is blocked until this handler returns,
    // and then ends the child. raise() would address the parent's thread after a vfork.
    struct sigaction action = {};
    action.sa_handler = SIG_DFL;
    sigaction(signal, &action, nullptr);
    kill(getpid(), signal);
  }
  errno = before;
}

/// A handler instead of SIG_IGN, which programs executed by a child would inherit.
void DoNothing(int) {}

bool HasHandler(int signal, void (*handler)(int)) {
  struct sigaction action = {};
  return sigaction(signal, nullptr, &action) == 0 && action.sa_handler == handler;
}

StopRequest RequestOf(unsigned char signal) {
  if (signal == SIGINT) return StopRequest::kInterrupt;
  return signal == SIGTERM ? StopRequest::kTerminate : StopRequest::kHangUp;
}

}  // namespace

const char* Name(StopRequest request) {
  if (request == StopRequest::kInterrupt) return "SIGINT";
  return request == StopRequest::kTerminate ? "SIGTERM" : "SIGHUP";
}

StopSignal::StopSignal() {
  g_writeEnd = Requests().writeEnd;
  g_process = getpid();
  sigset_t unblocked;
  sigemptyset(&unblocked);
  for (const int signal : {SIGINT, SIGTERM, SIGHUP}) {
    if (signal == SIGHUP && HasHandler(signal, SIG_IGN)) {
      g_hangUpIsIgnored = true;
      continue;
    }
    Install(signal, &OnStopSignal);
    sigaddset(&unblocked, signal);
  }
  for (const int signal : {SIGPIPE, SIGXFSZ}) {
    Install(signal, &DoNothing);
    sigaddset(&unblocked, signal);
  }
  // The program may have been started with these signals blocked.
  pthread_sigmask(SIG_UNBLOCK, &unblocked, nullptr);
}

std::optional<StopRequest> StopSignal::WaitFor(std::chrono::milliseconds limit) {
  using Clock = std::chrono::steady_clock;
  using std::chrono::milliseconds;
  const milliseconds wait = std::clamp(limit, milliseconds(0), milliseconds(INT_MAX));
  const Clock::time_point end = Clock::now() + wait;
  while (true) {
    unsigned char signal = 0;
    if (read(Requests().readEnd, &signal, 1) == 1) {
      if (signal != kWake) return RequestOf(signal);
      // An exchange, so that the caller sees what happened before a Wake that wrote nothing.
      g_wakeIsInPipe.exchange(false);
      return std::nullopt;
    }
    const auto left = std::chrono::ceil<milliseconds>(end - Clock::now());
    if (left <= milliseconds(0)) return std::nullopt;
    pollfd ready = {Requests().readEnd, POLLIN, 0};
    poll(&ready, 1, static_cast<int>(left.count()));
    // If other code has closed the descriptor, poll returns at once: wait here, do not spin.
    if ((ready.revents & POLLNVAL) != 0) poll(nullptr, 0, static_cast<int>(left.count()));
  }
}

void StopSignal::Wake() {
  if (g_wakeIsInPipe.exchange(true)) return;
  // A write to a full pipe fails, but then WaitFor does not wait.
  if (write(Requests().writeEnd, &kWake, 1) != 1) g_wakeIsInPipe = false;
}

std::vector<StopRequest> StopSignal::Displaced() const {
  std::vector<StopRequest> displaced;
  for (const int signal : {SIGINT, SIGTERM, SIGHUP}) {
    if (signal == SIGHUP && g_hangUpIsIgnored) continue;
    if (HasHandler(signal, &OnStopSignal)) continue;
    displaced.push_back(RequestOf(static_cast<unsigned char>(signal)));
  }
  return displaced;
}

void SuppressErrorDialogs() {}
