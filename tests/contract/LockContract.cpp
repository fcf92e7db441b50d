#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <thread>
#include <vector>

#include "sdk/xrt/lock.h"
#include "tests/contract/Subject.h"
#include "tests/support/Latch.h"
#include "tests/support/TimeLimit.h"

namespace {

template <typename Lock>
class AnyLock : public testing::Test {
 protected:
  std::unique_ptr<Subject> subject = Subject::Make();
};

class AnyLockName {
 public:
  template <typename Lock>
  static std::string GetName(int place) {
    const char* const names[] = {"Mutex", "InnerMutex", "RecursiveMutex"};
    return names[place];
  }
};

using Locks = testing::Types<XRT_Mutex, xrt::xrt_mutex, xrt::xrt_recursive_mutex>;
TYPED_TEST_SUITE(AnyLock, Locks, AnyLockName);

/// Adds one to `count` in a way that loses it when another thread does the same meanwhile.
void Count(int& count) {
  const int before = count;
  if (before % 50 == 0) std::this_thread::yield();
  count = before + 1;
}

constexpr int kThreads = 4;
constexpr int kRounds = 2000;

template <typename Work>
void RunOnThreads(Work work) {
  std::vector<std::thread> threads;
  for (int i = 0; i < kThreads; ++i) {
    threads.emplace_back([&] {
      for (int round = 0; round < kRounds; ++round) work();
    });
  }
  for (std::thread& thread : threads) thread.join();
}

TYPED_TEST(AnyLock, IsTakenAndReleasedWithZero) {
  TypeParam lock;
  for (int i = 0; i < 2; ++i) {
    EXPECT_EQ(0, lock.Lock());
    EXPECT_EQ(0, lock.Unlock());
  }
}

TYPED_TEST(AnyLock, KeepsOtherThreadsOut) {
  TypeParam lock;
  int count = 0;
  RunOnThreads([&] {
    lock.Lock();
    Count(count);
    lock.Unlock();
  });
  EXPECT_EQ(kThreads * kRounds, count);
}

TYPED_TEST(AnyLock, LeavesOtherLocksFree) {
  TypeParam held;
  TypeParam other;
  Latch taken;
  held.Lock();
  std::thread thread([&] {
    other.Lock();
    taken.Arrive();
    other.Unlock();
  });
  EXPECT_TRUE(taken.Wait());
  held.Unlock();
  thread.join();
}

TEST(RecursiveLock, IsTakenAgainByItsHolder) {
  const std::unique_ptr<Subject> subject = Subject::Make();
  xrt::xrt_recursive_mutex lock;
  Latch twice;
  std::thread thread([&] {
    EXPECT_EQ(0, lock.Lock());
    EXPECT_EQ(0, lock.Lock());
    twice.Arrive();
    EXPECT_EQ(0, lock.Unlock());
    EXPECT_EQ(0, lock.Unlock());
  });
  // A lock that is not recursive would keep the thread, and with it this process, for ever.
  if (!twice.Wait()) FailAndExit("the holder waits for itself");
  thread.join();
}

TEST(RecursiveLock, IsFreeOnlyAfterAsManyReleases) {
  const std::unique_ptr<Subject> subject = Subject::Make();
  xrt::xrt_recursive_mutex lock;
  int count = 0;
  RunOnThreads([&] {
    lock.Lock();
    lock.Lock();
    lock.Unlock();
    Count(count);
    lock.Unlock();
  });
  EXPECT_EQ(kThreads * kRounds, count);
}

TEST(LockState, IsAllThatALockHolds) {
  EXPECT_EQ(sizeof(xrt::LockState), sizeof(XRT_Mutex));
  EXPECT_EQ(sizeof(xrt::LockState), sizeof(xrt::xrt_mutex));
  EXPECT_EQ(sizeof(void*) + sizeof(xrt::LockState), sizeof(xrt::xrt_recursive_mutex));
}

}  // namespace
