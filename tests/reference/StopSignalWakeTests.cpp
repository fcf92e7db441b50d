#include <gtest/gtest.h>

#include <chrono>
#include <thread>

#include "reference/os/StopSignal.h"

namespace {

using std::chrono::milliseconds;

constexpr milliseconds kLong{20000};

TEST(StopSignalWake, EndsAWaitWithoutARequest) {
  StopSignal stop;
  std::thread other([&stop] { stop.Wake(); });
  const auto begin = std::chrono::steady_clock::now();
  EXPECT_FALSE(stop.WaitFor(kLong));
  EXPECT_LT(std::chrono::steady_clock::now() - begin, kLong);
  other.join();
}

TEST(StopSignalWake, TwiceBeforeTheWaitEndsOneWait) {
  StopSignal stop;
  stop.Wake();
  stop.Wake();
  const auto begin = std::chrono::steady_clock::now();
  EXPECT_FALSE(stop.WaitFor(kLong));
  EXPECT_LT(std::chrono::steady_clock::now() - begin, kLong);
  const auto again = std::chrono::steady_clock::now();
  EXPECT_FALSE(stop.WaitFor(milliseconds(30)));
  EXPECT_GE(std::chrono::steady_clock::now() - again, milliseconds(25));
}

}  // namespace
