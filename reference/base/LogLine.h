#pragma once

#include <string>

/// "[LEVEL] [THREAD] [MODULE] TEXT" with the system's number of the calling thread; control bytes
/// of `module` and `text` stand as \xNN, so that a name from a file cannot forge a line.
std::string LogLine(int level, const std::string& module, const std::string& text);
