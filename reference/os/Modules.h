#pragma once

#include <cstdint>
#include <optional>
#include <string>

/// The addresses from `begin` to before `end` that a loaded library or program occupies.
struct ModuleRange {
  std::uintptr_t begin = 0;
  std::uintptr_t end = 0;
};

/// Where the library lies that is loaded now from `path`, the path that it was loaded with, in the
/// local code page; empty when none is. The caller keeps the library loaded during the call. Any
/// thread, but not a signal handler.
std::optional<ModuleRange> LoadedModule(const std::string& path);
