#include "workbench/record/HeadLine.h"

#include <gtest/gtest.h>

#include "workbench/record/FlightRecord.h"

namespace {

RunHead Head() {
  RunHead head;
  head.hubVersion = "1.0";
  head.frameVersion = "1.1";
  head.platformVersion = "1.2";
  head.pid = 7;
  head.host = "harbour";
  head.path = "/srv/site/bin/";
  return head;
}

TEST(HeadLine, NamesVersionsProcessProductFolderAndCommandLine) {
  RunHead head = Head();
  head.product = "NVX";
  head.productVersion = "2.6.0";
  head.commandLine = {"HUB", "run", "my folder", "", "a\"b", "a'b", "a\tb"};
  EXPECT_EQ(
      "HUB 1.0, frame 1.1, platform 1.2, pid 7 on harbour, product NVX 2.6.0 in /srv/site/bin/: "
      "HUB run \"my folder\" \"\" \"a\"b\" \"a'b\" \"a\tb\"",
      HeadLine(head));
}

TEST(HeadLine, SaysWhenTheProductHasNoName) {
  EXPECT_EQ(
      "HUB 1.0, frame 1.1, platform 1.2, pid 7 on harbour, product (without a name) in "
      "/srv/site/bin/: ",
      HeadLine(Head()));
}

/// The head that is read from a line, as the record writes it.
std::string Read(const std::string& line) {
  const auto head = ReadHeadLine(line);
  return head ? RecordLine(*head) : "no head";
}

TEST(HeadLine, IsReadAsItWasWritten) {
  RunHead head = Head();
  head.product = "North Harbour";
  head.productVersion = "2.6.0";
  head.commandLine = {"HUB", "run", "my folder", "", "a\"b", "a'b", "a\tb"};
  EXPECT_EQ(RecordLine(head), Read(HeadLine(head)));
  head.commandLine = {"HUB", "run", "--full-sleep"};
  EXPECT_EQ(RecordLine(head), Read(HeadLine(head)));
  EXPECT_EQ(RecordLine(Head()), Read(HeadLine(Head())));
}

TEST(HeadLine, IsNoneOfAnotherOrACutText) {
  const std::string line = HeadLine(Head());
  for (std::size_t size = 0; size + 1 < line.size(); ++size) {
    EXPECT_EQ("no head", Read(line.substr(0, size))) << size;
  }
  EXPECT_EQ("no head", Read("HUB 1, frame 1, platform 1, pid x on h, product p in /: "));
  EXPECT_EQ("no head", Read("Stopping (--seconds 1)."));
}

}  // namespace
