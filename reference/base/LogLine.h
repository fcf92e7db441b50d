#pragma once

#include <string>

/// "[LEVEL] [THREAD] [MODULE] TEXT" with the system's number of the calling thread. Control bytes
/// in `module` and `text` become \xNN, so that a name from a file cannot forge a line.
std::string LogLine(int level, const std::string& module, const std::string& text);
