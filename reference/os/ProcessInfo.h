#pragma once

#include <cstdint>
#include <string>

// Information on the process and its machine, for the record of a run. Thread-safe.

/// The process ID.
std::uint64_t ProcessNumber();

/// The machine's name, in the local code page; empty when unknown.
std::string HostName();

/// The number of cores that the process may run on, at least 1.
int UsableCores();
