#include <chrono>
#include <thread>

#include "sdk/plugin/TevPlugin.h"

namespace {

using Clock = std::chrono::steady_clock;

/// Sleeps, or keeps a core busy, for the given time.
void TakeTime(std::chrono::milliseconds time) {
  const Clock::time_point end = Clock::now() + time;
  if (!TEV_IS_BUSY) std::this_thread::sleep_until(end);
  while (Clock::now() < end) continue;
}

}  // namespace

bool Init() {
  TakeTime(std::chrono::milliseconds(TEV_MILLISECONDS));
  return true;
}

bool UnInit() {
  TakeTime(std::chrono::milliseconds(15));  // so that a change of the library does not change it
  return true;
}
