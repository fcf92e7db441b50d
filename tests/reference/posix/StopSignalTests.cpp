#include "reference/os/StopSignal.h"

#include <gtest/gtest.h>
#include <signal.h>
#include <unistd.h>

#include <thread>

namespace {

using std::chrono::milliseconds;

TEST(StopSignal, WishThatCameBeforeTheWaitIsToldOnce) {
  for (const int kind : {SIGINT, SIGTERM}) {
    StopSignal stop;
    EXPECT_FALSE(stop.WaitFor(milliseconds(0)));
    kill(getpid(), kind);
    EXPECT_TRUE(stop.WaitFor(milliseconds(20000)));
    EXPECT_FALSE(stop.WaitFor(milliseconds(0)));
  }
}

TEST(StopSignal, WishEndsAWaitThoughOtherThreadsRun) {
  StopSignal stop;
  std::thread other([] { kill(getpid(), SIGTERM); });
  EXPECT_TRUE(stop.WaitFor(milliseconds(20000)));
  other.join();
}

TEST(StopSignal, WaitWithoutAWishTakesItsTime) {
  StopSignal stop;
  const auto begin = std::chrono::steady_clock::now();
  EXPECT_FALSE(stop.WaitFor(milliseconds(30)));
  EXPECT_GE(std::chrono::steady_clock::now() - begin, milliseconds(29));
}

}  // namespace
