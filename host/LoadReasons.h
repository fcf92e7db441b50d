#pragma once

#include <string>

/// A better reason why `library` was not loaded than the loader's `message`: which file is missing,
/// or what is wrong with it. Empty when there is no better one. Reads files; thread-safe.
std::string BetterLoadReason(const std::string& library, const std::string& message);

/// A clause that names the C++ mangled name under which `library` exports `function`, and what was
/// probably forgotten. Empty when it exports no such name. Reads the file; thread-safe.
std::string MangledExport(const std::string& library, const std::string& function);
