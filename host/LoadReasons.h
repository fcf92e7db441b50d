#pragma once

#include <string>

/// Why `library` was not loaded, better than by `message`, the loader's: what is missing, what lies
/// there in its place; empty when nothing better can be said. Reads files; any thread.
std::string BetterLoadReason(const std::string& library, const std::string& message);

/// Under which mangled name `library` exports `function`, as a clause that says what was probably
/// forgotten; empty when it does not. Reads the file; any thread.
std::string MangledExport(const std::string& library, const std::string& function);
