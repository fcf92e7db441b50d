// A program of its own: the frame remembers the executable's directory for the process.

#include <gmock/gmock.h>

#include <cstddef>
#include <string>
#include <thread>
#include <vector>

#include "src/private/XmlProto.h"
#include "tests/support/FrameTest.h"

using TevModelParse::GetExeDirectory;

namespace {

using ExeDirectory = FrameTest;

TEST_F(ExeDirectory, IsFoundOnceAndHasForwardSlashes) {
  seam.exePath = "";
  EXPECT_EQ("", GetExeDirectory());
  seam.exePath = "no-separator.exe";
  EXPECT_EQ("", GetExeDirectory());
  constexpr std::size_t mostBytes = 1039;
  const std::string names(mostBytes - std::string("C:\\\\b\\x.exe").size(), 'x');
  seam.exePath = "C:\\" + names + "x\\b\\x.exe";  // refused by the runtime
  EXPECT_EQ("", GetExeDirectory());
  const std::string deep = "C:/" + names + "/b/";
  seam.exePath = "C:\\" + names + "\\b\\x.exe";
  EXPECT_EQ(mostBytes, seam.exePath.size());
  EXPECT_EQ(deep, GetExeDirectory());
  seam.exePath = "/elsewhere/x";
  EXPECT_EQ(deep, GetExeDirectory());
  std::string seen;
  std::thread([&seen] { seen = GetExeDirectory(); }).join();
  EXPECT_EQ(deep, seen);
  EXPECT_EQ(seam.lockCalls.size() % 2, 0U);
  EXPECT_EQ("Lock", seam.lockCalls.front());
  EXPECT_EQ("Unlock", seam.lockCalls.back());
}

TEST_F(ExeDirectory, IsAskedForUnderTheLock) {
  std::vector<std::string> before;
  seam.onExePath = [&] { before = seam.lockCalls; };
  GetExeDirectory();
  EXPECT_THAT(before, testing::ElementsAre("Lock"));
}

}  // namespace
