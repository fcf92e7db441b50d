#include "workbench/output/Text.h"

#include <gtest/gtest.h>

namespace {

TEST(Columns, CountWideCharactersTwiceAndMarksNotAtAll) {
  EXPECT_EQ(3U, Columns("abc"));
  EXPECT_EQ(4U, Columns("\u6d4b\u8bd5"));
  EXPECT_EQ(2U, Columns("\U0001F600"));
  EXPECT_EQ(1U, Columns("e\u0301"));
  EXPECT_EQ(3U, Columns("a\xff"
                        "b"));
  EXPECT_EQ(2U, Columns("\xe6\xb5"));
}

TEST(CutToColumns, NeverCutsInsideACharacter) {
  EXPECT_EQ("abcdef", CutToColumns("abcdef", 6));
  EXPECT_EQ("ab...", CutToColumns("abcdef", 5));
  EXPECT_EQ("\u6d4b...", CutToColumns("\u6d4b\u8bd5\u6d4b\u8bd5", 6));
  EXPECT_EQ("abc", CutToColumns("abcdef", 3));
  EXPECT_EQ("", CutToColumns("\u6d4b", 1));
}

TEST(Pad, FillsUpByColumns) {
  EXPECT_EQ("\u6d4b  |", PadRight("\u6d4b", 4) + "|");
  EXPECT_EQ("  \u6d4b|", PadLeft("\u6d4b", 4) + "|");
  EXPECT_EQ("abcde", PadRight("abcde", 4));
}

TEST(Escaped, MakesControlBytesHarmlessAndLeavesTheRest) {
  EXPECT_EQ("a\\x0ab\\x1b[0m\\x7f\u00e9\\", Escaped("a\nb\x1b[0m\x7f\u00e9\\"));
}

TEST(JoinNames, NamesTheFirstAndCountsTheRest) {
  EXPECT_EQ("", JoinNames({}, 2));
  EXPECT_EQ("a", JoinNames({"a"}, 2));
  EXPECT_EQ("a and b", JoinNames({"a", "b"}, 2));
  EXPECT_EQ("a, b and 2 more", JoinNames({"a", "b", "c", "d"}, 2));
  EXPECT_EQ("a, b and c", JoinNames({"a", "b", "c"}, 3));
  EXPECT_EQ("(no ID) and x\\x0a", JoinNames({"", "x\n"}, 2));
}

TEST(Count, HasAPlural) {
  EXPECT_EQ("0 plugins, 1 plugin, 2 plugins",
            Count(0, "plugin") + ", " + Count(1, "plugin") + ", " + Count(2, "plugin"));
}

}  // namespace
