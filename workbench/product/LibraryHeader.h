#pragma once

#include <cstdint>
#include <filesystem>
#include <string>
#include <vector>

/// What the headers of an ELF or PE file contain.
struct LibraryHeader {
  enum class Format {
    kUnreadable,  // the file cannot be opened
    kNone,        // neither ELF nor PE
    kElf,
    kPe
  };

  Format format = Format::kNone;
  bool broken = false;              // truncated or damaged; `needed` is then incomplete
  std::string machine;              // "x86-64"; empty when it cannot be read
  std::vector<std::string> needed;  // DT_NEEDED, or the imported libraries
  std::vector<std::string> exported;
};

/// What to read besides format and machine.
enum class LibraryPart { kNeeded, kExports };

LibraryHeader ReadLibraryHeader(const std::filesystem::path& file,
                                LibraryPart part = LibraryPart::kNeeded);
