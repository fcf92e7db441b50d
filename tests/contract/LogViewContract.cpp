// What the log's lines hold. Not for a site's libraries: the SDK has no call that reads them.

#include <gtest/gtest.h>

#include <algorithm>
#include <cstddef>
#include <memory>
#include <string>
#include <thread>
#include <vector>

#include "sdk/base/log.h"
#include "tests/contract/LogView.h"

namespace {

using Lines = std::vector<std::string>;

class LoggedLine : public testing::Test {
 protected:
  const std::unique_ptr<LogView> log = LogView::Make();
};

TEST_F(LoggedLine, HasItsLevelModuleAndText) {
  IKPXFormatLog(3, "module.a", "[%s] is %d%%", "text", -7);
  IKPXFormatLog(6, "module.b", "plain");
  EXPECT_EQ(Lines({"3 module.a [text] is -7%", "6 module.b plain"}), log->Lines());
}

TEST_F(LoggedLine, MayBeOfAnyLength) {
  const std::string text(std::size_t{1} << 20U, 'x');
  IKPXFormatLog(4, "m", "%s", "");
  IKPXFormatLog(4, "m", "%s.", text.c_str());
  EXPECT_EQ(Lines({"4 m ", "4 m " + text + "."}), log->Lines());
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
  Lines logged = log->Lines();
  std::sort(expected.begin(), expected.end());
  std::sort(logged.begin(), logged.end());
  EXPECT_EQ(expected, logged);
}

}  // namespace
