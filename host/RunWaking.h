#pragma once

#include "reference/os/StopSignal.h"

/// While it exists, wakes the thread that waits in `stop` when the start callback has returned and
/// when the last task of all pools has ended. The observer of both. `stop` must outlive it.
class RunWaking {
 public:
  explicit RunWaking(StopSignal& stop);
  ~RunWaking();
  RunWaking(const RunWaking&) = delete;
  RunWaking& operator=(const RunWaking&) = delete;
};
