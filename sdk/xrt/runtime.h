#pragma once

#include <cstdint>

/// Writes the full path of the running executable, zero-terminated, into `buffer` of `size` bytes.
/// Returns 0 on success; a path that does not fit is an error and not cut. Any thread.
std::int32_t XRT_GetCurExePath(char* buffer, std::int32_t size);

/// Blocks the calling thread for `milliseconds`, as GetTickCount64 counts them.
void XRT_Sleep(std::uint32_t milliseconds);
