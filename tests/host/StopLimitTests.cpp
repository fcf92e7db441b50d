#include "host/StopLimit.h"

#include <gtest/gtest.h>

namespace {

constexpr std::int64_t kSecond = 1'000'000'000;

TEST(StopLimit, ExpiresWhenNoPluginFinishesForSoLong) {
  StopLimit limit(90, 0);
  EXPECT_FALSE(limit.Expired(89 * kSecond, 0, false));
  EXPECT_TRUE(limit.Expired(90 * kSecond, 0, false));
  EXPECT_EQ(90, limit.Seconds());
}

TEST(StopLimit, CountsAnewWheneverAPluginFinishes) {
  StopLimit limit(90, 0);
  EXPECT_FALSE(limit.Expired(89 * kSecond, 1, false));
  EXPECT_FALSE(limit.Expired(178 * kSecond, 1, false));
  EXPECT_FALSE(limit.Expired(178 * kSecond, 2, false));
  EXPECT_FALSE(limit.Expired(267 * kSecond, 2, false));
  EXPECT_TRUE(limit.Expired(268 * kSecond, 2, false));
}

TEST(StopLimit, IsFiveSecondsOnceNothingCanFinish) {
  StopLimit limit(90, 0);
  EXPECT_FALSE(limit.Expired(10 * kSecond, 3, true));
  EXPECT_FALSE(limit.Expired(14 * kSecond, 3, true));
  EXPECT_TRUE(limit.Expired(15 * kSecond, 3, true));
  EXPECT_EQ(5, limit.Seconds());
}

TEST(StopLimit, CountsAnewWhenSomethingIsOnTheWayAgain) {
  StopLimit limit(90, 0);
  EXPECT_FALSE(limit.Expired(1 * kSecond, 3, true));
  EXPECT_FALSE(limit.Expired(5 * kSecond, 3, false));
  EXPECT_FALSE(limit.Expired(9 * kSecond, 3, true));
  EXPECT_FALSE(limit.Expired(13 * kSecond, 3, true));
  EXPECT_TRUE(limit.Expired(14 * kSecond, 3, true));
}

TEST(StopLimit, BelowFiveSecondsHoldsInEitherCase) {
  StopLimit limit(1, 0);
  EXPECT_TRUE(limit.Expired(1 * kSecond, 0, false));
  StopLimit stuck(1, 0);
  EXPECT_FALSE(stuck.Expired(1 * kSecond, 1, true));
  EXPECT_TRUE(stuck.Expired(2 * kSecond, 1, true));
}

}  // namespace
