#pragma once

#include <cstdint>
#include <string>

// The process and its machine, as a record of a run describes them. Any thread.

/// The system's number of this process.
std::uint64_t ProcessNumber();

/// The machine's name, in the local code page; empty when the system gives none.
std::string HostName();

/// The number of cores that the process may run on, at least 1.
int UsableCores();
