#include <gtest/gtest.h>

#include <thread>
#include <vector>

#include "sdk/xrt/lock.h"

namespace {

/// Several threads increment a counter under one lock. The result is too small when two of them
/// were inside at the same time.
template <typename Lock>
int CountOfManyThreads() {
  constexpr int kThreads = 4;
  Lock lock;
  int count = 0;
  std::vector<std::thread> threads;
  for (int i = 0; i < kThreads; ++i) {
    threads.emplace_back([&] {
      for (int k = 0; k < 20000; ++k) {
        lock.Lock();
        const int before = count;
        if (k % 1000 == 0) std::this_thread::yield();
        count = before + 1;
        lock.Unlock();
      }
    });
  }
  for (std::thread& thread : threads) thread.join();
  return count;
}

TEST(Lock, EachKindLetsOneThreadInAtATime) {
  EXPECT_EQ(80000, CountOfManyThreads<XRT_Mutex>());
  EXPECT_EQ(80000, CountOfManyThreads<xrt::xrt_mutex>());
  EXPECT_EQ(80000, CountOfManyThreads<xrt::xrt_recursive_mutex>());
}

TEST(Lock, TakingAndGivingBackReturnZero) {
  XRT_Mutex lock;
  EXPECT_EQ(0, lock.Lock());
  EXPECT_EQ(0, lock.Unlock());
}

TEST(Lock, RecursiveOneIsTakenTwiceByItsHolder) {
  xrt::xrt_recursive_mutex lock;
  EXPECT_EQ(0, lock.Lock());
  EXPECT_EQ(0, lock.Lock());
  EXPECT_EQ(0, lock.Unlock());
  EXPECT_EQ(0, lock.Unlock());
}

}  // namespace
