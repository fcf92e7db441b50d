#include <cstring>
#include <new>

#include "sdk/xrt/lock.h"
#include "tests/support/FrameTest.h"

using testing::ElementsAre;

namespace {

class LockHelpers : public FrameTest {};

template <typename Lock>
std::string Bytes(const Lock& lock) {
  return std::string(reinterpret_cast<const char*>(&lock), sizeof(lock));
}

TEST_F(LockHelpers, GuardLocksForItsScope) {
  XRT_Mutex mutex;
  {
    const XRT_Guard guard(&mutex);
    EXPECT_THAT(seam.lockCalls, ElementsAre("Lock"));
  }
  EXPECT_THAT(seam.lockCalls, ElementsAre("Lock", "Unlock"));
}

TEST_F(LockHelpers, ReleasedGuardUnlocksOnce) {
  XRT_Mutex mutex;
  {
    XRT_Guard guard(&mutex);
    guard.Release();
    guard.Release();
  }
  EXPECT_THAT(seam.lockCalls, ElementsAre("Lock", "Unlock"));
}

TEST_F(LockHelpers, AssignedGuardsBothHoldTheSameLock) {
  XRT_Mutex first;
  XRT_Mutex second;
  {
    XRT_Guard one(&first);
    XRT_Guard two(&second);
    two = one;
    EXPECT_THAT(seam.lockCalls, ElementsAre("Lock", "Lock"));
    EXPECT_EQ(Bytes(one), Bytes(two));
    second.Unlock();  // no guard does it any more
    one.Release();
    first.Lock();  // for the second guard, which releases the first lock as well
  }
  EXPECT_EQ(0, first.Lock());
  first.Unlock();
  EXPECT_THAT(seam.lockCalls,
              ElementsAre("Lock", "Lock", "Unlock", "Unlock", "Lock", "Unlock", "Lock", "Unlock"));
}

TEST_F(LockHelpers, StorageIsZeroedByTheGivenNumberOfBytes) {
  XRT_Mutex mutex;
  alignas(XRT_Guard) unsigned char storage[sizeof(XRT_Guard)];
  auto* guard = new (storage) XRT_Guard(&mutex);
  std::memset(storage, 0xFF, sizeof(storage));
  guard->__autoclassinit2(sizeof(XRT_Guard));
  EXPECT_EQ(std::string(sizeof(XRT_Guard), '\0'), Bytes(*guard));
  guard->~XRT_Guard();  // holds nothing any more
  EXPECT_THAT(seam.lockCalls, ElementsAre("Lock"));
  mutex.Unlock();
}

TEST_F(LockHelpers, CopiedLocksHaveTheOthersBytes) {
  XRT_Mutex one;
  XRT_Mutex other;
  EXPECT_NE(Bytes(one), Bytes(other));
  EXPECT_EQ(&one, &(one = other));
  EXPECT_EQ(Bytes(one), Bytes(other));

  xrt::xrt_mutex inner;
  xrt::xrt_mutex innerOther;
  EXPECT_NE(Bytes(inner), Bytes(innerOther));
  inner = innerOther;
  EXPECT_EQ(Bytes(inner), Bytes(innerOther));
}

TEST_F(LockHelpers, CopiedRecursiveLocksKeepTheirTableAndTakeTheBytes) {
  xrt::xrt_recursive_mutex one;
  xrt::xrt_recursive_mutex other;
  const std::string table = Bytes(one).substr(0, sizeof(void*));
  one = other;
  EXPECT_EQ(table, Bytes(one).substr(0, sizeof(void*)));
  EXPECT_EQ(Bytes(other), Bytes(one));
  const xrt::xrt_recursive_mutex copy(other);
  EXPECT_EQ(Bytes(other), Bytes(copy));
}

TEST_F(LockHelpers, LocksHaveTheSizeOfOnePlatformLock) {
  EXPECT_EQ(40U, sizeof(XRT_Mutex));
  EXPECT_EQ(40U, sizeof(xrt::xrt_mutex));
  EXPECT_EQ(40U + sizeof(void*), sizeof(xrt::xrt_recursive_mutex));
  EXPECT_EQ(sizeof(void*), sizeof(XRT_Guard));
}

}  // namespace
