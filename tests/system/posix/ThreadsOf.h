#pragma once

#include <sys/types.h>

#include <map>
#include <string>

/// The threads of a process: their IDs by their names.
std::multimap<std::string, pid_t> ThreadsOf(pid_t process);
