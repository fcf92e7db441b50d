#pragma once

#include <string>
#include <utility>
#include <vector>

/// What a composed library contains.
struct LibraryParts {
  std::vector<std::string> exported = {"Init", "UnInit"};  // functions
  std::vector<std::string> data = {};                      // exported data
  std::vector<std::string> needed = {};

  // ELF: symbols that it uses. PE: symbols that it imports from the first needed library.
  std::vector<std::string> used = {};

  // ELF alone.
  std::string soname = {};
  std::string rpath = {};
  std::string runpath = {};
  std::string version = {};  // that it defines

  // Versions that it requires, each with the needed library that must define it.
  std::vector<std::pair<std::string, std::string>> required = {};
};

/// A whole 64-bit ELF library for x86-64, without sections, that can be loaded. Its functions have
/// no code.
std::string ElfLibrary(const LibraryParts& parts);

/// A whole 64-bit PE library for x86-64: a section with code at 0x1000, one with data at 0x2000 and
/// one with the tables at 0x3000.
std::string PeLibrary(const LibraryParts& parts);
