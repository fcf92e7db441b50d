#pragma once

#include <cstdint>
#include <string>

// Functions on the calling thread.

/// Prepares the calling thread to run plugin code. Empties its signal mask, which child processes
/// inherit, and gives it an alternate signal stack, so that a stack overflow can be reported under
/// a sanitizer as well; without memory for it an overflow is not reported. Call it first on a
/// thread; further calls only empty the mask. Does nothing on Windows.
void PrepareWorkerThread();

/// Names the calling thread, for debuggers and `top`. A name that is too long for the system is
/// cut, on Linux to 15 bytes, never inside a UTF-8 character. `name` is in the local code page.
/// Does nothing on systems without thread names.
void NameThread(const std::string& name);

/// The system's ID of the calling thread.
std::uint64_t ThreadNumber();
