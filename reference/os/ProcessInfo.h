#pragma once

#include <cstdint>
#include <string>

// What a record of a run says of the process and its machine. Any thread.

/// The system's number of this process.
std::uint64_t ProcessNumber();

/// The machine's name, in the local code page; empty when the system does not tell.
std::string HostName();

/// The number of cores that the process may run on, at least 1.
int UsableCores();
