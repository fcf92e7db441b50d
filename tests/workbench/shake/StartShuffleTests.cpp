#include "workbench/shake/StartShuffle.h"

#include <gtest/gtest.h>

#include <set>
#include <vector>

namespace {

TEST(ShuffledDelay, IsTheSameOnEverySystem) {
  std::vector<std::int64_t> delays;
  for (const std::uint64_t seed : {0, 1, 2, 12, 2147483647}) {
    delays.push_back(ShuffledDelay(seed, "config.server", 1000));
  }
  EXPECT_EQ((std::vector<std::int64_t>{368, 631, 43, 310, 523}), delays);
}

TEST(ShuffledDelay, OfAnOddSeedReversesTheOrderOfTheOneBefore) {
  for (const std::string plugin : {"", "a", "b", "config.server"}) {
    EXPECT_EQ(999, ShuffledDelay(6, plugin, 1000) + ShuffledDelay(7, plugin, 1000)) << plugin;
  }
}

TEST(ShuffledDelay, LiesWithinTheLongest) {
  for (std::uint64_t seed = 0; seed < 100; ++seed) {
    EXPECT_EQ(0, ShuffledDelay(seed, "a", 1));
    EXPECT_LE(0, ShuffledDelay(seed, "a", 3));
    EXPECT_GT(3, ShuffledDelay(seed, "a", 3));
  }
}

/// How many of 1000 plugins are delayed into each tenth of the time.
std::vector<int> Tenths(std::uint64_t seed) {
  std::vector<int> tenths(10);
  for (int i = 0; i < 1000; ++i) {
    const std::string plugin = "plugin" + std::to_string(i) + ".server";
    ++tenths[static_cast<std::size_t>(ShuffledDelay(seed, plugin, 10))];
  }
  return tenths;
}

TEST(ShuffledDelay, IsSpreadOverTheWholeTime) {
  for (const std::uint64_t seed : {0, 2, 4, 6}) {
    for (const int tenth : Tenths(seed)) {
      EXPECT_LT(60, tenth);
      EXPECT_GT(140, tenth);
    }
  }
}

TEST(ShuffledDelay, OrdersTwoPluginsInBothWays) {
  std::set<bool> orders;
  for (std::uint64_t seed = 0; seed < 20; seed += 2) {
    orders.insert(ShuffledDelay(seed, "a", 1000) < ShuffledDelay(seed, "b", 1000));
  }
  EXPECT_EQ(2U, orders.size());
}

}  // namespace
