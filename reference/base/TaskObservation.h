#pragma once

#include "reference/base/ThreadPools.h"

/// Calls the task observer, if there is one. Must not be called with a pool's mutex locked.
void ObserveTask(const TaskEvent& event) noexcept;

/// Calls the idle observer, if there is one. Must not be called with a pool's mutex locked.
void ObserveIdle() noexcept;
