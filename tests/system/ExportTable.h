#pragma once

#include <cstddef>
#include <cstdint>
#include <map>
#include <optional>
#include <set>
#include <string>

/// A symbol that a library exports.
struct ExportedSymbol {
  bool function;
  std::uint64_t address;            // relative to the library's start
  std::optional<std::size_t> size;  // if the library's format contains it
};

/// All exported symbols of a library, by name.
std::map<std::string, ExportedSymbol> ExportedSymbols(const std::string& library);

/// The names of the symbols that a library imports.
std::set<std::string> ImportedNames(const std::string& library);

/// The function at `address` of a loaded library. On Windows an imported function is reached
/// through a jump; then the jump's target is returned.
const void* FunctionBehind(const void* address);
