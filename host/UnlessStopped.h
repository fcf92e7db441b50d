#pragma once

#include <functional>

#include "host/Commands.h"

/// Calls `read` on a driver's thread and waits for its end; throws what it throws. A stop request
/// ends the process with kCutShort, since reading a file may block for ever and cannot be
/// interrupted; `beforeEnd` is called first.
void ReadUnlessStopped(
    HostContext& context, const std::function<void()>& read,
    const std::function<void()>& beforeEnd = [] {});
