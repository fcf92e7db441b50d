#include "reference/base/Log.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <sstream>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

#include "sdk/base/log.h"
#include "tests/support/TemporaryFolder.h"

namespace {

using testing::AllOf;
using testing::AnyOf;
using testing::ElementsAre;
using testing::HasSubstr;

std::vector<std::string> Lines(const std::string& content) {
  std::vector<std::string> lines;
  std::istringstream stream(content);
  for (std::string line; std::getline(stream, line);) lines.push_back(line);
  return lines;
}

bool g_wasConfigured = false;

class Log : public testing::Test {
 protected:
  Log() {
    g_wasConfigured = true;
    ConfigureLog({0, m_folder / "log.txt"});
  }
  ~Log() override {
    ConfigureLog({0, ""});
    SetLogObserver({});
  }

  /// The lines of the file without their times, which all have the form that they must have.
  std::vector<std::string> Logged(const std::string& name = "log.txt") const {
    constexpr std::size_t timeLength = 24;
    std::vector<std::string> lines = Lines(m_folder.Read(name));
    for (std::string& line : lines) {
      std::string time = line.substr(0, timeLength);
      std::replace_if(
          time.begin(), time.end(), [](char c) { return c >= '0' && c <= '9'; }, '0');
      EXPECT_EQ("0000-00-00 00:00:00.000 ", time);
      line.erase(0, timeLength);
    }
    return lines;
  }

  TemporaryFolder m_folder;
};

TEST_F(Log, LineHasTimeLevelModuleAndTextAndIsThereAtOnce) {
  IKPXFormatLog(3, "base.test", "%s has %d", "one", 1);
  EXPECT_THAT(Logged(), ElementsAre("[3] [base.test] one has 1"));
  EXPECT_EQ('\n', m_folder.Read("log.txt").back());
}

TEST_F(Log, LinesOfEveryLevelGoToTheFile) {
  for (const int level : {0, 3, 6, 12}) IKPXFormatLog(level, "m", "t");
  EXPECT_THAT(Logged(), ElementsAre("[0] [m] t", "[3] [m] t", "[6] [m] t", "[12] [m] t"));
}

TEST_F(Log, ControlBytesAreWrittenAsTheirNumbersAndNothingElseIs) {
  IKPXFormatLog(3, "m\n", "a\nb\r\tc\x01\x1f\x7f\xc3\xa9\xff\\x0a %%v {} [");
  EXPECT_THAT(Logged(), ElementsAre("[3] [m\\x0a] a\\x0ab\\x0d\\x09c\\x01\\x1f\\x7f\xc3\xa9\xff"
                                    "\\x0a %v {} ["));
}

TEST_F(Log, MessageOfSeveralMegabytesIsWhole) {
  const std::string text(5 << 20, 'x');
  IKPXFormatLog(3, "m", "<%s>", text.c_str());
  const std::vector<std::string> lines = Logged();
  ASSERT_EQ(1U, lines.size());
  EXPECT_TRUE(lines[0] == "[3] [m] <" + text + ">");
}

TEST_F(Log, LinesOfManyThreadsStayWhole) {
  constexpr int kThreads = 8;
  constexpr int kLines = 200;
  std::vector<std::string> expected;
  std::vector<std::thread> threads;
  for (int i = 0; i < kThreads; ++i) {
    const std::string text(3000, static_cast<char>('a' + i));
    for (int k = 0; k < kLines; ++k) {
      expected.push_back("[3] [m] " + text + " " + std::to_string(k));
    }
    threads.emplace_back([text] {
      for (int k = 0; k < kLines; ++k) IKPXFormatLog(3, "m", "%s %d", text.c_str(), k);
    });
  }
  for (std::thread& thread : threads) thread.join();
  std::vector<std::string> lines = Logged();
  std::sort(lines.begin(), lines.end());
  std::sort(expected.begin(), expected.end());
  EXPECT_TRUE(lines == expected);
}

TEST_F(Log, ExistingFileIsAppendedTo) {
  const std::string path = m_folder.Write("old.txt", "old\n");
  ConfigureLog({0, path});
  IKPXFormatLog(3, "m", "new");
  const std::vector<std::string> lines = Lines(m_folder.Read("old.txt"));
  EXPECT_THAT(lines, ElementsAre("old", HasSubstr(" [3] [m] new")));
}

TEST_F(Log, FullFileIsPutAsideAndTheOldestIsLost) {
  ConfigureLog({0, m_folder / "full.txt", 100, 2});
  for (const char* text : {"first", "second", "third", "fourth"}) {
    IKPXFormatLog(3, "m", "%s %s", text, std::string(60, 'x').c_str());
  }
  const std::string end = " " + std::string(60, 'x');
  EXPECT_THAT(Logged("full.txt"), ElementsAre("[3] [m] fourth" + end));
  EXPECT_THAT(Logged("full.1.txt"), ElementsAre("[3] [m] third" + end));
  EXPECT_THAT(Logged("full.2.txt"), ElementsAre("[3] [m] second" + end));
  EXPECT_FALSE(std::filesystem::exists(m_folder / "full.3.txt"));
}

TEST_F(Log, FileThatCannotBeWrittenIsNamedWithTheReasonAndTheLogGoesOn) {
  const std::string path = m_folder.Write("file", "") + "/log.txt";
  try {
    ConfigureLog({0, path});
    FAIL() << "no exception";
  } catch (const std::runtime_error& error) {
    EXPECT_THAT(error.what(),
                AllOf(HasSubstr("the log cannot be written to " + path + ": "),
                      AnyOf(HasSubstr("Not a directory"), HasSubstr("No such file or directory"))));
  }
  IKPXFormatLog(3, "m", "on");
  EXPECT_THAT(Logged(), ElementsAre("[3] [m] on"));
}

TEST_F(Log, ConsoleTakesLinesFromItsLevelUp) {
  testing::internal::CaptureStderr();
  ConfigureLog({5, ""});
  IKPXFormatLog(4, "m", "low");
  IKPXFormatLog(5, "m", "at");
  IKPXFormatLog(6, "m", "above");
  const std::vector<std::string> lines = Lines(testing::internal::GetCapturedStderr());
  EXPECT_THAT(lines, ElementsAre(HasSubstr(" [5] [m] at"), HasSubstr(" [6] [m] above")));
}

TEST_F(Log, SwitchedOffConsoleIsSilent) {
  testing::internal::CaptureStderr();
  IKPXFormatLog(6, "m", "text");
  EXPECT_EQ("", testing::internal::GetCapturedStderr());
}

TEST_F(Log, ObserverGetsEachLineAsItWasLoggedUntilItIsTakenAway) {
  std::vector<std::string> seen;
  SetLogObserver([&](int level, const std::string& module, const std::string& text) {
    seen.push_back(std::to_string(level) + "|" + module + "|" + text);
  });
  IKPXFormatLog(2, "m", "a\n%s", "b");
  SetLogObserver({});
  IKPXFormatLog(2, "m", "unseen");
  EXPECT_THAT(seen, ElementsAre("2|m|a\nb"));
}

TEST_F(Log, ObserverThatThrowsLosesNoLineOfTheFile) {
  SetLogObserver(
      [](int, const std::string&, const std::string&) { throw std::runtime_error("not my day"); });
  IKPXFormatLog(3, "m", "text");
  EXPECT_THAT(Logged(), ElementsAre("[3] [m] text"));
}

TEST(LogBeforeConfiguration, ConsoleTakesLinesFromTheToleratedFailureUp) {
  if (g_wasConfigured) ConfigureLog(LogConfig());  // another test of this process came first
  testing::internal::CaptureStderr();
  IKPXFormatLog(3, "m", "progress");
  IKPXFormatLog(4, "m", "tolerated");
  const std::vector<std::string> lines = Lines(testing::internal::GetCapturedStderr());
  EXPECT_THAT(lines, ElementsAre(HasSubstr(" [4] [m] tolerated")));
}

}  // namespace
