// The runtime's locks: creating, locking, unlocking, destroying. Their copy operations and the
// scope guard are exported by the frame's library.

#include "sdk/xrt/lock.h"

#include "reference/os/PlatformLock.h"

XRT_Mutex::XRT_Mutex() {
  CreatePlatformLock(m_state, false);
}
XRT_Mutex::~XRT_Mutex() {
  DestroyPlatformLock(m_state);
}
std::int32_t XRT_Mutex::Lock() {
  return LockPlatformLock(m_state);
}
std::int32_t XRT_Mutex::Unlock() {
  return UnlockPlatformLock(m_state);
}

namespace xrt {

xrt_mutex::xrt_mutex() {
  CreatePlatformLock(m_state, false);
}
xrt_mutex::~xrt_mutex() {
  DestroyPlatformLock(m_state);
}
std::int32_t xrt_mutex::Lock() {
  return LockPlatformLock(m_state);
}
std::int32_t xrt_mutex::Unlock() {
  return UnlockPlatformLock(m_state);
}

xrt_recursive_mutex::xrt_recursive_mutex() {
  CreatePlatformLock(m_state, true);
}
xrt_recursive_mutex::~xrt_recursive_mutex() {
  DestroyPlatformLock(m_state);
}
std::int32_t xrt_recursive_mutex::Lock() {
  return LockPlatformLock(m_state);
}
std::int32_t xrt_recursive_mutex::Unlock() {
  return UnlockPlatformLock(m_state);
}

}  // namespace xrt
