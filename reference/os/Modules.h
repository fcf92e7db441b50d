#pragma once

#include <cstdint>
#include <optional>
#include <string>

/// The addresses of a loaded library or program: from `begin` up to but not including `end`.
struct ModuleRange {
  std::uintptr_t begin = 0;
  std::uintptr_t end = 0;
};

/// The addresses of the library that was loaded from `path` (in the local code page); empty when it
/// is not loaded. The caller must keep the library loaded during the call. Thread-safe, but not
/// for signal handlers.
std::optional<ModuleRange> LoadedModule(const std::string& path);
