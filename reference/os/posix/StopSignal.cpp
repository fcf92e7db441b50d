#include "reference/os/StopSignal.h"

#include <pthread.h>
#include <signal.h>

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
  pthread_sigmask(SIG_BLOCK, &signals, nullptr);  // inherited by every later thread
}

bool StopSignal::WaitFor(std::chrono::milliseconds limit) {
  const sigset_t signals = StopSignals();
  timespec time = {};
  time.tv_sec = static_cast<time_t>(limit.count() / 1000);
  time.tv_nsec = static_cast<long>(limit.count() % 1000 * 1'000'000);
  return sigtimedwait(&signals, nullptr, &time) > 0;
}

void SuppressErrorDialogs() {}
