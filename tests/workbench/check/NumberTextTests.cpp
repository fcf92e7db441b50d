#include "workbench/check/NumberText.h"

#include <gtest/gtest.h>

namespace {

TEST(NumberText, IsANumberWithDigitsAndOneSignOnly) {
  for (const char* text : {"0", "7", "+7", "-1", "007", "99999999999999999999"}) {
    EXPECT_TRUE(IsNumber(text)) << text;
  }
  for (const char* text : {"", "+", "-", "--1", "1-", " 7", "7 ", "12x", "0x10", "1.5", "two"}) {
    EXPECT_FALSE(IsNumber(text)) << text;
  }
}

TEST(NumberText, ExceedsIntBeyondItsFirstAndLastValue) {
  for (const char* text :
       {"2147483648", "-2147483649", "  99999999999999999999", "3000000000 MB"}) {
    EXPECT_TRUE(ExceedsInt(text)) << text;
  }
  for (const char* text : {"2147483647", "-2147483648", "", "two", "7 99999999999"}) {
    EXPECT_FALSE(ExceedsInt(text)) << text;
  }
}

TEST(NumberText, LosesBlanksAtItsEndsOnly) {
  EXPECT_EQ("1 2", WithoutBlanks(" \t\r\n\v\f1 2 \n"));
  EXPECT_EQ("", WithoutBlanks(" \n"));
  EXPECT_EQ("", WithoutBlanks(""));
}

TEST(NumberText, PlainNumbersHaveDigitsAloneAndBlanksAroundThem) {
  for (const char* text : {"0", "2", " 2\n", "-1", "+3", "007", "2147483647"}) {
    EXPECT_TRUE(IsPlainNumber(text)) << text;
  }
  for (const char* text : {"", " ", "-", "two", "2x", "0x1", "1 2", "- 1", "1.0", "2147483648"}) {
    EXPECT_FALSE(IsPlainNumber(text)) << text;
  }
}

}  // namespace
