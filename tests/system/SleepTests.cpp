// A start and a stop with sleeps that end early, and with full ones.

#include <gtest/gtest.h>

#include "tests/system/ChainOfThree.h"

namespace {

constexpr int kTwoSleeps = 400;  // milliseconds

TEST(Sleep, EndsEarlyUnlessAskedOtherwise) {
  const ChainOfThree run("");
  EXPECT_LT(run.start, kTwoSleeps);
  EXPECT_LT(run.stop, kTwoSleeps);
  EXPECT_EQ("early", run.sleep);
}

TEST(Sleep, LastsItsWholeTimeWithFullSleep) {
  const ChainOfThree run("--full-sleep");
  EXPECT_GE(run.start, kTwoSleeps);
  EXPECT_GE(run.stop, kTwoSleeps);
  EXPECT_EQ("full", run.sleep);
}

}  // namespace
