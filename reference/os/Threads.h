#pragma once

#include <cstdint>
#include <string>

// The calling thread, as the system knows it.

/// Prepares the calling thread to run plugin code: its signal mask is emptied, which its child
/// processes inherit, and under a sanitizer too it can report an overflow of its stack (an
/// alternate signal stack, freed when the thread ends; without memory for it an overflow ends the
/// process without a report). For the first thing that a thread does; further calls only empty the
/// mask. On Windows there is nothing to prepare.
void PrepareWorkerThread();

/// Names the calling thread, for debuggers and `top`. What is too long for the system is cut, on
/// Linux to 15 bytes, never inside a UTF-8 character. `name` is in the local code page. Without
/// effect where the system has no such names.
void NameThread(const std::string& name);

/// The system's number of the calling thread.
std::uint64_t ThreadNumber();
