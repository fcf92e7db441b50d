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

using Lines = std::vector<std::string>;

TEST(Wrapped, IsBrokenAtBlanksAndTheLinesBehindTheFirstAreIndented) {
  EXPECT_EQ((Lines{"one two", "  three", "  four"}), Wrapped("one two three four", 7, 2));
  EXPECT_EQ((Lines{"one two", "three", "four"}), Wrapped("one two three four", 7, 0));
  EXPECT_EQ((Lines{"one two three four"}), Wrapped("one two three four", 18, 2));
}

TEST(Wrapped, OfNoColumnsIsTheTextAsItIs) {
  EXPECT_EQ((Lines{" one two "}), Wrapped(" one two ", 0, 2));
}

TEST(Wrapped, KeepsBlanksInsideALineAndDropsThemAtItsEnds) {
  EXPECT_EQ((Lines{"  a   b", "cc"}), Wrapped("  a   b   cc  ", 8, 0));
  EXPECT_EQ((Lines{"a   b", "cc"}), Wrapped("a   b   cc", 5, 0));
  EXPECT_EQ((Lines{"a"}), Wrapped("a     ", 3, 0));
}

TEST(Wrapped, OfNothingOrBlanksIsOneEmptyLine) {
  EXPECT_EQ((Lines{""}), Wrapped("", 5, 2));
  EXPECT_EQ((Lines{""}), Wrapped("        ", 5, 2));
}

TEST(Wrapped, BreaksAWordThatNoLineHoldsWhereTheLineIsFull) {
  EXPECT_EQ((Lines{"a 012345", "  678901", "  23 b"}), Wrapped("a 01234567890123 b", 8, 2));
  EXPECT_EQ((Lines{"aaa", "  012345"}), Wrapped("aaa 012345", 8, 2));
  EXPECT_EQ((Lines{"   01", "  234"}), Wrapped("   01234", 5, 2));
  EXPECT_EQ((Lines{"   01", "2"}), Wrapped("   012", 5, 0));  // no line is left empty
}

TEST(Wrapped, NeverBreaksInsideACharacterNorBeforeItsMarks) {
  EXPECT_EQ((Lines{"\u6d4b\u8bd5", "\u6d4b"}), Wrapped("\u6d4b\u8bd5\u6d4b", 5, 0));
  EXPECT_EQ((Lines{"ae\u0301", "bc"}), Wrapped("ae\u0301bc", 2, 0));
  EXPECT_EQ((Lines{"a\u6d4b", "b"}), Wrapped("a\u6d4b b", 4, 0));
}

TEST(Wrapped, OfOneColumnHasACharacterALineAndNoIndent) {
  EXPECT_EQ((Lines{"a", "b", "c"}), Wrapped("ab c", 1, 4));
  EXPECT_EQ((Lines{"e\u0301", "x"}), Wrapped("e\u0301x", 1, 4));
  EXPECT_EQ((Lines{"\u6d4b", "\u8bd5"}), Wrapped("\u6d4b\u8bd5", 1, 4));
}

TEST(Wrapped, LeavesOneColumnBesideALargerIndent) {
  EXPECT_EQ((Lines{"one", "   a", "   b"}), Wrapped("one a b", 4, 25));
}

TEST(Escaped, MakesControlBytesHarmlessAndLeavesTheRest) {
  EXPECT_EQ("a\\x0ab\\x1b[0m\\x7f\u00e9\\", Escaped("a\nb\x1b[0m\x7f\u00e9\\"));
}

TEST(Escaped, ShowsTheControlCharactersBeyondAsciiByTheirNumber) {
  EXPECT_EQ("\\u0080\\u009b2J\\u009f\u00a0", Escaped("\xc2\x80\xc2\x9b"
                                                     "2J\xc2\x9f\u00a0"));
  EXPECT_EQ("\\u2028\\u202a\\u202ex\\u2066\\u2069\u206a",
            Escaped("\u2028\u202a\u202ex\u2066\u2069\u206a"));
}

TEST(Escaped, ShowsBytesThatAreNoUtf8ByTheirNumber) {
  EXPECT_EQ("\\x9b2J\\xff\\xe6\\xb5", Escaped("\x9b"
                                              "2J\xff\xe6\xb5"));
  EXPECT_EQ("\\xc2\\x1b", Escaped("\xc2\x1b"));
  EXPECT_EQ("\uFFFD", Escaped("\uFFFD"));
  // An overlong form of U+009B, a surrogate, and a code point beyond U+10FFFF.
  EXPECT_EQ("\\xe0\\x82\\x9b", Escaped("\xe0\x82\x9b"));
  EXPECT_EQ("\\xed\\xa0\\x80", Escaped("\xed\xa0\x80"));
  EXPECT_EQ("\\xf4\\x90\\x80\\x80", Escaped("\xf4\x90\x80\x80"));
}

TEST(Escaped, OfAnEscapedTextIsThatText) {
  const std::string escaped = Escaped("\x1b\xc2\x9b\xff\u202e\\");
  EXPECT_EQ(escaped, Escaped(escaped));
}

TEST(ShownID, IsEscapedAndSaysThatThereIsNone) {
  EXPECT_EQ("a\\x1b (no ID)", ShownID("a\x1b") + " " + ShownID(""));
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
