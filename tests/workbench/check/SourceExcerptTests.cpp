#include "workbench/check/SourceExcerpt.h"

#include <gtest/gtest.h>

namespace {

std::string Shown(const SourceExcerpt& excerpt) {
  return excerpt.text + "\n" + std::string(excerpt.caret, ' ') +
         std::string(excerpt.underlined, '^');
}

std::string Around(const std::string& line, int column, std::size_t columns = 80) {
  return Shown(SourceText(line).Around(column, columns));
}

TEST(SourceExcerpt, UnderlinesTheNameOfAnElement) {
  EXPECT_EQ("a<Plugin ID='b'>\n ^^^^^^^", Around("a<Plugin ID='b'>", 2));
}

TEST(SourceExcerpt, UnderlinesTheNameOfAnEmptyElementAndOfAnEndTag) {
  EXPECT_EQ("<Plugin/>\n^^^^^^^", Around("<Plugin/>", 1));
  EXPECT_EQ("</Plugin>\n^^^^^^^^", Around("</Plugin>", 1));
}

TEST(SourceExcerpt, UnderlinesAnAttributeAValueAndAText) {
  EXPECT_EQ("<a ID=\"b c\">d/e</a>\n   ^^", Around("<a ID=\"b c\">d/e</a>", 4));
  EXPECT_EQ("<a ID=\"b c\">d/e</a>\n       ^", Around("<a ID=\"b c\">d/e</a>", 8));
  EXPECT_EQ("<a ID=\"b c\">d/e</a>\n            ^^^", Around("<a ID=\"b c\">d/e</a>", 13));
}

TEST(SourceExcerpt, UnderlinesOneColumnWhereNoWordBegins) {
  EXPECT_EQ("a = b\n  ^", Around("a = b", 3));
}

TEST(SourceExcerpt, HasNoCaretWithoutAColumn) {
  EXPECT_EQ("  <a>\n", Around("  <a>", 0));
}

TEST(SourceExcerpt, HasTheCaretBehindALineThatIsShorter) {
  EXPECT_EQ("abc\n   ^", Around("abc  \t\r", 9));
}

TEST(SourceExcerpt, IsEmptyForABlankLine) {
  EXPECT_EQ("\n^", Around("  \t \r", 1));
}

TEST(SourceExcerpt, ShowsTabsAsFourBlanks) {
  EXPECT_EQ("    a    <b>\n         ^^", Around("\ta\t<b>", 4));
}

TEST(SourceExcerpt, CountsWideCharactersAsTwoColumnsAndMarksAsNone) {
  EXPECT_EQ("名<b>\n  ^^", Around("名<b>", 2));
  EXPECT_EQ("<名前>\n^^^^^", Around("<名前>", 1));
  EXPECT_EQ("e\u0301<b>\n ^^", Around("e\u0301<b>", 3));
}

TEST(SourceExcerpt, CountsAByteThatIsNotUtf8AsACharacter) {
  EXPECT_EQ("\\xff <b>\n     ^^", Around("\xff <b>", 3));
  EXPECT_EQ("\\x80\\xc3<b>\n        ^^", Around("\x80\xc3<b>", 3));
}

TEST(SourceExcerpt, CutsBothEndsOfALongLine) {
  EXPECT_EQ("...defghijk...\n     ^^^^^^", Around("abcdefghijklmnopq", 6, 14));
}

TEST(SourceExcerpt, CutsOnlyTheEndWhenTheCaretIsNearTheBeginning) {
  EXPECT_EQ("abcdefgh...\n ^^^^^^^", Around("abcdefghijklmnopq", 2, 14));
}

TEST(SourceExcerpt, CutsOnlyTheBeginningWhenTheCaretIsNearTheEnd) {
  EXPECT_EQ("...jklmnopq\n         ^^", Around("abcdefghijklmnopq", 16, 14));
}

TEST(SourceExcerpt, DoesNotCutALineThatFitsExactly) {
  EXPECT_EQ("abcdefghijklmn\n       ^^^^^^^", Around("abcdefghijklmn", 8, 14));
}

TEST(SourceExcerpt, DoesNotCutWithinACharacter) {
  EXPECT_EQ("...名名名...\n     ^^^^", Around("名名名名名名名", 4, 12));
}

TEST(SourceExcerpt, ShowsOneColumnAtLeast) {
  EXPECT_EQ("...c...\n   ^", Around("abcdef", 3, 1));
}

TEST(SourceExcerpt, IsBoundedInALineOfMarksWithoutWidth) {
  std::string line = "<a>";
  for (int i = 0; i < 100'000; ++i) line += "\u0301";
  EXPECT_GT(10'000U, SourceText(line).Around(50'000, 80).text.size());
}

TEST(SourceExcerpt, ShowsColumnsOfALineInAnyOrder) {
  SourceText text("<a><b/>");
  EXPECT_EQ("<a><b/>\n   ^^", Shown(text.Around(4, 80)));
  EXPECT_EQ("<a><b/>\n^^", Shown(text.Around(1, 80)));
  EXPECT_EQ("<a><b/>\n       ^", Shown(text.Around(99, 80)));
  EXPECT_EQ("<a><b/>\n     ^", Shown(text.Around(6, 80)));
}

}  // namespace
