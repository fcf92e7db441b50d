#include "reference/base/Log.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

#include "sdk/base/log.h"
#include "tests/reference/LogTest.h"
#include "tests/reference/ThreadNumber.h"

namespace {

using testing::AllOf;
using testing::AnyOf;
using testing::ElementsAre;
using testing::HasSubstr;

TEST_F(Log, LineHasTimeLevelThreadModuleAndTextAndIsThereAtOnce) {
  IKPXFormatLog(3, "base.test", "%s has %d", "one", 1);
  EXPECT_THAT(Logged(), ElementsAre("[3] [T] [base.test] one has 1"));
  EXPECT_EQ('\n', m_folder.Read("log.txt").back());
}

TEST_F(Log, LinesOfEveryLevelGoToTheFile) {
  for (const int level : {0, 3, 6, 12}) IKPXFormatLog(level, "m", "t");
  EXPECT_THAT(Logged(),
              ElementsAre("[0] [T] [m] t", "[3] [T] [m] t", "[6] [T] [m] t", "[12] [T] [m] t"));
}

TEST_F(Log, ControlBytesAreWrittenAsTheirNumbersAndNothingElseIs) {
  IKPXFormatLog(3, "m\n", "a\nb\r\tc\x01\x1f\x7f\xc3\xa9\xff\\x0a %%v {} [");
  EXPECT_THAT(Logged(), ElementsAre("[3] [T] [m\\x0a] a\\x0ab\\x0d\\x09c\\x01\\x1f\\x7f\xc3\xa9\xff"
                                    "\\x0a %v {} ["));
}

TEST_F(Log, MessageOfSeveralMegabytesIsWhole) {
  const std::string text(5 << 20, 'x');
  IKPXFormatLog(3, "m", "<%s>", text.c_str());
  const std::vector<std::string> lines = Logged();
  ASSERT_EQ(1U, lines.size());
  EXPECT_TRUE(lines[0] == "[3] [T] [m] <" + text + ">");
}

TEST_F(Log, LinesOfManyThreadsStayWhole) {
  constexpr int kThreads = 8;
  constexpr int kLines = 200;
  std::vector<std::vector<std::string>> expectedOf(kThreads);
  std::vector<std::thread> threads;
  for (int i = 0; i < kThreads; ++i) {
    threads.emplace_back([i, &mine = expectedOf[static_cast<std::size_t>(i)]] {
      const std::string text(3000, static_cast<char>('a' + i));
      for (int k = 0; k < kLines; ++k) {
        IKPXFormatLog(3, "m", "%s %d", text.c_str(), k);
        mine.push_back("[3] [" + ThreadNumber() + "] [m] " + text + " " + std::to_string(k));
      }
    });
  }
  for (std::thread& thread : threads) thread.join();
  std::vector<std::string> expected;
  for (const auto& mine : expectedOf) expected.insert(expected.end(), mine.begin(), mine.end());
  std::vector<std::string> lines = Logged();
  std::sort(lines.begin(), lines.end());
  std::sort(expected.begin(), expected.end());
  EXPECT_TRUE(lines == expected);
}

TEST_F(Log, ExistingFileIsAppendedTo) {
  const std::string path = m_folder.Write("old.txt", "old\n");
  ConfigureLog({0, path});
  IKPXFormatLog(3, "m", "new");
  std::vector<std::string> lines = Lines(m_folder.Read("old.txt"));
  ASSERT_EQ("old", lines[0]);
  lines.erase(lines.begin());
  EXPECT_THAT(Bare(lines), ElementsAre("[3] [T] [m] new"));
}

TEST_F(Log, LastLineOfTheFileThatHasNoEndGetsOne) {
  for (const std::string cut : {"cut of", "c"}) {
    const std::string path = m_folder.Write("old.txt", cut);
    ConfigureLog({0, path});
    IKPXFormatLog(3, "m", "new");
    EXPECT_THAT(Lines(m_folder.Read("old.txt")), ElementsAre(cut, HasSubstr("] [m] new")));
  }
}

TEST_F(Log, FileTakesLinesFromItsLevelUp) {
  LogConfig config;
  config.consoleLevel = 0;
  config.file = m_folder / "some.txt";
  config.fileLevel = 5;
  ConfigureLog(config);
  for (const int level : {0, 4, 5, 6}) IKPXFormatLog(level, "m", "t");
  EXPECT_THAT(Logged("some.txt"), ElementsAre("[5] [T] [m] t", "[6] [T] [m] t"));
}

TEST_F(Log, FolderOfTheFileIsMade) {
  ConfigureLog({0, m_folder / "new/folder/log.txt"});
  IKPXFormatLog(3, "m", "t");
  EXPECT_THAT(Logged("new/folder/log.txt"), ElementsAre("[3] [T] [m] t"));
}

TEST_F(Log, FullFileIsRenamedAndTheOldestIsLost) {
  ConfigureLog({0, m_folder / "full.txt", 100, 2});
  for (const char* text : {"first", "second", "third", "fourth"}) {
    IKPXFormatLog(3, "m", "%s %s", text, std::string(60, 'x').c_str());
  }
  const std::string end = " " + std::string(60, 'x');
  EXPECT_THAT(Logged("full.txt"), ElementsAre("[3] [T] [m] fourth" + end));
  EXPECT_THAT(Logged("full.1.txt"), ElementsAre("[3] [T] [m] third" + end));
  EXPECT_THAT(Logged("full.2.txt"), ElementsAre("[3] [T] [m] second" + end));
  EXPECT_FALSE(std::filesystem::exists(m_folder / "full.3.txt"));
}

TEST_F(Log, EightRenamedFilesAreKept) {
  LogConfig config;
  config.file = m_folder / "full.txt";
  config.consoleLevel = 0;
  config.maxFileBytes = 10;
  ConfigureLog(config);
  for (int line = 0; line < 12; ++line) IKPXFormatLog(3, "m", "t");
  EXPECT_TRUE(std::filesystem::exists(m_folder / "full.8.txt"));
  EXPECT_FALSE(std::filesystem::exists(m_folder / "full.9.txt"));
}

TEST_F(Log, LineLongerThanAFileGetsOneOfItsOwn) {
  ConfigureLog({0, m_folder / "full.txt", 10, 2});
  for (const char* text : {"first", "second"}) IKPXFormatLog(3, "m", "%s", text);
  EXPECT_THAT(Logged("full.txt"), ElementsAre("[3] [T] [m] second"));
  EXPECT_THAT(Logged("full.1.txt"), ElementsAre("[3] [T] [m] first"));
  EXPECT_FALSE(std::filesystem::exists(m_folder / "full.2.txt"));
}

TEST_F(Log, FileThatWasFullBeforeIsRenamedAtTheFirstLine) {
  const std::string path = m_folder.Write("full.txt", std::string(99, 'x') + "\n");
  ConfigureLog({0, path, 100, 2});
  IKPXFormatLog(3, "m", "new");
  EXPECT_THAT(Logged("full.txt"), ElementsAre("[3] [T] [m] new"));
  EXPECT_EQ(std::string(99, 'x') + "\n", m_folder.Read("full.1.txt"));
}

TEST_F(Log, FileOfOneByteIsRenamedAsWell) {
  const std::string path = m_folder.Write("full.txt", "\n");
  ConfigureLog({0, path, 10, 2});
  IKPXFormatLog(3, "m", "new");
  EXPECT_THAT(Logged("full.txt"), ElementsAre("[3] [T] [m] new"));
  EXPECT_EQ("\n", m_folder.Read("full.1.txt"));
}

TEST_F(Log, GapAmongTheRenamedFilesIsFilledBeforeOneIsLost) {
  // The files that are left when renaming the full file itself has failed.
  m_folder.Write("full.2.txt", "older\n");
  m_folder.Write("full.3.txt", "oldest\n");
  ConfigureLog({0, m_folder / "full.txt", 10, 2});
  for (const char* text : {"first", "second"}) IKPXFormatLog(3, "m", "%s", text);
  EXPECT_THAT(Logged("full.1.txt"), ElementsAre("[3] [T] [m] first"));
  EXPECT_EQ("older\n", m_folder.Read("full.2.txt"));
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
  EXPECT_THAT(Logged(), ElementsAre("[3] [T] [m] on"));
}

TEST_F(Log, ConsoleTakesLinesFromItsLevelUp) {
  testing::internal::CaptureStderr();
  ConfigureLog({5, ""});
  IKPXFormatLog(4, "m", "low");
  IKPXFormatLog(5, "m", "at");
  IKPXFormatLog(6, "m", "above");
  EXPECT_THAT(Bare(Lines(testing::internal::GetCapturedStderr())),
              ElementsAre("[5] [T] [m] at", "[6] [T] [m] above"));
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
  EXPECT_THAT(Logged(), ElementsAre("[3] [T] [m] text"));
}

TEST(LogBeforeConfiguration, ConsoleTakesLinesFromTheToleratedFailureUp) {
  testing::internal::CaptureStderr();
  if (g_logWasConfigured) ConfigureLog(LogConfig());  // by an earlier test in this process
  IKPXFormatLog(3, "m", "progress");
  IKPXFormatLog(4, "m", "tolerated");
  EXPECT_THAT(Bare(Lines(testing::internal::GetCapturedStderr())),
              ElementsAre("[4] [T] [m] tolerated"));
}

}  // namespace
