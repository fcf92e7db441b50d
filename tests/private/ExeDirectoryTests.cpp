// A program of its own: the frame remembers the executable's directory for the process.

#include <thread>

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
  seam.exePath = "/" + std::string(2000, 'x') + "/too-long.exe";  // refused by the runtime
  EXPECT_EQ("", GetExeDirectory());
  const std::string deep = "C:/a" + std::string(900, 'd') + "/b/";
  seam.exePath = "C:\\a" + std::string(900, 'd') + "\\b\\x.exe";
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

}  // namespace
