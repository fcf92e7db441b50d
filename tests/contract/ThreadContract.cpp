// The thread manager, its pools, and the sleep of a thread that holds one.

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <functional>
#include <memory>
#include <mutex>
#include <stdexcept>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include "sdk/base/thread.h"
#include "sdk/os/os.h"
#include "sdk/xrt/runtime.h"
#include "tests/contract/Subject.h"
#include "tests/support/FunctionTask.h"
#include "tests/support/Latch.h"

namespace {

constexpr char kPool[] = "contract";
constexpr ULONGLONG kClockStep = 16;  // in milliseconds: Windows counts in steps of some 16

/// The thread manager with one pool. All that tasks use is a member: it outlives them.
class ThreadPool : public testing::Test {
 protected:
  ~ThreadPool() override {
    open.Arrive();
    while (m_manager.ReleaseThread(kPool, true)) {
    }
  }

  bool Grant(int least, int most, int reserved = 0) {
    return m_manager.GetAvailableThreadpool(kPool, least, most, reserved) != 0;
  }
  bool Post(std::function<void()> work, bool urgent = false) {
    return m_manager.PostTask(std::make_shared<FunctionTask>(kPool, std::move(work)), urgent);
  }
  bool Release(bool wait) { return m_manager.ReleaseThread(kPool, wait); }

  void Note(const std::string& event) {
    const std::lock_guard<std::mutex> lock(m_mutex);
    m_events += event + " ";
  }
  std::string Events() {
    const std::lock_guard<std::mutex> lock(m_mutex);
    return m_events;
  }

  std::unique_ptr<Subject> subject = Subject::Make();
  Latch busy;
  Latch open;
  Latch pair{2};
  Latch ended;
  std::atomic<int> done{0};
  std::atomic<int> running{0};
  std::atomic<int> mostRunning{0};
  std::atomic<bool> stop{false};
  std::function<void()> relay;

 private:
  CThreadManager& m_manager = CThreadManager::Instance();
  std::mutex m_mutex;
  std::string m_events;  // guarded by m_mutex
};

TEST(Task, KnowsItsGroupAndRunsOnceEachTime) {
  int runs = 0;
  FunctionTask task("group", [&] { ++runs; });
  EXPECT_EQ("group", task.Group());
  task.Exec();
  EXPECT_EQ(1, runs);
}

TEST_F(ThreadPool, RunsATaskOnceOnAThreadOfItsOwn) {
  std::thread::id thread;
  ASSERT_TRUE(Grant(1, 1));
  ASSERT_TRUE(Post([&] {
    thread = std::this_thread::get_id();
    ++done;
  }));
  EXPECT_TRUE(Release(true));
  EXPECT_EQ(1, done);
  EXPECT_NE(std::this_thread::get_id(), thread);
}

TEST_F(ThreadPool, PostTaskNeitherRunsTheTaskNorWaitsForIt) {
  ASSERT_TRUE(Grant(1, 1));
  ASSERT_TRUE(Post([&] { done += open.Wait() ? 1 : 0; }));
  open.Arrive();
  EXPECT_TRUE(Release(true));
  EXPECT_EQ(1, done);
}

TEST_F(ThreadPool, PostTaskDoesNotWaitForRoom) {
  constexpr int kTasks = 2000;
  ASSERT_TRUE(Grant(1, 1));
  ASSERT_TRUE(Post([&] { done += open.Wait() ? 1 : 0; }));
  for (int i = 0; i < kTasks; ++i) ASSERT_TRUE(Post([&] { ++done; }));
  open.Arrive();
  EXPECT_TRUE(Release(true));
  EXPECT_EQ(1 + kTasks, done);
}

TEST_F(ThreadPool, TakesTasksFromManyThreads) {
  constexpr int kThreads = 4;
  constexpr int kTasks = 200;
  ASSERT_TRUE(Grant(1, 2));
  std::atomic<int> taken{0};
  std::vector<std::thread> threads;
  for (int i = 0; i < kThreads; ++i) {
    threads.emplace_back([&] {
      for (int k = 0; k < kTasks; ++k) taken += Post([&] { ++done; }, k % 5 == 0) ? 1 : 0;
    });
  }
  for (std::thread& thread : threads) thread.join();
  EXPECT_TRUE(Release(true));
  EXPECT_EQ(kThreads * kTasks, taken);
  EXPECT_EQ(kThreads * kTasks, done);
}

TEST_F(ThreadPool, ThatWasNeverGrantedIsRefused) {
  EXPECT_FALSE(Post([&] { ++done; }));
  EXPECT_FALSE(Release(false));
  EXPECT_FALSE(Release(true));
}

TEST_F(ThreadPool, ThatIsReleasedRefusesTasksAndRunsThoseThatItHas) {
  ASSERT_TRUE(Grant(1, 1));
  ASSERT_TRUE(Post([&] { open.Wait(); }));
  for (int i = 0; i < 20; ++i) ASSERT_TRUE(Post([&] { ++done; }));
  ASSERT_TRUE(Post([&] { ended.Arrive(); }));
  EXPECT_TRUE(Release(false));
  EXPECT_FALSE(Post([&] { ++done; }));
  EXPECT_FALSE(Release(false));
  open.Arrive();
  EXPECT_TRUE(ended.Wait());
  EXPECT_EQ(20, done);
}

TEST_F(ThreadPool, ThatIsReleasedIsGrantedAnew) {
  ASSERT_TRUE(Grant(1, 1));
  ASSERT_TRUE(Post([&] {
    done += open.Wait() ? 1 : 0;
    ended.Arrive();
  }));
  ASSERT_TRUE(Release(false));
  ASSERT_TRUE(Grant(1, 1));
  ASSERT_TRUE(Post([&] { busy.Arrive(); }));
  EXPECT_TRUE(busy.Wait());
  open.Arrive();
  EXPECT_TRUE(ended.Wait());
  EXPECT_EQ(1, done);  // the first task did not have to end for the second
}

TEST_F(ThreadPool, GoesOnUntilEachGrantIsReleased) {
  ASSERT_TRUE(Grant(1, 1));
  ASSERT_TRUE(Grant(1, 1));
  EXPECT_TRUE(Release(false));
  EXPECT_TRUE(Post([&] { ended.Arrive(); }));
  EXPECT_TRUE(ended.Wait());
  EXPECT_TRUE(Release(false));
  EXPECT_FALSE(Post([&] { ++done; }));
}

TEST_F(ThreadPool, ReleaseThatWaitsReturnsAfterTheTasks) {
  for (const int grants : {1, 2}) {
    done = 0;
    for (int i = 0; i < grants; ++i) ASSERT_TRUE(Grant(1, 2));
    for (int i = 0; i < 200; ++i) ASSERT_TRUE(Post([&] { ++done; }, i % 2 == 0));
    EXPECT_TRUE(Release(true));
    EXPECT_EQ(200, done) << grants << " grants";
  }
}

TEST_F(ThreadPool, ReleaseThatWaitsDoesNotWaitForLaterTasks) {
  ASSERT_TRUE(Grant(2, 2));
  ASSERT_TRUE(Grant(2, 2));
  const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(20);
  std::atomic<bool> isLate{false};
  // Posts its successor before it ends, so that the pool is never without a task.
  relay = [&] {
    if (std::chrono::steady_clock::now() > end) isLate = true;
    if (stop || isLate) return ended.Arrive();
    Post(relay);
  };
  ASSERT_TRUE(Post(relay));
  EXPECT_TRUE(Release(true));
  stop = true;
  EXPECT_TRUE(ended.Wait());
  EXPECT_FALSE(isLate);
}

TEST_F(ThreadPool, TaskThatWouldWaitForItsOwnPoolIsRefused) {
  bool released = true;
  ASSERT_TRUE(Grant(1, 1));
  ASSERT_TRUE(Post([&] {
    released = Release(true);
    ended.Arrive();
  }));
  ASSERT_TRUE(ended.Wait());
  EXPECT_FALSE(released);
  EXPECT_TRUE(Post([&] { ++done; }));
  EXPECT_TRUE(Release(true));
  EXPECT_EQ(1, done);
}

TEST_F(ThreadPool, TaskMayReleaseItsPoolWithoutWaiting) {
  bool released = false;
  ASSERT_TRUE(Grant(1, 1));
  ASSERT_TRUE(Post([&] {
    released = Release(false);
    ended.Arrive();
  }));
  ASSERT_TRUE(ended.Wait());
  EXPECT_TRUE(released);
  EXPECT_FALSE(Post([&] { ++done; }));
}

TEST_F(ThreadPool, UrgentTaskOvertakesThoseThatWait) {
  ASSERT_TRUE(Grant(1, 1));
  ASSERT_TRUE(Post([&] {
    busy.Arrive();
    open.Wait();
  }));
  ASSERT_TRUE(busy.Wait());
  Post([&] { Note("ordinary"); });
  Post([&] { Note("ordinary"); });
  Post([&] { Note("urgent"); }, true);
  open.Arrive();
  EXPECT_TRUE(Release(true));
  EXPECT_EQ("urgent ordinary ordinary ", Events());
}

TEST_F(ThreadPool, ReservedThreadRunsUrgentTasksOnly) {
  ASSERT_TRUE(Grant(2, 2, 1));
  Post([&] {
    open.Wait();
    Note("first");
  });
  Post([&] { Note("second"); });
  // The first task ends after the later urgent one, which begins after the second could have.
  Post([&] { busy.Arrive(); }, true);
  EXPECT_TRUE(busy.Wait());
  Post([&] { open.Arrive(); }, true);
  EXPECT_TRUE(Release(true));
  EXPECT_EQ("first second ", Events());
}

TEST_F(ThreadPool, RunsAsManyTasksAtOnceAsItHasThreadsAtLeast) {
  ASSERT_TRUE(Grant(2, 2));
  for (int i = 0; i < 2; ++i) Post([&] { done += pair.ArriveAndWait() ? 1 : 0; });
  EXPECT_TRUE(Release(true));
  EXPECT_EQ(2, done);
}

TEST_F(ThreadPool, MostBelowLeastCountsAsLeast) {
  ASSERT_TRUE(Grant(2, 1));
  for (int i = 0; i < 2; ++i) Post([&] { done += pair.ArriveAndWait() ? 1 : 0; });
  EXPECT_TRUE(Release(true));
  EXPECT_EQ(2, done);
}

TEST_F(ThreadPool, NeverRunsMoreTasksAtOnceThanItMayHaveThreads) {
  constexpr int kMost = 2;
  ASSERT_TRUE(Grant(kMost, kMost));
  for (int i = 0; i < 200; ++i) {
    Post([&] {
      const int now = ++running;
      int before = mostRunning;
      while (before < now && !mostRunning.compare_exchange_weak(before, now)) {
      }
      pair.ArriveAndWait();
      std::this_thread::yield();
      --running;
    });
  }
  EXPECT_TRUE(Release(true));
  EXPECT_EQ(kMost, mostRunning);
}

TEST_F(ThreadPool, HigherBoundsOfALaterGrantLetATaskThatWaitsBegin) {
  ASSERT_TRUE(Grant(1, 1));
  for (int i = 0; i < 2; ++i) Post([&] { done += pair.ArriveAndWait() ? 1 : 0; });
  ASSERT_TRUE(Grant(2, 2));
  EXPECT_TRUE(Release(true));
  EXPECT_EQ(2, done);
}

TEST_F(ThreadPool, TaskThatThrowsEndsAlone) {
  ASSERT_TRUE(Grant(1, 1));
  ASSERT_TRUE(Post([] { throw std::runtime_error("out of paper"); }));
  ASSERT_TRUE(Post([] { throw 7; }));
  ASSERT_TRUE(Post([&] { ++done; }));
  EXPECT_TRUE(Release(true));
  EXPECT_EQ(1, done);
}

TEST_F(ThreadPool, SleepOfAHolderEndsThoughNoTaskDoes) {
  constexpr std::uint32_t kTime = 40;
  ASSERT_TRUE(Grant(1, 1));
  ASSERT_TRUE(Post([&] { done += open.Wait() ? 1 : 0; }));
  XRT_Sleep(kTime);
  open.Arrive();
  EXPECT_TRUE(Release(true));
  EXPECT_EQ(1, done);
}

TEST_F(ThreadPool, SleepLastsItsTimeAfterTheRelease) {
  constexpr std::uint32_t kTime = 40;
  ASSERT_TRUE(Grant(1, 1));
  ASSERT_TRUE(Post([&] { open.Wait(); }));
  ASSERT_TRUE(Release(false));
  open.Arrive();
  const ULONGLONG begin = GetTickCount64();
  XRT_Sleep(kTime);
  EXPECT_GE(GetTickCount64() - begin, kTime - kClockStep);
}

TEST_F(ThreadPool, SleepOfAThreadThatDoesNotHoldItLastsItsTime) {
  constexpr std::uint32_t kTime = 40;
  ULONGLONG slept = 0;
  ASSERT_TRUE(Grant(1, 1));
  std::thread other([&] {
    for (int i = 0; i < 20; ++i) Post([&] { ++done; });
    const ULONGLONG begin = GetTickCount64();
    XRT_Sleep(kTime);
    slept = GetTickCount64() - begin;
  });
  other.join();
  EXPECT_GE(slept, kTime - kClockStep);
  EXPECT_TRUE(Release(true));
  EXPECT_EQ(20, done);
}

TEST_F(ThreadPool, LetsGoOfATaskThatHasRun) {
  ASSERT_TRUE(Grant(1, 1));
  {
    const std::shared_ptr<int> witness(new int, [this](const int* number) {
      delete number;
      ended.Arrive();
    });
    ASSERT_TRUE(Post([this, witness] { ++done; }));
  }
  EXPECT_TRUE(ended.Wait());
  EXPECT_EQ(1, done);
}

}  // namespace
