#pragma once

#include <cstdint>
#include <filesystem>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

/// A name that a library exports.
struct ExportedSymbol {
  std::string_view name;  // empty: exported by number alone
  bool isFunction = false;
  std::uint64_t ordinal = 0;  // PE: its number
};

/// A name that an ELF library uses and another one must define.
struct UndefinedSymbol {
  std::string_view name;
  bool isWeak = false;  // may be defined nowhere
};

/// A name that a PE library imports, from the library that it names.
struct ImportedSymbol {
  std::size_t library = 0;    // index in `needed`
  std::string_view name;      // empty: imported by number
  std::uint64_t ordinal = 0;  // when it has no name
};

/// A version that an ELF library requires of one that it needs: GLIBC_2.34 of libc.so.6.
struct RequiredVersion {
  std::string library;
  std::string version;
};

/// What the headers of an ELF or PE file contain.
struct LibraryHeader {
  enum class Format {
    kUnreadable,  // the file cannot be opened
    kNone,        // neither ELF nor PE
    kElf,
    kPe
  };
  enum class Kind { kLibrary, kProgram, kOther };

  Format format = Format::kNone;
  bool broken = false;  // truncated or damaged; the lists are then incomplete
  std::uint64_t size = 0;
  Kind kind = Kind::kOther;
  std::string machine;  // "x86-64"; empty when it cannot be read
  bool is64 = false;
  std::vector<std::string> needed;       // DT_NEEDED, or the imported libraries
  std::vector<ExportedSymbol> exported;  // in the file's order, as the other lists

  // ELF
  std::string soname;
  std::string rpath;  // as it is written
  std::string runpath;
  std::vector<UndefinedSymbol> undefined;
  std::vector<RequiredVersion> requiredVersions;
  std::vector<std::string> versions;  // that it defines

  // PE
  std::vector<ImportedSymbol> imported;

  std::shared_ptr<const std::string> names;  // contains the symbols' names

  bool IsLibraryFile() const { return format == Format::kElf || format == Format::kPe; }
};

/// Reads the headers of `file`, in time and memory in proportion to its size at most. Nothing
/// outside the file is read. Throws only std::bad_alloc.
LibraryHeader ReadLibraryHeader(const std::filesystem::path& file);
