#pragma once

#include <cstdint>

#include "sdk/xrt/lock.h"

// One platform lock object inside a lock's state, which must not move while the lock exists. All
// return 0 or the system's error number. A lock that is not `recursive` must not be taken again by
// its holder.

std::int32_t CreatePlatformLock(xrt::LockState& state, bool recursive);
std::int32_t DestroyPlatformLock(xrt::LockState& state);
std::int32_t LockPlatformLock(xrt::LockState& state);
std::int32_t UnlockPlatformLock(xrt::LockState& state);
