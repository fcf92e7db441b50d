#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <cstdint>
#include <filesystem>
#include <string>

#include "reference/os/ProcessPath.h"
#include "reference/xrt/ExecutablePath.h"
#include "sdk/base/path.h"
#include "sdk/os/os.h"
#include "sdk/xrt/runtime.h"

namespace {

class Runtime : public testing::Test {
 protected:
  ~Runtime() override { SetExecutablePath(std::string()); }

  /// The path that XRT_GetCurExePath writes into `size` bytes, or "refused".
  static std::string PathIn(std::int32_t size) {
    std::string buffer(static_cast<std::size_t>(size), 'x');
    if (XRT_GetCurExePath(&buffer[0], size) == 0) return buffer.c_str();
    return buffer[0] == '\0' ? "refused" : "refused, buffer not emptied";
  }
};

TEST_F(Runtime, ReportsTheRunningProgramUnlessAnotherIsSet) {
  EXPECT_EQ(ProcessPath(), PathIn(4096));
  EXPECT_EQ("reference_tests", std::filesystem::path(ProcessPath()).stem());
  SetExecutablePath("/a/b/HUB");
  EXPECT_EQ("/a/b/HUB", PathIn(4096));
  SetExecutablePath(std::string());
  EXPECT_EQ(ProcessPath(), PathIn(4096));
}

TEST_F(Runtime, PathThatJustFitsIsWrittenWhole) {
  SetExecutablePath("/a/b/HUB");
  EXPECT_EQ("/a/b/HUB", PathIn(9));
}

TEST_F(Runtime, PathThatDoesNotFitIsRefusedAndNotCut) {
  SetExecutablePath("/a/b/HUB");
  EXPECT_EQ("refused", PathIn(8));
  EXPECT_EQ("refused", PathIn(1));
}

TEST_F(Runtime, NoBufferIsRefused) {
  char untouched = 'x';
  EXPECT_NE(0, XRT_GetCurExePath(nullptr, 100));
  EXPECT_NE(0, XRT_GetCurExePath(&untouched, 0));
  EXPECT_NE(0, XRT_GetCurExePath(&untouched, -1));
  EXPECT_EQ('x', untouched);
}

TEST_F(Runtime, DirectoryKeepsItsLastSeparator) {
  SetExecutablePath("/a/b/HUB");
  EXPECT_EQ("/a/b/", GetCurExeDir());
  SetExecutablePath("C:\\a\\HUB.exe");
  EXPECT_EQ("C:\\a\\", GetCurExeDir());
  SetExecutablePath("C:\\a/b\\c/HUB.exe");
  EXPECT_EQ("C:\\a/b\\c/", GetCurExeDir());
}

TEST_F(Runtime, DirectoryOfAPathWithoutOneIsEmpty) {
  SetExecutablePath("HUB");
  EXPECT_EQ("", GetCurExeDir());
}

TEST_F(Runtime, DirectoryOfALongPathIsWhole) {
  const std::string directory = "/" + std::string(20000, 'd') + "/";
  SetExecutablePath(directory + "HUB");
  EXPECT_EQ(directory, GetCurExeDir());
}

using Milliseconds = std::chrono::duration<double, std::milli>;

/// The shortest of several rests: others may keep a thread from going on in time.
Milliseconds ShortestRest(std::uint32_t milliseconds, double goodEnough) {
  Milliseconds shortest = Milliseconds::max();
  for (int i = 0; i < 100 && shortest.count() > goodEnough; ++i) {
    const auto begin = std::chrono::steady_clock::now();
    XRT_Sleep(milliseconds);
    shortest = std::min<Milliseconds>(shortest, std::chrono::steady_clock::now() - begin);
  }
  return shortest;
}

TEST_F(Runtime, RestLastsAsManyMillisecondsAsAsked) {
  const double shortest = ShortestRest(40, 60).count();
  EXPECT_GE(shortest, 39);
  EXPECT_LE(shortest, 60);
}

TEST_F(Runtime, ClockCountsTheMillisecondsThatPass) {
  const auto outerBegin = std::chrono::steady_clock::now();
  const ULONGLONG begin = GetTickCount64();
  const auto innerBegin = std::chrono::steady_clock::now();
  XRT_Sleep(200);
  const auto innerEnd = std::chrono::steady_clock::now();
  const auto ticks = static_cast<double>(GetTickCount64() - begin);
  const auto outerEnd = std::chrono::steady_clock::now();
  constexpr double kResolution = 16;  // of Windows' clock
  EXPECT_GE(ticks, Milliseconds(innerEnd - innerBegin).count() - kResolution);
  EXPECT_LE(ticks, Milliseconds(outerEnd - outerBegin).count() + kResolution);
}

}  // namespace
