#include "src/private/DottedText.h"

#include <gtest/gtest.h>

namespace {

TEST(DottedText, GroupIsThePartBeforeTheFirstDot) {
  EXPECT_EQ("a", GroupNameOf("a.b.c"));
  EXPECT_EQ("", GroupNameOf("abc"));
  EXPECT_EQ("", GroupNameOf(".x"));
  EXPECT_EQ("", GroupNameOf(""));
}

TEST(DottedText, ShortVersionIsThreePartsOrNone) {
  EXPECT_EQ("2.6.1", ShortVersionOf("2.6.1.15"));
  EXPECT_EQ("3.1.2", ShortVersionOf("3..1.2"));
  EXPECT_EQ("1.2.3", ShortVersionOf(".1.2.3"));
  EXPECT_EQ("", ShortVersionOf("3.1"));
  EXPECT_EQ("", ShortVersionOf("3.1.."));
  EXPECT_EQ("", ShortVersionOf(""));
}

}  // namespace
