// Log lines that cannot be written.

#include <fcntl.h>
#include <gmock/gmock.h>
#include <unistd.h>

#include <filesystem>
#include <string>
#include <vector>

#include "sdk/base/log.h"
#include "tests/reference/LogTest.h"
#include "tests/support/posix/FileSizeLimit.h"

namespace {

using testing::ElementsAre;

using LogLoss = Log;

/// The descriptor by which this process has `file` open; -1 for none.
int DescriptorOf(const std::filesystem::path& file) {
  for (const auto& entry : std::filesystem::directory_iterator("/proc/self/fd")) {
    std::error_code closed;  // the iterator's own
    if (std::filesystem::read_symlink(entry, closed) == file) {
      return std::stoi(entry.path().filename());
    }
  }
  return -1;
}

TEST_F(LogLoss, FullDeviceLosesLinesOfTheFileOnlyAndCountsThem) {
  std::vector<std::string> seen;
  SetLogObserver([&](int, const std::string&, const std::string& text) { seen.push_back(text); });
  // Through a link, so that a wrong rotation would rename the link and not the device.
  std::filesystem::create_symlink("/dev/full", m_folder / "full");
  ConfigureLog({0, m_folder / "full", 10, 1});
  const std::uint64_t before = LostLogLines();
  for (const char* text : {"a", "b", "c"}) IKPXFormatLog(3, "m", "%s", text);
  EXPECT_EQ(3U, LostLogLines() - before);
  EXPECT_THAT(seen, ElementsAre("a", "b", "c"));
  EXPECT_FALSE(std::filesystem::exists(m_folder / "full.1"));
}

TEST_F(LogLoss, LostLinesAreCountedWhereTheyAreMissing) {
  const std::uint64_t before = LostLogLines();
  IKPXFormatLog(3, "m", "before");
  {
    const FileSizeLimit limit(std::filesystem::file_size(m_folder / "log.txt"));
    IKPXFormatLog(3, "m", "lost");
    IKPXFormatLog(3, "m", "lost too");
  }
  IKPXFormatLog(3, "m", "after");
  IKPXFormatLog(3, "m", "later");
  EXPECT_THAT(Logged(), ElementsAre("[3] [T] [m] before",
                                    "[4] [T] [base.log] log lines lost here: 2 (File too large)",
                                    "[3] [T] [m] after", "[3] [T] [m] later"));
  EXPECT_EQ(2U, LostLogLines() - before);
}

TEST_F(LogLoss, LineWrittenInPartEndsBeforeTheNextOne) {
  for (const std::size_t written : {1U, 10U}) {
    const std::string file = std::to_string(written) + ".txt";
    ConfigureLog({0, m_folder / file});
    IKPXFormatLog(3, "m", "before");
    {
      const FileSizeLimit limit(std::filesystem::file_size(m_folder / file) + written);
      IKPXFormatLog(3, "m", "cut");
      IKPXFormatLog(3, "m", "lost");
    }
    IKPXFormatLog(3, "m", "after");
    std::vector<std::string> lines = Lines(m_folder.Read(file));
    ASSERT_EQ(4U, lines.size());
    EXPECT_EQ(written, lines[1].size());
    lines.erase(lines.begin() + 1);
    EXPECT_THAT(Bare(lines),
                ElementsAre("[3] [T] [m] before",
                            "[4] [T] [base.log] log lines lost here: 2 (File too large)",
                            "[3] [T] [m] after"));
  }
}

TEST_F(LogLoss, FileThatCannotBeOpenedAnewIsTriedAtEachLine) {
  ConfigureLog({0, m_folder / "sub/log.txt", 10, 1});
  IKPXFormatLog(3, "m", "before");
  std::filesystem::remove_all(m_folder / "sub");
  m_folder.Write("sub", "in the way");
  const std::uint64_t before = LostLogLines();
  IKPXFormatLog(3, "m", "lost");
  IKPXFormatLog(3, "m", "lost too");
  EXPECT_EQ(2U, LostLogLines() - before);
  std::filesystem::remove(m_folder / "sub");
  IKPXFormatLog(3, "m", "after");
  EXPECT_THAT(Logged("sub/log.txt"),
              ElementsAre("[4] [T] [base.log] log lines lost here: 2 (Not a directory)",
                          "[3] [T] [m] after"));
}

TEST_F(LogLoss, LineIsLostWhileTheFilesSizeCannotBeRead) {
  ConfigureLog({0, m_folder / "full.txt", 10, 1});
  IKPXFormatLog(3, "m", "before");
  const int file = DescriptorOf(m_folder / "full.txt");
  ASSERT_NE(-1, file);
  const int same = fcntl(file, F_DUPFD_CLOEXEC, file + 1);
  close(file);
  IKPXFormatLog(3, "m", "lost");
  dup2(same, file);
  close(same);
  IKPXFormatLog(3, "m", "after");
  EXPECT_THAT(Logged("full.1.txt"), ElementsAre("[3] [T] [m] before"));
  EXPECT_THAT(Logged("full.txt"),
              ElementsAre("[4] [T] [base.log] log lines lost here: 1 (Input/output error)",
                          "[3] [T] [m] after"));
}

}  // namespace
