#include "tests/contract/LoaderTest.h"

namespace {

TEST(TextForTheLoader, IsDecodedByTheLocalCodePage) {
  wchar_t expected[8] = {};
  const int length = MultiByteToWideChar(CP_ACP, 0, "\xe9\xe8", 2, expected, 8);
  EXPECT_EQ(std::wstring(expected, static_cast<std::size_t>(length)), LocalToWide("\xe9\xe8"));
}

}  // namespace
