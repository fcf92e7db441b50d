#include "reference/os/PlatformLock.h"

#include <pthread.h>

#include <new>

static_assert(sizeof(pthread_mutex_t) <= sizeof(xrt::LockState), "the lock does not fit its state");
static_assert(alignof(pthread_mutex_t) <= alignof(xrt::LockState), "the lock is not aligned");

namespace {

pthread_mutex_t* Mutex(xrt::LockState& state) {
  return std::launder(reinterpret_cast<pthread_mutex_t*>(state.bytes));
}

}  // namespace

std::int32_t CreatePlatformLock(xrt::LockState& state, bool recursive) {
  pthread_mutexattr_t kind;
  if (const int error = pthread_mutexattr_init(&kind)) return error;
  pthread_mutexattr_settype(&kind, recursive ? PTHREAD_MUTEX_RECURSIVE : PTHREAD_MUTEX_NORMAL);
  state = xrt::LockState();
  const int error = pthread_mutex_init(new (state.bytes) pthread_mutex_t, &kind);
  pthread_mutexattr_destroy(&kind);
  return error;
}

std::int32_t DestroyPlatformLock(xrt::LockState& state) {
  return pthread_mutex_destroy(Mutex(state));
}

std::int32_t LockPlatformLock(xrt::LockState& state) {
  return pthread_mutex_lock(Mutex(state));
}

std::int32_t UnlockPlatformLock(xrt::LockState& state) {
  return pthread_mutex_unlock(Mutex(state));
}
