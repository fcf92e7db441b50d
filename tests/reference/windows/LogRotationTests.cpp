// A full log file that cannot be renamed because it is open elsewhere.

#include <gmock/gmock.h>
#include <windows.h>

#include <filesystem>
#include <string>

#include "sdk/base/log.h"
#include "tests/reference/LogTest.h"

namespace {

using testing::ElementsAre;
using testing::StartsWith;

/// Logs a line of about 350 bytes.
void LogLong(const std::string& text) {
  IKPXFormatLog(3, "m", "%s %s", text.c_str(), std::string(300, 'x').c_str());
}

std::string Long(const std::string& text) {
  return "[3] [T] [m] " + text + " " + std::string(300, 'x');
}

TEST_F(Log, FileThatSomebodyHasOpenLosesNoLineAndIsRenamedLater) {
  const std::string path = m_folder / "full.txt";
  m_folder.Write("full.1.txt", "old\n");
  m_folder.Write("full.2.txt", "oldest\n");
  ConfigureLog({0, path, 1000, 2});
  LogLong("a");
  LogLong("b");
  const HANDLE held = CreateFileA(path.c_str(), GENERIC_READ, FILE_SHARE_READ | FILE_SHARE_WRITE,
                                  nullptr, OPEN_EXISTING, 0, nullptr);
  ASSERT_NE(INVALID_HANDLE_VALUE, held);
  LogLong("c");
  LogLong("d");
  EXPECT_THAT(Logged("full.txt"),
              ElementsAre(Long("a"), Long("b"),
                          StartsWith("[4] [T] [base.log] the full log could not be renamed, it "
                                     "keeps growing: "),
                          Long("c"), Long("d")));
  EXPECT_EQ("oldest\n", m_folder.Read("full.3.txt"));
  CloseHandle(held);
  LogLong("e");
  EXPECT_THAT(Logged("full.txt"), ElementsAre(Long("e")));
  EXPECT_EQ(5U, Logged("full.1.txt").size());
  EXPECT_EQ("old\n", m_folder.Read("full.2.txt"));
  EXPECT_FALSE(std::filesystem::exists(m_folder / "full.3.txt"));
}

}  // namespace
