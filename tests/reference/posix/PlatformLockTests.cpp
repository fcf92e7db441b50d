#include "reference/os/PlatformLock.h"

#include <gtest/gtest.h>
#include <pthread.h>

#include <cerrno>
#include <thread>

namespace {

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
