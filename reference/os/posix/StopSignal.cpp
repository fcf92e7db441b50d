#include "reference/os/StopSignal.h"

#include <pthread.h>
#include <signal.h>  // NOLINT(modernize-deprecated-headers): the system's own, not C's

#include <algorithm>
#include <cerrno>
#include <system_error>

namespace {

sigset_t StopSignals() {
  sigset_t signals;
  sigemptyset(&signals);
  sigaddset(&signals, SIGINT);
  sigaddset(&signals, SIGTERM);
  return signals;
}

}  // namespace

StopSignal::StopSignal() {
  const sigset_t signals = StopSignals();
  // Every later thread inherits the mask, so that no thread is ended by what is waited for here.
  const int error = pthread_sigmask(SIG_BLOCK, &signals, nullptr);
  if (error != 0) {
    throw std::system_error(error, std::generic_category(), "SIGINT and SIGTERM cannot be blocked");
  }
}

bool StopSignal::WaitFor(std::chrono::milliseconds limit) {
  using Clock = std::chrono::steady_clock;
  const sigset_t signals = StopSignals();
  const Clock::time_point end = Clock::now() + limit;
  while (true) {
    const auto left = std::max(Clock::duration::zero(), end - Clock::now());
    const auto seconds = std::chrono::duration_cast<std::chrono::seconds>(left);
    timespec time = {};
    time.tv_sec = static_cast<time_t>(seconds.count());
    time.tv_nsec = static_cast<long>(std::chrono::nanoseconds(left - seconds).count());
    if (sigtimedwait(&signals, nullptr, &time) > 0) return true;
    // Being stopped and continued, by a debugger or a shell, cuts the wait short as well.
    if (errno != EINTR) return false;
  }
}

void SuppressErrorDialogs() {}
