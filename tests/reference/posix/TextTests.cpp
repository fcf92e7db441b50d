#include <gtest/gtest.h>

#include <string>

#include "reference/os/LocalText.h"
#include "sdk/base/path.h"

namespace {

TEST(LocalToWide, DecodesEachLengthOfUtf8) {
  EXPECT_EQ(L"a\u00e9\u20ac\U0001F600", LocalToWide("a\xc3\xa9\xe2\x82\xac\xf0\x9f\x98\x80"));
}

TEST(LocalToWide, ByteThatIsNotValidBecomesALoneCodePoint) {
  const std::wstring wide = {L'a', wchar_t{0xDCFF}, wchar_t{0xDCE9}, L'b'};
  EXPECT_EQ(wide, LocalToWide("a\xff\xe9"
                              "b"));
}

TEST(LocalToWide, OverlongFormOfASlashIsNoSlash) {
  EXPECT_EQ(std::wstring({wchar_t{0xDCC0}, wchar_t{0xDCAF}}), LocalToWide("\xc0\xaf"));
}

TEST(LocalToWide, EncodedLoneCodePointStaysItsBytes) {
  const std::wstring wide = {wchar_t{0xDCED}, wchar_t{0xDCB2}, wchar_t{0xDC80}};
  EXPECT_EQ(wide, LocalToWide("\xed\xb2\x80"));
}

TEST(LocalToWide, SequenceCutShortStaysItsBytes) {
  EXPECT_EQ(std::wstring({wchar_t{0xDCE2}, wchar_t{0xDC82}}), LocalToWide("\xe2\x82"));
}

TEST(LocalToWide, EveryPairOfBytesAroundACharacterSurvivesThereAndBack) {
  for (int first = 1; first < 256; ++first) {
    for (int second = 1; second < 256; ++second) {
      const std::string text = {static_cast<char>(first), static_cast<char>(second), '\xbf', '\xbf',
                                static_cast<char>(first)};
      ASSERT_EQ(text, LocalFromWide(LocalToWide(text))) << first << " " << second;
    }
  }
}

}  // namespace
