#include <gtest/gtest.h>

#include <algorithm>
#include <memory>
#include <string>
#include <thread>
#include <vector>

#include "sdk/base/log.h"
#include "tests/contract/Subject.h"

namespace {

using Lines = std::vector<std::string>;

class LogCall : public testing::Test {
 protected:
  std::unique_ptr<Subject> subject = Subject::Make();
};

/// What is written; skipped where the libraries do not show it.
class LoggedLine : public LogCall {
 protected:
  void SetUp() override {
    if (!subject->LoggedLines()) GTEST_SKIP() << "these libraries do not show their log";
  }
};

TEST_F(LoggedLine, HasItsLevelModuleAndText) {
  IKPXFormatLog(3, "module.a", "[%s] is %d%%", "text", -7);
  IKPXFormatLog(6, "module.b", "plain");
  EXPECT_EQ(Lines({"3 module.a [text] is -7%", "6 module.b plain"}), subject->LoggedLines());
}

TEST_F(LoggedLine, MayBeOfAnyLength) {
  const std::string text(std::size_t{1} << 20U, 'x');
  IKPXFormatLog(4, "m", "%s", "");
  IKPXFormatLog(4, "m", "%s.", text.c_str());
  EXPECT_EQ(Lines({"4 m ", "4 m " + text + "."}), subject->LoggedLines());
}

TEST_F(LoggedLine, OfManyThreadsIsWhole) {
  constexpr int kThreads = 4;
  constexpr int kLines = 200;
  Lines expected;
  std::vector<std::thread> threads;
  for (int thread = 0; thread < kThreads; ++thread) {
    for (int line = 0; line < kLines; ++line) {
      expected.push_back("3 m thread " + std::to_string(thread) + " line " + std::to_string(line));
    }
    threads.emplace_back([thread] {
      for (int line = 0; line < kLines; ++line) {
        IKPXFormatLog(3, "m", "thread %d line %d", thread, line);
      }
    });
  }
  for (std::thread& thread : threads) thread.join();
  Lines logged = *subject->LoggedLines();
  std::sort(expected.begin(), expected.end());
  std::sort(logged.begin(), logged.end());
  EXPECT_EQ(expected, logged);
}

TEST_F(LogCall, ReturnsWhateverItsArguments) {
  const std::string text(std::size_t{1} << 20U, '%');
  const wchar_t noCharacter[] = {wchar_t{0xDCFF}, L'\0'};
  std::vector<std::thread> threads;
  for (int i = 0; i < 4; ++i) {
    threads.emplace_back([&] {
      for (const int level : {3, 4, 5, 6}) IKPXFormatLog(level, "m", "%s", text.c_str());
      IKPXFormatLog(3, "", "%s", "");
      IKPXFormatLog(3, "m", "%ls", noCharacter);
    });
  }
  for (std::thread& thread : threads) thread.join();
}

}  // namespace
