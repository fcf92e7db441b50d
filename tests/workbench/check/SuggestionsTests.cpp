#include "workbench/check/Suggestions.h"

#include <gtest/gtest.h>

TEST(SuggestionsTests, AreTheNearestCandidates) {
  Suggestions suggestions({"alarm.page", "video.page"});
  EXPECT_EQ("alarm.page", suggestions.For("alram.page"));
  EXPECT_EQ("", suggestions.For("weather.map"));
  EXPECT_EQ("; did you mean \"video.page\"?", suggestions.DidYouMean("Video.page"));
  EXPECT_EQ("", suggestions.DidYouMean("weather.map"));
}

TEST(SuggestionsTests, EndWhenTheyTookTooLong) {
  std::vector<std::string> candidates(250000, "x");
  candidates.emplace_back("alarm.page");
  Suggestions suggestions(candidates);
  EXPECT_EQ("alarm.page", suggestions.For("alarm.pag"));
  EXPECT_EQ("alarm.page", suggestions.For("alarm.pagee"));
  EXPECT_EQ("alarm.page", suggestions.For("larm.page"));
  EXPECT_EQ("alarm.page", suggestions.For("alarm.paeg"));
  EXPECT_EQ("", suggestions.For("Alarm.page"));
  EXPECT_EQ("alarm.page", suggestions.For("alarm.pag"));
}
