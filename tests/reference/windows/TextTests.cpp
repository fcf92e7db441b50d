// Texts in the local code page, whichever that is on this system.

#include <gtest/gtest.h>

#include <string>

#include "reference/os/LocalText.h"
#include "sdk/base/path.h"
#include "sdk/os/os.h"

namespace {

TEST(LocalToWide, KeepsAscii) {
  EXPECT_EQ(L"C:\\a b\\c.dll", LocalToWide("C:\\a b\\c.dll"));
  EXPECT_EQ(L"", LocalToWide(""));
}

TEST(LocalToWide, DecodesTheLocalCodePage) {
  wchar_t expected[8] = {};
  const int length = MultiByteToWideChar(CP_ACP, 0, "\xe9\xe8", 2, expected, 8);
  EXPECT_EQ(std::wstring(expected, static_cast<std::size_t>(length)), LocalToWide("\xe9\xe8"));
}

TEST(LocalToWide, EveryCharacterOfTheCodePageSurvivesThereAndBack) {
  for (wchar_t character = 1; character < 0xD800; ++character) {
    const std::wstring wide(1, character);
    char local[8] = {};
    BOOL isLost = FALSE;
    const DWORD flags = GetACP() == CP_UTF8 ? 0 : WC_NO_BEST_FIT_CHARS;
    const int length = WideCharToMultiByte(CP_ACP, flags, wide.c_str(), 1, local, 8, nullptr,
                                           flags == 0 ? nullptr : &isLost);
    if (length == 0 || isLost) continue;
    EXPECT_EQ(wide, LocalToWide(LocalFromWide(wide))) << static_cast<int>(character);
  }
}

}  // namespace
