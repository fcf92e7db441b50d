#pragma once

#include <cstddef>
#include <cstdint>
#include <map>
#include <optional>
#include <set>
#include <string>

/// What a built library offers under one name.
struct ExportedSymbol {
  bool function;
  std::uint64_t address;            // from the library's start
  std::optional<std::size_t> size;  // where the library's format has it
};

/// All that a built library offers, by name.
std::map<std::string, ExportedSymbol> ExportedSymbols(const std::string& library);

/// The names that a built library takes from others.
std::set<std::string> ImportedNames(const std::string& library);

/// The function that code at `address` of a loaded library stands for: another library's, where the
/// system reaches those through a jump.
const void* FunctionBehind(const void* address);
