#pragma once

#include <cstdint>

#include "sdk/xrt/lock.h"

// Operate on a lock object of the system inside `state`, which must not move while the lock exists.
// All return 0 or the system's error number. A thread that holds a lock must not lock it again
// unless it was created with `recursive`.

std::int32_t CreatePlatformLock(xrt::LockState& state, bool recursive);
std::int32_t DestroyPlatformLock(xrt::LockState& state);
std::int32_t LockPlatformLock(xrt::LockState& state);
std::int32_t UnlockPlatformLock(xrt::LockState& state);
