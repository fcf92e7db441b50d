// Pools when the system cannot create another thread.

#include <gmock/gmock.h>
#include <pthread.h>

#include <string>
#include <vector>

#include "tests/reference/ThreadPoolTest.h"
#include "tests/support/Latch.h"

namespace {

using testing::ElementsAre;
using testing::HasSubstr;

/// While an object exists, no thread can be created in the process: the default stack is too large.
class NoFurtherThreads {
 public:
  NoFurtherThreads() {
    pthread_getattr_default_np(&m_before);
    pthread_attr_t huge;
    pthread_attr_init(&huge);
    pthread_attr_setstacksize(&huge, std::size_t{1} << 47U);
    pthread_setattr_default_np(&huge);
    pthread_attr_destroy(&huge);
  }
  ~NoFurtherThreads() {
    pthread_setattr_default_np(&m_before);
    pthread_attr_destroy(&m_before);
  }
  NoFurtherThreads(const NoFurtherThreads&) = delete;
  NoFurtherThreads& operator=(const NoFurtherThreads&) = delete;

 private:
  pthread_attr_t m_before;
};

TEST_F(ThreadPool, PoolWithoutAnyThreadIsRefused) {
  const NoFurtherThreads none;
  EXPECT_FALSE(Grant(1, 4));
  EXPECT_FALSE(Post([] {}));
}

TEST_F(ThreadPool, TasksWaitWhenNoFurtherThreadCanBeMade) {
  std::vector<std::string> lines;
  ASSERT_TRUE(Grant(1, 4));
  SetLogObserver([&](int level, const std::string&, const std::string& text) {
    lines.push_back(std::to_string(level) + " " + text);
  });
  const NoFurtherThreads none;
  Latch open;
  Post([&] { open.Wait(); });
  Post([&] { m_eventList.Add("waited"); });
  EXPECT_TRUE(Grant(3, 4));
  open.Arrive();
  Release(true);
  EXPECT_EQ("waited", m_eventList.Text());
  EXPECT_THAT(lines, ElementsAre(HasSubstr("4 no further thread: "), HasSubstr("4 no further ")));
}

}  // namespace
