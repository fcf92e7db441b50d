#include "reference/base/ThreadPools.h"

#include <gmock/gmock.h>

#include <atomic>
#include <cstdlib>
#include <functional>
#include <memory>
#include <mutex>
#include <set>
#include <stdexcept>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include "reference/base/Log.h"
#include "sdk/base/thread.h"
#include "tests/reference/ThreadPoolTest.h"
#include "tests/support/Latch.h"

namespace {

using testing::ElementsAre;

TEST_F(ThreadPool, NoTaskIsLostWhenThePoolIsReleasedFirst) {
  Latch open;
  Latch last(101);
  ASSERT_TRUE(Grant(1, 1));
  for (int i = 0; i < 101; ++i) {
    ASSERT_TRUE(Post([&] {
      open.Wait();
      last.Arrive();
    }));
  }
  EXPECT_TRUE(Release(false));
  EXPECT_FALSE(Post([] {}));
  EXPECT_EQ(101U, UnfinishedTasks());
  open.Arrive();
  EXPECT_TRUE(last.Wait());
  EXPECT_TRUE(EverythingIsDone());
}

TEST_F(ThreadPool, UnknownNameIsRefused) {
  EXPECT_FALSE(Post([] {}));
  EXPECT_FALSE(Release(false));
}

TEST_F(ThreadPool, NoTaskIsRefused) {
  ASSERT_TRUE(Grant(1, 1));
  EXPECT_FALSE(m_manager.PostTask(nullptr, false));
}

TEST_F(ThreadPool, ThreadsAreMadeUpToTheBound) {
  constexpr int kMost = 3;
  Latch together(kMost);
  std::atomic<int> met{0};
  std::atomic<int> running{0};
  std::atomic<int> most{0};
  ASSERT_TRUE(Grant(1, kMost));
  for (int i = 0; i < 60; ++i) {
    Post([&] {
      const int now = ++running;
      int before = most;
      while (before < now && !most.compare_exchange_weak(before, now)) {
      }
      if (together.ArriveAndWait()) ++met;
      --running;
    });
  }
  Release(true);
  EXPECT_EQ(60, met);
  EXPECT_EQ(kMost, most);
}

TEST_F(ThreadPool, TasksThatFollowEachOtherShareOneThread) {
  std::mutex mutex;
  std::set<std::thread::id> threads;
  ASSERT_TRUE(Grant(1, 8));
  for (int i = 0; i < 50; ++i) {
    Post([&] {
      const std::lock_guard<std::mutex> lock(mutex);
      threads.insert(std::this_thread::get_id());
    });
    ASSERT_TRUE(EverythingIsDone());
  }
  EXPECT_EQ(1U, threads.size());
}

TEST_F(ThreadPool, BoundsBelowOneStillGiveAThread) {
  ASSERT_TRUE(Grant(0, 0));
  Latch ran;
  ASSERT_TRUE(Post([&] { ran.Arrive(); }));
  EXPECT_TRUE(ran.Wait());
}

TEST_F(ThreadPool, NameThatIsAlreadyGrantedKeepsItsHigherBound) {
  ASSERT_TRUE(Grant(1, 3));
  ASSERT_TRUE(Grant(1, 1));
  Latch together(3);
  std::atomic<int> met{0};
  for (int i = 0; i < 3; ++i) Post([&] { met += together.ArriveAndWait() ? 1 : 0; });
  Release(true);
  EXPECT_EQ(3, met);
}

TEST_F(ThreadPool, HigherBoundLetsATaskThatWaitsBegin) {
  Latch ran;
  std::atomic<bool> met{false};
  ASSERT_TRUE(Grant(1, 1));
  Post([&] { met = ran.Wait(); });
  Post([&] { ran.Arrive(); });
  ASSERT_TRUE(Grant(1, 2));
  Release(true);
  EXPECT_TRUE(met);
}

TEST_F(ThreadPool, FewerReservedThreadsLetTasksThatWaitBegin) {
  Latch together(3);
  std::atomic<int> met{0};
  ASSERT_TRUE(Grant(3, 3, 2));
  for (int i = 0; i < 3; ++i) Post([&] { met += together.ArriveAndWait() ? 1 : 0; });
  ASSERT_TRUE(Grant(3, 3, 0));
  Release(true);
  EXPECT_EQ(3, met);
}

TEST_F(ThreadPool, LimitBoundsThePoolsThatAreGrantedLater) {
  LimitPoolThreads(2);
  const std::pair<int, int> bounds[] = {{1, 16}, {8, 1}};
  for (const auto& [least, most] : bounds) {
    std::mutex mutex;
    std::set<std::thread::id> threads;
    Latch two(2);
    Latch open;
    ASSERT_TRUE(Grant(least, most));
    for (int i = 0; i < 40; ++i) {
      Post([&] {
        two.Arrive();
        open.Wait();
        const std::lock_guard<std::mutex> lock(mutex);
        threads.insert(std::this_thread::get_id());
      });
    }
    EXPECT_TRUE(two.Wait());
    open.Arrive();
    Release(true);
    EXPECT_EQ(2U, threads.size());
  }
}

TEST_F(ThreadPool, LimitOfZeroLetsPoolsGrowAgain) {
  LimitPoolThreads(1);
  LimitPoolThreads(0);
  Latch together(3);
  std::atomic<int> met{0};
  ASSERT_TRUE(Grant(1, 3));
  for (int i = 0; i < 3; ++i) Post([&] { met += together.ArriveAndWait() ? 1 : 0; });
  Release(true);
  EXPECT_EQ(3, met);
}

TEST_F(ThreadPool, EachTaskCountsAsUnfinishedUntilItEnds) {
  ASSERT_TRUE(Grant(1, 1));
  Latch open;
  std::atomic<std::size_t> whileTheSecondRan{0};
  Post([&] { open.Wait(); });
  Post([&] { whileTheSecondRan = UnfinishedTasks(); });
  Post([] {});
  EXPECT_EQ(3U, UnfinishedTasks());
  open.Arrive();
  Release(true);
  EXPECT_EQ(2U, whileTheSecondRan);
  EXPECT_EQ(0U, UnfinishedTasks());
}

TEST_F(ThreadPool, NoWakeUpIsLostAmongUrgentAndOtherTasks) {
  constexpr int kPosters = 4;
  constexpr int kTasks = 500;
  ASSERT_TRUE(Grant(1, 4, 2));
  std::atomic<int> done{0};
  std::vector<std::thread> posters;
  for (int i = 0; i < kPosters; ++i) {
    posters.emplace_back([&, i] {
      for (int k = 0; k < kTasks; ++k) {
        Latch ran(2);
        Post([&] { ran.Arrive(); }, (k + i) % 3 == 0);
        Post([&] { ran.Arrive(); }, k % 2 == 0);
        if (!ran.Wait()) std::abort();  // late tasks would use the latch after its destruction
        done += 2;
      }
    });
  }
  for (std::thread& poster : posters) poster.join();
  EXPECT_EQ(kPosters * kTasks * 2, done);
}

TEST_F(ThreadPool, TasksOfEachKindRunInTheirOrder) {
  Latch open;
  ASSERT_TRUE(Grant(1, 1));
  Latch busy;
  Post([&] {
    busy.Arrive();
    open.Wait();
  });
  ASSERT_TRUE(busy.Wait());
  Post([&] { m_eventList.Add("a"); });
  Post([&] { m_eventList.Add("urgent1"); }, true);
  Post([&] { m_eventList.Add("b"); });
  Post([&] { m_eventList.Add("urgent2"); }, true);
  open.Arrive();
  Release(true);
  EXPECT_EQ("urgent1 urgent2 a b", m_eventList.Text());
}

TEST_F(ThreadPool, UrgentTaskOnTheReservedThreadLeavesTheOtherToTheRest) {
  Latch ordinaryRan;
  std::atomic<bool> met{false};
  ASSERT_TRUE(Grant(2, 2, 1));
  Post([&] { met = ordinaryRan.Wait(); }, true);
  Post([&] { ordinaryRan.Arrive(); });
  Release(true);
  EXPECT_TRUE(met);
}

TEST_F(ThreadPool, TaskThatThrowsIsLoggedAndTheThreadGoesOn) {
  std::vector<std::string> lines;
  SetLogObserver([&](int level, const std::string& module, const std::string& text) {
    lines.push_back(std::to_string(level) + " " + module + " " + text);
  });
  std::thread::id first;
  std::thread::id second;
  ASSERT_TRUE(Grant(1, 1));
  Post([&] {
    first = std::this_thread::get_id();
    throw std::runtime_error("out of paper");
  });
  Post([] { throw 1; });
  Post([&] { second = std::this_thread::get_id(); });
  Release(true);
  SetLogObserver({});
  EXPECT_THAT(lines, ElementsAre("5 base.thread a task of pool threw: out of paper",
                                 "5 base.thread a task of pool threw"));
  EXPECT_EQ(first, second);
}

TEST_F(ThreadPool, TaskIsGoneBeforeItCountsAsDone) {
  Latch open;
  Latch gone;
  std::size_t unfinishedWhenGone = 0;
  ASSERT_TRUE(Grant(1, 1));
  {
    const std::shared_ptr<int> witness(new int, [&](const int* number) {
      delete number;
      unfinishedWhenGone = UnfinishedTasks();
      gone.Arrive();
    });
    Post([witness, &open] { open.Wait(); });
  }
  open.Arrive();
  EXPECT_TRUE(gone.Wait());
  EXPECT_EQ(1U, unfinishedWhenGone);
}

}  // namespace
