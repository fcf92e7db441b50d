#pragma once

#include "sdk/xrt/lock.h"

namespace xrt {

/// Gives this library a virtual table of the recursive lock to export.
///
/// The lock's own table lives with its destructor, in the runtime, and a library can export only
/// what it defines. This class adds nothing to the lock, so its table serves as the lock's own (the
/// destructor in it ends in the runtime's); the link exports it under the lock's name.
class RecursiveMutexTable final : public xrt_recursive_mutex {
 public:
  ~RecursiveMutexTable() override;
};

}  // namespace xrt
