#include <gtest/gtest.h>
#include <pthread.h>

#include <cerrno>
#include <thread>
#include <vector>

#include "reference/os/PlatformLock.h"
#include "sdk/xrt/lock.h"

namespace {

/// What many threads count to under one lock, each so often; any overlap loses some.
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

int TryOnAnotherThread(xrt::LockState& state) {
  int result = -1;
  std::thread([&] {
    auto* mutex = reinterpret_cast<pthread_mutex_t*>(state.bytes);
    result = pthread_mutex_trylock(mutex);
    if (result == 0) pthread_mutex_unlock(mutex);
  }).join();
  return result;
}

TEST(PlatformLock, PlainOneIsNotGivenToItsHolderAgain) {
  xrt::LockState state;
  ASSERT_EQ(0, CreatePlatformLock(state, false));
  LockPlatformLock(state);
  EXPECT_EQ(EBUSY, pthread_mutex_trylock(reinterpret_cast<pthread_mutex_t*>(state.bytes)));
  UnlockPlatformLock(state);
  EXPECT_EQ(0, DestroyPlatformLock(state));
}

TEST(PlatformLock, RecursiveOneIsFreeAfterTheLastUnlockOnly) {
  xrt::LockState state;
  ASSERT_EQ(0, CreatePlatformLock(state, true));
  LockPlatformLock(state);
  LockPlatformLock(state);
  UnlockPlatformLock(state);
  EXPECT_EQ(EBUSY, TryOnAnotherThread(state));
  UnlockPlatformLock(state);
  EXPECT_EQ(0, TryOnAnotherThread(state));
  EXPECT_EQ(0, DestroyPlatformLock(state));
}

}  // namespace
