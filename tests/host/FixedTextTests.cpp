#include "host/FixedText.h"

#include <gtest/gtest.h>

#include <string>

namespace {

TEST(FixedText, IsEmptyAtFirst) {
  EXPECT_EQ("", FixedText().View());
}

TEST(FixedText, IsTheLastOneThatWasSet) {
  FixedText text;
  text.Set("a long one");
  text.Set("short");
  EXPECT_EQ("short", text.View());
}

TEST(FixedText, IsCutAfterAThousandAndTwentyFourBytes) {
  const std::string most(1024, 'x');
  FixedText text;
  text.Set(most);
  EXPECT_EQ(most, text.View());
  text.Set(most + "y");
  EXPECT_EQ(most, text.View());
}

}  // namespace
