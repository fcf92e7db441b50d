#include <gtest/gtest.h>

#include <cstddef>
#include <memory>
#include <string>
#include <thread>
#include <vector>

#include "sdk/base/log.h"
#include "tests/contract/Subject.h"

namespace {

TEST(LogCall, ReturnsWhateverItsArguments) {
  const std::unique_ptr<Subject> subject = Subject::Make();
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
