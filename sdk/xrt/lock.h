#pragma once

#include <cstddef>
#include <cstdint>

namespace xrt {

/// The bytes of one platform lock object: a critical section on Windows, the system's own mutex
/// elsewhere. Only the runtime reads it. A copy has the same bytes and is not a new lock.
struct LockState {
  alignas(8) unsigned char bytes[40];
};

/// A non-recursive lock in the runtime's namespace; same layout as XRT_Mutex.
class xrt_mutex {
 public:
  xrt_mutex();
  ~xrt_mutex();
  xrt_mutex(const xrt_mutex&) = delete;

  /// Copies the other lock's bytes. This does not make a new lock.
  xrt_mutex& operator=(const xrt_mutex& other);

  /// Both return 0 on success.
  std::int32_t Lock();
  std::int32_t Unlock();

 private:
  LockState m_state;
};

/// A lock that its holder may take again.
class xrt_recursive_mutex {
 public:
  xrt_recursive_mutex();

  /// Copies the other lock's bytes. This does not make a new lock.
  xrt_recursive_mutex(const xrt_recursive_mutex& other);
  xrt_recursive_mutex& operator=(const xrt_recursive_mutex& other);

  virtual ~xrt_recursive_mutex();

  /// Both return 0 on success.
  std::int32_t Lock();
  std::int32_t Unlock();

 private:
  LockState m_state;
};

}  // namespace xrt

/// A non-recursive lock: its holder must not take it again.
class XRT_Mutex {
 public:
  XRT_Mutex();
  ~XRT_Mutex();
  XRT_Mutex(const XRT_Mutex&) = delete;

  /// Copies the other lock's bytes. This does not make a new lock.
  XRT_Mutex& operator=(const XRT_Mutex& other);

  /// Both return 0 on success.
  std::int32_t Lock();
  std::int32_t Unlock();

 private:
  xrt::LockState m_state;
};

/// Holds a lock for a scope. Not thread-safe. Cannot be copied when made: the copy would unlock
/// again.
class XRT_Guard {
 public:
  /// Takes `mutex`, which must not be null.
  explicit XRT_Guard(XRT_Mutex* mutex);
  ~XRT_Guard();
  XRT_Guard(const XRT_Guard&) = delete;

  /// Copies the pointer only; neither guard locks or unlocks. Not for guards that hold a lock.
  XRT_Guard& operator=(const XRT_Guard& other);

  /// Unlocks now; the destructor then does nothing.
  void Release();

  /// Zeroes the first `size` bytes of the guard. Some compilers call it before the constructor.
  // NOLINTNEXTLINE(bugprone-reserved-identifier,cert-dcl37-c,cert-dcl51-cpp): those compilers' name
  void __autoclassinit2(std::size_t size);

 private:
  XRT_Mutex* m_mutex;
};
