#include "workbench/record/LogFiles.h"

#include <gtest/gtest.h>

#include <string>

#include "tests/support/TemporaryFolder.h"

namespace fs = std::filesystem;

namespace {

class LogFiles : public testing::Test {
 protected:
  /// The lines of a file, each in brackets.
  std::string Lines(const std::string& content) const {
    std::string lines;
    VisitLines(folder.Write("log", content), [&](std::string_view line) {
      lines.append("[").append(line.size() < 100 ? line : "long").append("]");
    });
    return lines;
  }

  /// The groups that the files of these names make; the names of a group with blanks between.
  std::string Groups(const std::vector<std::string>& names) const {
    std::vector<fs::path> files;
    for (const std::string& name : names) files.emplace_back(folder.Path() / name);
    std::string text;
    for (const LogFileGroup& group : GroupLogFiles(files)) {
      for (const fs::path& file : group) text += file.filename().u8string() + " ";
      text += "/ ";
    }
    return text;
  }

  TemporaryFolder folder;
};

TEST_F(LogFiles, AreReadLineByLine) {
  EXPECT_EQ("", Lines(""));
  EXPECT_EQ("[a][][b]", Lines("a\n\nb"));
  EXPECT_EQ("[a][b]", Lines("a\nb\n"));
}

TEST_F(LogFiles, LinesLongerThanABlockAreLeftOut) {
  const std::string big(3U << 20U, 'x');
  EXPECT_EQ("[a][b]", Lines("a\n" + big + "\nb"));
  EXPECT_EQ("[a]", Lines("a\n" + big));
  EXPECT_EQ("[a][long][b]", Lines("a\n" + std::string(200000, 'x') + "\nb\n"));
}

TEST_F(LogFiles, LinesOnBothSidesOfABlocksEndAreWhole) {
  std::string content;
  std::string expected;
  for (int i = 0; i < 300000; ++i) {
    content += std::to_string(i) + "\n";
    expected += "[" + std::to_string(i) + "]";
  }
  EXPECT_EQ(expected, Lines(content));
}

TEST_F(LogFiles, AFileThatIsNotThereIsNamed) {
  try {
    VisitLines(folder.Path() / "none.log", [](std::string_view) {});
    FAIL();
  } catch (const std::runtime_error& error) {
    EXPECT_EQ(0U, std::string(error.what())
                      .find((folder.Path() / "none.log").u8string() + " cannot be opened: "));
  }
}

TEST_F(LogFiles, OfOneLogAreGroupedOldestFirstInAnyOrder) {
  EXPECT_EQ("hub.2.log hub.1.log hub.log / ", Groups({"hub.1.log", "hub.log", "hub.2.log"}));
  EXPECT_EQ("hub.log.10 hub.log.9 hub.log / ", Groups({"hub.log.9", "hub.log.10", "hub.log"}));
  EXPECT_EQ("hub.1.log / ", Groups({"hub.1.log"}));
}

TEST_F(LogFiles, OfSeveralLogsAreGroupsInTheOrderGiven) {
  EXPECT_EQ("b.log / a.1.log a.log / ", Groups({"b.log", "a.log", "a.1.log"}));
  EXPECT_EQ("host.20261121.log / host.20261122.log / ",
            Groups({"host.20261121.log", "host.20261122.log"}));
}

TEST_F(LogFiles, RenamedFilesBesideTheNewestOneAreAdded) {
  for (const char* name : {"hub.log", "hub.1.log", "hub.2.log", "hub.4.log", "other.1.log"}) {
    folder.Write(name, "");
  }
  EXPECT_EQ("hub.2.log hub.1.log hub.log / ", Groups({"hub.log"}));
  EXPECT_EQ("hub.2.log / ", Groups({"hub.2.log"}));
  folder.Write("syslog.1", "");
  EXPECT_EQ("syslog.1 syslog / ", Groups({"syslog"}));
}

}  // namespace
