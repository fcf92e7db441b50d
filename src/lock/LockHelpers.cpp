// The scope guard and the copy operations of the runtime's lock classes, which this library exports
// to the product's other modules. Locks themselves are made, taken and freed by the runtime.

#include <cstddef>
#include <cstring>

#include "sdk/xrt/lock.h"

XRT_Guard::XRT_Guard(XRT_Mutex* mutex) : m_mutex(mutex) {
  m_mutex->Lock();
}

XRT_Guard::~XRT_Guard() {
  Release();
}

void XRT_Guard::Release() {
  if (m_mutex == nullptr) return;
  m_mutex->Unlock();
  m_mutex = nullptr;
}

// The copies below take the state's bits as they are, a live lock's included: that is what a
// member-wise copy of these classes has always done, and what modules built against them expect.

XRT_Guard& XRT_Guard::operator=(const XRT_Guard& other) = default;

void XRT_Guard::__autoclassinit2(std::size_t size) {
  std::memset(static_cast<void*>(this), 0, size);
}

extern "C" {

xrt::LockState* CopyLockState(xrt::LockState* to, const xrt::LockState* from) {
  *to = *from;
  return to;
}

// XRT_Mutex::operator= and xrt::xrt_mutex::operator=: one function, for a lock is its state alone.
[[gnu::alias("CopyLockState")]] xrt::LockState* AssignMutex(
    xrt::LockState*, const xrt::LockState*) asm("_ZN9XRT_MutexaSERKS_");
[[gnu::alias("CopyLockState")]] xrt::LockState* AssignInnerMutex(
    xrt::LockState*, const xrt::LockState*) asm("_ZN3xrt9xrt_mutexaSERKS0_");

}  // extern "C"

namespace xrt {

xrt_recursive_mutex::xrt_recursive_mutex(const xrt_recursive_mutex& other) = default;

xrt_recursive_mutex& xrt_recursive_mutex::operator=(const xrt_recursive_mutex& other) = default;

}  // namespace xrt
