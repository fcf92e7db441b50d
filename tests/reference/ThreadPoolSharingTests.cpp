// A pool with several holders, and releases that wait for its tasks.

#include <gmock/gmock.h>

#include <atomic>
#include <string>
#include <thread>
#include <vector>

#include "tests/reference/ThreadPoolTest.h"
#include "tests/support/Latch.h"

namespace {

using testing::ElementsAre;

using ThreadPoolSharing = ThreadPool;

TEST_F(ThreadPoolSharing, HoldersThatCameAtOnceAreAllCounted) {
  constexpr int kHolders = 8;
  Latch together(kHolders);
  std::vector<std::thread> holders;
  for (int i = 0; i < kHolders; ++i) {
    holders.emplace_back([&] {
      together.ArriveAndWait();
      Grant(1, 2);
    });
  }
  for (std::thread& holder : holders) holder.join();
  int released = 0;
  while (Release(false)) ++released;
  EXPECT_EQ(kHolders, released);
}

TEST_F(ThreadPoolSharing, HoldersThatWaitAtOnceAllReturn) {
  constexpr int kHolders = 4;
  for (int i = 0; i < kHolders; ++i) ASSERT_TRUE(Grant(1, 2));
  std::atomic<int> early{0};
  std::vector<std::thread> holders;
  for (int i = 0; i < kHolders; ++i) {
    holders.emplace_back([&] {
      std::atomic<int> done{0};
      for (int k = 0; k < 50; ++k) Post([&] { ++done; });
      Release(true);
      if (done != 50) ++early;
    });
  }
  for (std::thread& holder : holders) holder.join();
  EXPECT_EQ(0, early);
}

TEST_F(ThreadPoolSharing, TaskThatWouldWaitForItselfIsRefusedWithALine) {
  std::vector<std::string> lines;
  SetLogObserver([&](int level, const std::string& module, const std::string& text) {
    lines.push_back(std::to_string(level) + " " + module + " " + text);
  });
  ASSERT_TRUE(Grant(1, 1));
  Latch ended;
  bool released = true;
  Post([&] {
    released = Release(true);
    ended.Arrive();
  });
  ASSERT_TRUE(ended.Wait());
  EXPECT_FALSE(released);
  EXPECT_TRUE(Post([] {}));
  EXPECT_TRUE(Release(true));
  EXPECT_FALSE(Release(true));
  EXPECT_THAT(lines, ElementsAre("5 base.thread ReleaseThread with waiting, from a task of pool "
                                 "itself, would never return: not released"));
}

TEST_F(ThreadPoolSharing, TaskMayWaitForAnotherPool) {
  ASSERT_TRUE(Grant(1, 1));
  ASSERT_NE(0U, m_manager.GetAvailableThreadpool("other", 1, 1, 0));
  Latch otherRan;
  bool ranBefore = false;
  ASSERT_TRUE(Post([&] {
    m_manager.PostTask(std::make_shared<FunctionTask>("other", [&] { otherRan.Arrive(); }), false);
    m_eventList.Add(m_manager.ReleaseThread("other", true) ? "released" : "refused");
    ranBefore = otherRan.Wait();
  }));
  Release(true);
  EXPECT_EQ("released", m_eventList.Text());
  EXPECT_TRUE(ranBefore);
}

}  // namespace
