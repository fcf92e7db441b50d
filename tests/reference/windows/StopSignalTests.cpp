#include "reference/os/StopSignal.h"

#include <gtest/gtest.h>

#include <thread>

#include "tests/support/windows/ConsoleEvent.h"

namespace {

using std::chrono::milliseconds;

void Ask(DWORD kind) {
  EXPECT_TRUE(RaiseConsoleEvent(GetCurrentProcess(), kind));
}

TEST(StopSignal, WishThatCameBeforeTheWaitIsToldOnce) {
  for (const DWORD kind : {CTRL_C_EVENT, CTRL_BREAK_EVENT, CTRL_CLOSE_EVENT}) {
    StopSignal stop;
    EXPECT_FALSE(stop.WaitFor(milliseconds(0)));
    Ask(kind);
    EXPECT_TRUE(stop.WaitFor(milliseconds(20000)));
    EXPECT_FALSE(stop.WaitFor(milliseconds(0)));
  }
}

TEST(StopSignal, WishEndsAWaitThoughOtherThreadsRun) {
  StopSignal stop;
  std::thread other([] { Ask(CTRL_C_EVENT); });
  EXPECT_TRUE(stop.WaitFor(milliseconds(20000)));
  other.join();
}

TEST(StopSignal, WaitWithoutAWishTakesItsTime) {
  StopSignal stop;
  const auto begin = std::chrono::steady_clock::now();
  EXPECT_FALSE(stop.WaitFor(milliseconds(30)));
  EXPECT_GE(std::chrono::steady_clock::now() - begin, milliseconds(25));
}

}  // namespace
