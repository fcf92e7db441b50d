#pragma once

#include <cstdint>

#include "sdk/xrt/lock.h"

// One platform lock object inside a lock's state. All return 0 or the system's error number.

std::int32_t CreatePlatformLock(xrt::LockState& state, bool recursive);
std::int32_t DestroyPlatformLock(xrt::LockState& state);
std::int32_t LockPlatformLock(xrt::LockState& state);
std::int32_t UnlockPlatformLock(xrt::LockState& state);
