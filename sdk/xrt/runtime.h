#pragma once

#include <cstdint>

/// Writes the full path of the running executable, zero-terminated, into `buffer` of `size` bytes.
/// Returns 0 on success; a path that does not fit is an error and not cut. Any thread.
std::int32_t XRT_GetCurExePath(char* buffer, std::int32_t size);

/// Blocks the calling thread for at least `milliseconds`, as GetTickCount64 counts them. A thread
/// that holds a pool (GetAvailableThreadpool, not yet released) is blocked for at most that time:
/// an implementation may end its sleep early, for instance when a task of the pool has ended. So
/// such a caller looks again after each sleep, and does not measure time by it. The frame sleeps
/// only while it holds a pool.
void XRT_Sleep(std::uint32_t milliseconds);
