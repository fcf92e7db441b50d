// Sleeps that end early: whose, when and how often.

#include <atomic>
#include <chrono>
#include <thread>

#include "reference/xrt/SleepWaker.h"
#include "sdk/xrt/runtime.h"
#include "tests/reference/ThreadPoolTest.h"
#include "tests/support/Latch.h"

namespace {

using Clock = std::chrono::steady_clock;
using std::chrono::milliseconds;

constexpr std::uint32_t kLong = 10'000;  // a sleep that must end early
constexpr std::uint32_t kShort = 40;     // a sleep that must last its whole time

/// Whether a call of XRT_Sleep returned well before its time; Windows counts in steps of some 16
/// ms.
bool SleepEndsEarly(std::uint32_t time) {
  const Clock::time_point begin = Clock::now();
  XRT_Sleep(time);
  return Clock::now() - begin < milliseconds(time / 2);
}

/// A test that ends sleeps early.
class EarlySleep : public ThreadPool {
 protected:
  EarlySleep() { EndSleepsEarly(true); }
  ~EarlySleep() override { EndSleepsEarly(false); }

  /// Posts a task to `pool` and waits for its end.
  void EndATask(const char* pool = kPool) {
    ASSERT_TRUE(m_manager.PostTask(std::make_shared<FunctionTask>(pool, [] {}), false));
    ASSERT_TRUE(EverythingIsDone());
  }
};

TEST_F(EarlySleep, EndsAtOnceAfterATaskThatEndedBefore) {
  ASSERT_TRUE(Grant(1, 1));
  EndATask();
  EXPECT_TRUE(SleepEndsEarly(kLong));
}

TEST_F(EarlySleep, TwoTasksThatEndedBeforeEndOneSleep) {
  ASSERT_TRUE(Grant(1, 1));
  EndATask();
  EndATask();
  EXPECT_TRUE(SleepEndsEarly(kLong));
  EXPECT_FALSE(SleepEndsEarly(kShort));
}

TEST_F(EarlySleep, EndsWithATaskThatEndsMeanwhile) {
  ASSERT_TRUE(Grant(1, 1));
  for (int i = 0; i < 100; ++i) {
    Latch sleeps;
    ASSERT_TRUE(Post([&] {
      sleeps.Wait();
      for (int k = 0; k < i; ++k) std::this_thread::yield();
    }));
    sleeps.Arrive();
    ASSERT_TRUE(SleepEndsEarly(kLong)) << i;
    ASSERT_TRUE(EverythingIsDone());
  }
}

TEST_F(EarlySleep, TaskHasReturnedBeforeItsHolderGoesOn) {
  ASSERT_TRUE(Grant(1, 1));
  for (int i = 0; i < 100; ++i) {
    std::atomic<bool> hasReturned{false};
    ASSERT_TRUE(Post([&] { hasReturned = true; }));
    ASSERT_TRUE(SleepEndsEarly(kLong));
    ASSERT_TRUE(hasReturned) << i;
    ASSERT_TRUE(EverythingIsDone());
  }
}

TEST_F(EarlySleep, EndsEarlyOnceAMillisecondAtMost) {
  ASSERT_TRUE(Grant(1, 1));
  constexpr int kSleeps = 20;
  EndATask();
  ASSERT_TRUE(SleepEndsEarly(kLong));
  const Clock::time_point begin = Clock::now();
  for (int i = 0; i < kSleeps; ++i) {
    EndATask();
    ASSERT_TRUE(SleepEndsEarly(kLong));
  }
  EXPECT_GE(Clock::now() - begin, milliseconds(kSleeps - 1));
}

TEST_F(EarlySleep, IsNeverLongerThanItsTime) {
  ASSERT_TRUE(Grant(1, 1));
  for (int i = 0; i < 100; ++i) {
    XRT_Sleep(2);
    EndATask();
    const Clock::time_point begin = Clock::now();
    XRT_Sleep(kLong);  // does not wait: the last early end is longer ago than a millisecond
    EndATask();
    XRT_Sleep(0);
    if (Clock::now() - begin < milliseconds(1)) return;
  }
  FAIL() << "a sleep of 0 ms waits for the next millisecond";
}

TEST_F(EarlySleep, IsOfHoldersOnly) {
  ASSERT_TRUE(Grant(1, 1));
  bool isEarly = true;
  std::thread other([&] {
    EndATask();
    isEarly = SleepEndsEarly(kShort);
  });
  other.join();
  EXPECT_FALSE(isEarly);
  EXPECT_TRUE(SleepEndsEarly(kLong));
}

TEST_F(EarlySleep, IsOfEachHolder) {
  Latch holds(2);
  Latch ended;
  std::atomic<int> early{0};
  const auto hold = [&] {
    ASSERT_TRUE(Grant(1, 1));
    holds.Arrive();
    ASSERT_TRUE(ended.Wait());
    early += SleepEndsEarly(kLong) ? 1 : 0;
    Release(false);
  };
  std::thread first(hold);
  std::thread second(hold);
  ASSERT_TRUE(holds.Wait());
  EndATask();
  ended.Arrive();
  first.join();
  second.join();
  EXPECT_EQ(2, early);
}

TEST_F(EarlySleep, LastsItsTimeAfterTheRelease) {
  ASSERT_TRUE(Grant(1, 1));
  Latch open;
  ASSERT_TRUE(Post([&] { open.Wait(); }));
  ASSERT_TRUE(Release(false));
  open.Arrive();
  ASSERT_TRUE(EverythingIsDone());
  EXPECT_FALSE(SleepEndsEarly(kShort));
}

TEST_F(EarlySleep, LastsItsTimeAfterAReleaseThatWaited) {
  ASSERT_TRUE(Grant(1, 1));
  ASSERT_TRUE(Post([] {}));
  ASSERT_TRUE(Release(true));
  ASSERT_TRUE(EverythingIsDone());
  EXPECT_FALSE(SleepEndsEarly(kShort));
}

TEST_F(EarlySleep, EndsEarlyUntilTheLastOfTwoGrantsIsReleased) {
  ASSERT_TRUE(Grant(1, 1));
  ASSERT_TRUE(Grant(1, 1));
  ASSERT_TRUE(Release(false));
  EndATask();
  EXPECT_TRUE(SleepEndsEarly(kLong));
}

TEST_F(EarlySleep, EndsWithTheTasksOfEveryPoolThatIsHeld) {
  ASSERT_TRUE(Grant(1, 1));
  ASSERT_NE(0U, m_manager.GetAvailableThreadpool("other", 1, 1, 0));
  EndATask("other");
  EXPECT_TRUE(SleepEndsEarly(kLong));
  ASSERT_TRUE(m_manager.ReleaseThread("other", true));
  EndATask();
  EXPECT_TRUE(SleepEndsEarly(kLong));
}

TEST_F(EarlySleep, ReleaseIsFirstOfTheThreadsOwnGrant) {
  ASSERT_TRUE(Grant(1, 1));
  std::thread other([&] {
    Grant(1, 1);
    Release(false);
  });
  other.join();
  EndATask();
  EXPECT_TRUE(SleepEndsEarly(kLong));
}

TEST_F(EarlySleep, ReleaseByAThreadThatHoldsNothingIsOfTheFirstHolder) {
  ASSERT_TRUE(Grant(1, 1));
  Latch holds;
  Latch ended;
  bool isEarly = false;
  std::thread second([&] {
    Grant(1, 1);
    holds.Arrive();
    ended.Wait();
    isEarly = SleepEndsEarly(kLong);
  });
  EXPECT_TRUE(holds.Wait());
  std::thread([&] { Release(false); }).join();
  EndATask();
  ended.Arrive();
  EXPECT_FALSE(SleepEndsEarly(kShort));
  second.join();
  EXPECT_TRUE(isEarly);
}

TEST_F(EarlySleep, IsNotInheritedFromAHolderThatEnded) {
  std::thread([&] { Grant(1, 1); }).join();
  bool isEarly = true;
  // The system may give this thread the numbers of the one that has ended.
  std::thread([&] {
    EndATask();
    isEarly = SleepEndsEarly(kShort);
  }).join();
  EXPECT_FALSE(isEarly);
  EXPECT_TRUE(Release(true));
  EXPECT_FALSE(Release(true));
}

TEST_F(EarlySleep, LastsItsTimeUnlessSwitchedOn) {
  EndSleepsEarly(false);
  ASSERT_TRUE(Grant(1, 1));
  EndATask();
  EXPECT_FALSE(SleepEndsEarly(kShort));
}

}  // namespace
