#include "reference/xrt/SleepWaker.h"

#include <algorithm>
#include <atomic>
#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <iterator>
#include <map>
#include <mutex>
#include <thread>
#include <utility>

#include "sdk/xrt/runtime.h"

namespace {

using Clock = std::chrono::steady_clock;

constexpr std::chrono::milliseconds kLeastInterval{1};  // between two sleeps that end early

std::atomic<bool> g_early{false};

/// Identifies the calling thread. The system's numbers do not: a later thread may get that of one
/// that has ended.
std::uint64_t ThisThread() {
  static std::atomic<std::uint64_t> last{0};
  thread_local const std::uint64_t number = ++last;
  return number;
}

}  // namespace

/// What the wakers of one thread share.
struct SleepWaker::Sleeper {
  explicit Sleeper(std::uint64_t number) : thread(number) {}

  /// Called by the thread itself.
  void Sleep(std::chrono::milliseconds time) {
    const Clock::time_point end = Clock::now() + time;
    std::unique_lock<std::mutex> lock(mutex);
    if (!changed.wait_until(lock, end, [this] { return woken; })) return;
    const Clock::time_point next = std::min(end, lastEnd + kLeastInterval);
    lock.unlock();
    // A loop, since some systems do not sleep for less than a millisecond.
    while (Clock::now() < next) std::this_thread::sleep_until(next);
    lock.lock();
    // Only now: what has happened until now, the thread sees when it goes on.
    woken = false;
    lastEnd = Clock::now();
  }

  void Wake() {
    {
      const std::lock_guard<std::mutex> lock(mutex);
      if (std::exchange(woken, true)) return;
    }
    changed.notify_one();
  }

  const std::uint64_t thread;

  std::mutex mutex;  // no other lock is taken while it is held
  std::condition_variable changed;

  // Guarded by mutex.
  bool woken = false;
  Clock::time_point lastEnd{};  // of a sleep that ended early
};

namespace {

/// Never destroyed: threads may sleep while the process ends.
struct Sleepers {
  std::mutex mutex;
  std::map<std::uint64_t, std::weak_ptr<SleepWaker::Sleeper>> byThread;  // guarded by mutex
};

Sleepers& TheSleepers() {
  static Sleepers& sleepers = *new Sleepers;
  return sleepers;
}

/// Of the calling thread; null when it has no waker.
std::shared_ptr<SleepWaker::Sleeper> FindSleeper() {
  Sleepers& sleepers = TheSleepers();
  const std::lock_guard<std::mutex> lock(sleepers.mutex);
  const auto found = sleepers.byThread.find(ThisThread());
  return found == sleepers.byThread.end() ? nullptr : found->second.lock();
}

void AddSleeper(const std::shared_ptr<SleepWaker::Sleeper>& sleeper) {
  Sleepers& sleepers = TheSleepers();
  const std::lock_guard<std::mutex> lock(sleepers.mutex);
  for (auto at = sleepers.byThread.begin(); at != sleepers.byThread.end();) {
    at = at->second.expired() ? sleepers.byThread.erase(at) : std::next(at);
  }
  sleepers.byThread.emplace(sleeper->thread, sleeper);
}

}  // namespace

SleepWaker::SleepWaker(std::shared_ptr<Sleeper> sleeper) : m_sleeper(std::move(sleeper)) {}

SleepWaker SleepWaker::OfThisThread() {
  std::shared_ptr<Sleeper> sleeper = FindSleeper();
  if (!sleeper) {
    sleeper = std::make_shared<Sleeper>(ThisThread());
    AddSleeper(sleeper);
  }
  return SleepWaker(std::move(sleeper));
}

bool SleepWaker::IsOfThisThread() const {
  return m_sleeper->thread == ThisThread();
}

void SleepWaker::Wake() const {
  m_sleeper->Wake();
}

void EndSleepsEarly(bool early) {
  g_early = early;
}

void XRT_Sleep(std::uint32_t milliseconds) {
  const std::chrono::milliseconds time(milliseconds);
  const std::shared_ptr<SleepWaker::Sleeper> sleeper = g_early ? FindSleeper() : nullptr;
  if (sleeper) {
    sleeper->Sleep(time);
  } else {
    std::this_thread::sleep_for(time);
  }
}
