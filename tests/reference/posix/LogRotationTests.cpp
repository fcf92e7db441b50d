// A full log file that cannot be renamed.

#include <gmock/gmock.h>

#include <filesystem>
#include <string>

#include "sdk/base/log.h"
#include "tests/reference/LogTest.h"

namespace {

using testing::ElementsAre;

/// Logs a line of about 350 bytes.
void LogLong(const std::string& text) {
  IKPXFormatLog(3, "m", "%s %s", text.c_str(), std::string(300, 'x').c_str());
}

std::string Long(const std::string& text) {
  return "[3] [T] [m] " + text + " " + std::string(300, 'x');
}

std::string Refusal(const std::string& reason) {
  return "[4] [T] [base.log] the full log could not be renamed, it keeps growing: " + reason;
}

/// A log whose full file cannot be renamed, since its new names are folders that are not empty.
class LogRotation : public Log {
 protected:
  LogRotation() {
    for (const char* name : {"full.1.txt/x", "full.2.txt/x"}) {
      std::filesystem::create_directories(m_folder / name);
    }
    ConfigureLog({0, m_folder / "full.txt", 1000, 1});
  }
};

TEST_F(LogRotation, RefusedRenameLosesNoLineAndComesAgainAfterAsMuch) {
  for (const char* text : {"a", "b", "c", "d", "e"}) LogLong(text);
  const std::string refusal = Refusal("Directory not empty");
  EXPECT_THAT(Logged("full.txt"),
              ElementsAre(Long("a"), Long("b"), refusal, Long("c"), Long("d"), refusal, Long("e")));
}

TEST_F(LogRotation, RenameThatIsNoLongerRefusedRenamesAll) {
  for (const char* text : {"a", "b", "c", "d"}) LogLong(text);
  for (const char* name : {"full.1.txt", "full.2.txt"}) {
    std::filesystem::remove_all(m_folder / name);
  }
  for (const char* text : {"e", "f", "g"}) LogLong(text);
  EXPECT_THAT(Logged("full.1.txt"), ElementsAre(Long("e"), Long("f")));
  EXPECT_THAT(Logged("full.txt"), ElementsAre(Long("g")));
}

TEST_F(LogRotation, OldFilesStayWhenTheOldestCannotMove) {
  std::filesystem::remove_all(m_folder / "full.1.txt");
  m_folder.Write("full.1.txt", "old\n");
  for (const char* text : {"a", "b", "c"}) LogLong(text);
  EXPECT_EQ("old\n", m_folder.Read("full.1.txt"));
  EXPECT_THAT(Logged("full.txt"),
              ElementsAre(Long("a"), Long("b"), Refusal("Is a directory"), Long("c")));
}

}  // namespace
