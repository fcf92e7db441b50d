#include "workbench/check/TextEncoding.h"

#include <gtest/gtest.h>

#include <string>

namespace {

TEST(TextEncoding, AcceptsTheFirstAndLastCharacterOfEachLength) {
  for (const char* text :
       {"", "\x7F", "\xC2\x80", "\xDF\xBF", "\xE0\xA0\x80", "\xED\x9F\xBF", "\xEE\x80\x80",
        "\xEF\xBF\xBF", "\xF0\x90\x80\x80", "\xF4\x8F\xBF\xBF"}) {
    EXPECT_FALSE(FirstBadByte(text)) << text;
  }
}

TEST(TextEncoding, RefusesWhatOnlyLooksLikeUtf8) {
  const char* overlong[] = {"\xC0\x80", "\xC1\xBF", "\xE0\x9F\xBF", "\xF0\x8F\xBF\xBF"};
  const char* surrogates[] = {"\xED\xA0\x80", "\xED\xBF\xBF"};
  const char* beyond[] = {"\xF4\x90\x80\x80", "\xF5\x80\x80\x80", "\xFF"};
  const char* cutShort[] = {"\xC3", "\xE2\x82", "\xF0\x9F\x98", "\xE2\x82x", "\xC3<"};
  for (const char* text : overlong) EXPECT_TRUE(FirstBadByte(text)) << text;
  for (const char* text : surrogates) EXPECT_TRUE(FirstBadByte(text)) << text;
  for (const char* text : beyond) EXPECT_TRUE(FirstBadByte(text)) << text;
  for (const char* text : cutShort) EXPECT_TRUE(FirstBadByte(text)) << text;
  EXPECT_TRUE(FirstBadByte("\x80"));
}

TEST(TextEncoding, CountsCharactersUpToTheBadByte) {
  const auto bad = FirstBadByte("a\n\xC3\xA4\xE2\x82\xAC\xE4 \xE4");
  ASSERT_TRUE(bad);
  EXPECT_EQ(0xE4, bad->byte);
  EXPECT_EQ(2, bad->place.line);
  EXPECT_EQ(3, bad->place.column);
}

TEST(TextEncoding, KnowsWideEncodingsByMarkAndByTheFirstTag) {
  EXPECT_EQ("UTF-16", WideEncoding("\xFF\xFE<"));
  EXPECT_EQ("UTF-16", WideEncoding("\xFE\xFF"));
  EXPECT_EQ("UTF-16", WideEncoding(std::string("<\0P\0", 4)));
  EXPECT_EQ("UTF-16", WideEncoding(std::string("\0<\0P", 4)));
  EXPECT_EQ("UTF-32", WideEncoding(std::string("\xFF\xFE\0\0", 4)));
  EXPECT_EQ("UTF-32", WideEncoding(std::string("\0\0\xFE\xFF", 4)));
  EXPECT_EQ("UTF-32", WideEncoding(std::string("<\0\0\0", 4)));
  EXPECT_EQ("UTF-32", WideEncoding(std::string("\0\0\0<", 4)));
  for (const char* text : {"", "<", "<P", "\xEF\xBB\xBF<", "\xFF"}) {
    EXPECT_EQ("", WideEncoding(text)) << text;
  }
}

}  // namespace
