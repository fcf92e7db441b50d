#include "reference/os/StopSignal.h"

#include <gtest/gtest.h>

#include <string>
#include <thread>

#include "tests/support/windows/ConsoleEvent.h"

namespace {

using std::chrono::milliseconds;

constexpr milliseconds kLong{20000};

void Ask(DWORD kind) {
  EXPECT_TRUE(RaiseConsoleEvent(GetCurrentProcess(), kind));
}

std::string Next(StopSignal& stop, milliseconds limit) {
  const std::optional<StopRequest> request = stop.WaitFor(limit);
  return request ? Name(*request) : "none";
}

TEST(StopSignal, RequestThatCameBeforeTheWaitIsReturnedOnce) {
  StopSignal stop;
  EXPECT_EQ("none", Next(stop, milliseconds(0)));
  Ask(CTRL_C_EVENT);
  EXPECT_EQ("Ctrl-C", Next(stop, kLong));
  Ask(CTRL_BREAK_EVENT);
  EXPECT_EQ("Ctrl-Break", Next(stop, kLong));
  Ask(CTRL_CLOSE_EVENT);
  EXPECT_EQ("the end of the console or session", Next(stop, kLong));
  EXPECT_EQ("none", Next(stop, milliseconds(0)));
}

TEST(StopSignal, TwoRequestsOfOneKindAreReturnedTwice) {
  StopSignal stop;
  Ask(CTRL_C_EVENT);
  Ask(CTRL_C_EVENT);
  EXPECT_EQ("Ctrl-C", Next(stop, kLong));
  EXPECT_EQ("Ctrl-C", Next(stop, kLong));
  EXPECT_EQ("none", Next(stop, milliseconds(0)));
}

TEST(StopSignal, RequestEndsAWaitThoughOtherThreadsRun) {
  StopSignal stop;
  std::thread other([] { Ask(CTRL_C_EVENT); });
  EXPECT_EQ("Ctrl-C", Next(stop, kLong));
  other.join();
}

TEST(StopSignal, WaitWithoutARequestTakesItsTime) {
  StopSignal stop;
  const auto begin = std::chrono::steady_clock::now();
  EXPECT_EQ("none", Next(stop, milliseconds(30)));
  EXPECT_GE(std::chrono::steady_clock::now() - begin, milliseconds(25));
}

}  // namespace
