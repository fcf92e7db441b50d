// The running executable's path, texts for the loader, the clock and the rest.

#include <gtest/gtest.h>

#include <memory>
#include <string>

#include "sdk/base/path.h"
#include "sdk/os/os.h"
#include "sdk/xrt/runtime.h"
#include "tests/contract/Subject.h"

namespace {

class ExecutablePath : public testing::Test {
 protected:
  static constexpr std::size_t kRoom = 65536;

  /// What the runtime writes into a buffer of `size` bytes, followed by the byte behind them, which
  /// is x if it was left as it was; "refused" when it says so.
  static std::string PathIn(std::int32_t size) {
    std::string buffer(kRoom, 'x');
    if (XRT_GetCurExePath(&buffer[0], size) != 0) return "refused";
    return buffer.c_str() + std::string(1, buffer[static_cast<std::size_t>(size)]);
  }

  std::unique_ptr<Subject> subject = Subject::Make();
  const std::string path = [] {
    std::string buffer(kRoom, '\0');
    XRT_GetCurExePath(&buffer[0], kRoom);
    return std::string(buffer.c_str());
  }();
};

TEST_F(ExecutablePath, ThatJustFitsIsWrittenWholeAndNothingBehindIt) {
  ASSERT_FALSE(path.empty());
  EXPECT_EQ(path + "x", PathIn(static_cast<std::int32_t>(path.size() + 1)));
}

TEST_F(ExecutablePath, ThatDoesNotFitIsRefused) {
  for (const std::int32_t size : {static_cast<std::int32_t>(path.size()), 1, 0, -1}) {
    EXPECT_EQ("refused", PathIn(size)) << size;
  }
}

TEST_F(ExecutablePath, UpToItsLastSeparatorIsTheDirectory) {
  EXPECT_EQ(path.substr(0, path.find_last_of("/\\") + 1), GetCurExeDir());
  EXPECT_NE("", GetCurExeDir());
}

TEST(TextForTheLoader, KeepsAscii) {
  std::string ascii;
  std::wstring wide;
  for (char character = 1; character < 127; ++character) {
    ascii += character;
    wide += static_cast<wchar_t>(character);
  }
  EXPECT_EQ(wide, LocalToWide(ascii));
  EXPECT_EQ(L"", LocalToWide(""));
}

TEST(Clock, CountsTheMillisecondsOfARest) {
  const std::unique_ptr<Subject> subject = Subject::Make();
  constexpr std::uint32_t kRest = 40;
  const ULONGLONG begin = GetTickCount64();
  XRT_Sleep(kRest);
  // Windows counts in steps of some 16 milliseconds.
  EXPECT_GE(GetTickCount64() - begin, kRest - 16U);
}

TEST(Clock, NeverRunsBackwards) {
  const std::unique_ptr<Subject> subject = Subject::Make();
  ULONGLONG before = GetTickCount64();
  for (int i = 0; i < 100000; ++i) {
    const ULONGLONG now = GetTickCount64();
    ASSERT_LE(before, now);
    before = now;
  }
}

}  // namespace
