#include "reference/os/PlatformLock.h"

#include <gtest/gtest.h>

#include <thread>

#include "sdk/os/os.h"

namespace {

bool OtherThreadMayTake(xrt::LockState& state) {
  bool taken = false;
  std::thread([&] {
    auto* section = reinterpret_cast<CRITICAL_SECTION*>(state.bytes);
    taken = TryEnterCriticalSection(section) != 0;
    if (taken) LeaveCriticalSection(section);
  }).join();
  return taken;
}

TEST(PlatformLock, IsFreeForOthersAfterTheLastUnlockOnly) {
  xrt::LockState state;
  ASSERT_EQ(0, CreatePlatformLock(state, true));
  EXPECT_EQ(0, LockPlatformLock(state));
  EXPECT_EQ(0, LockPlatformLock(state));
  EXPECT_EQ(0, UnlockPlatformLock(state));
  EXPECT_FALSE(OtherThreadMayTake(state));
  EXPECT_EQ(0, UnlockPlatformLock(state));
  EXPECT_TRUE(OtherThreadMayTake(state));
  EXPECT_EQ(0, DestroyPlatformLock(state));
}

TEST(PlatformLock, FillsTheStateWithOneCriticalSection) {
  EXPECT_EQ(sizeof(CRITICAL_SECTION), sizeof(xrt::LockState));
}

}  // namespace
