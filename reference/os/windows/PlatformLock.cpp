#include "reference/os/PlatformLock.h"

#include <new>

#include "sdk/os/os.h"

static_assert(sizeof(CRITICAL_SECTION) <= sizeof(xrt::LockState),
              "the lock does not fit its state");
static_assert(alignof(CRITICAL_SECTION) <= alignof(xrt::LockState), "the lock is not aligned");

namespace {

CRITICAL_SECTION* Section(xrt::LockState& state) {
  return std::launder(reinterpret_cast<CRITICAL_SECTION*>(state.bytes));
}

}  // namespace

// A thread may always enter its own critical section again: `recursive` makes no difference.
std::int32_t CreatePlatformLock(xrt::LockState& state, bool) {
  state = xrt::LockState();
  InitializeCriticalSection(new (state.bytes) CRITICAL_SECTION);
  return 0;
}

std::int32_t DestroyPlatformLock(xrt::LockState& state) {
  DeleteCriticalSection(Section(state));
  return 0;
}

std::int32_t LockPlatformLock(xrt::LockState& state) {
  EnterCriticalSection(Section(state));
  return 0;
}

std::int32_t UnlockPlatformLock(xrt::LockState& state) {
  LeaveCriticalSection(Section(state));
  return 0;
}
