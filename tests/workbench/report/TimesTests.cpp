#include "workbench/report/Times.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

using testing::ElementsAre;

namespace {

TEST(Times, HaveOneDecimalWhenTheRunResolvesThem) {
  EXPECT_EQ("12.3", MsText(12'349'999, 1));
  EXPECT_EQ("12.4", MsText(12'350'000, 999'999));
  EXPECT_EQ("0.0", MsText(0, 1));
}

TEST(Times, HaveNoDecimalsWhenTheRunResolvesMilliseconds) {
  EXPECT_EQ("12", MsText(12'499'999, 1'000'000));
  EXPECT_EQ("13", MsText(12'500'000, 1'000'000));
}

TEST(Times, AreADashWhenUnknown) {
  EXPECT_EQ("-", MsText(-1, 1));
}

TEST(Times, OfPartsAddUpToTheirSumAsShown) {
  // Rounded one by one: 0.1 + 0.1 + 0.1; their sum is 0.4 (0.405).
  EXPECT_THAT(MsTexts({135'000, 134'000, 136'000}, 1), ElementsAre("0.1", "0.1", "0.2"));
  EXPECT_THAT(MsTexts({60'000, 60'000}, 1), ElementsAre("0.1", "0.0"));
  EXPECT_THAT(MsTexts({1'600'000, 1'600'000, 400'000}, 1'000'000), ElementsAre("2", "2", "0"));
  EXPECT_THAT(MsTexts({}, 1), ElementsAre());
}

}  // namespace
