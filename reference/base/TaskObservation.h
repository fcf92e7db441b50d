#pragma once

#include "reference/base/ThreadPools.h"

/// Calls the task observer, if there is one. Not to be called under a mutex of the pools.
void ObserveTask(const TaskEvent& event) noexcept;
