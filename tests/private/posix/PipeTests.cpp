#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <string>

#include "src/private/XmlProto.h"
#include "tests/support/FrameTest.h"

namespace {

using Pipe = FrameTest;

TEST_F(Pipe, InPlaceOfAFileIsReplacedByTheDataFileBesideIt) {
  tree.Write("m/Plugin.data", "data");
  const std::string path = tree.ExeDirectory() + "../m/Plugin.xml";
  ASSERT_EQ(0, mkfifo(path.c_str(), 0600));
  const int pipe = open(path.c_str(), O_RDWR | O_CLOEXEC);  // so that opening it does not block
  std::string content = "untouched";
  EXPECT_TRUE(TevModelParse::ReadWholeFile(content, path, ""));
  close(pipe);
  EXPECT_EQ("data", content);
}

}  // namespace
