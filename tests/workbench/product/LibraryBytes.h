#pragma once

#include <cstdint>
#include <string>
#include <vector>

/// Composes the bytes of a file.
class LibraryBytes {
 public:
  explicit LibraryBytes(std::size_t size, bool bigEndian = false)
      : m_bytes(size, '\0'), m_bigEndian(bigEndian) {}

  void Put(std::size_t at, std::uint64_t number, std::size_t size) {
    for (std::size_t i = 0; i < size; ++i) {
      const std::size_t place = m_bigEndian ? size - 1 - i : i;
      m_bytes[at + place] = static_cast<char>(number >> 8 * i & 0xFF);
    }
  }
  void Put(std::size_t at, const std::string& text) { m_bytes.replace(at, text.size(), text); }

  const std::string& Bytes() const { return m_bytes; }

 private:
  std::string m_bytes;
  bool m_bigEndian;
};

constexpr std::size_t kElfDynamic = 256;  // offset of the dynamic entries

/// A minimal ELF library for `machine` that needs `needed`. Its segments are loaded at 0x10000.
inline std::string ElfBytes(const std::vector<std::string>& needed, std::uint64_t machine = 62,
                            bool is64 = true, bool bigEndian = false) {
  const std::size_t word = is64 ? 8 : 4;
  constexpr std::size_t kHeaders = 64;
  constexpr std::size_t kDynamic = kElfDynamic;
  constexpr std::size_t kStrings = 1024;
  LibraryBytes file(2048, bigEndian);
  file.Put(0, "\177ELF");
  file.Put(4, is64 ? 2 : 1, 1);
  file.Put(5, bigEndian ? 2 : 1, 1);
  file.Put(18, machine, 2);
  file.Put(is64 ? 32 : 28, kHeaders, word);
  file.Put(is64 ? 54 : 42, is64 ? 56 : 32, 2);
  file.Put(is64 ? 56 : 44, 3, 2);
  const auto segment = [&](std::size_t number, std::uint64_t type, std::uint64_t offset,
                           std::uint64_t size, std::uint64_t address) {
    const std::size_t at = kHeaders + number * (is64 ? 56 : 32);
    file.Put(at, type, 4);
    file.Put(at + (is64 ? 8 : 4), offset, word);
    file.Put(at + (is64 ? 16 : 8), address, word);
    file.Put(at + (is64 ? 32 : 16), size, word);
  };
  segment(0, 4, 100, 2048, 0x10000);  // a note, which is not loaded
  segment(1, 1, 0, 2048, 0x10000);
  segment(2, 2, kDynamic, 768, 0x10000 + kDynamic);
  std::size_t entry = kDynamic;
  const auto dynamic = [&](std::uint64_t tag, std::uint64_t value) {
    file.Put(entry, tag, word);
    file.Put(entry + word, value, word);
    entry += 2 * word;
  };
  std::size_t name = 1;
  for (const std::string& library : needed) {
    dynamic(1, name);
    file.Put(kStrings + name, library);
    name += library.size() + 1;
  }
  dynamic(5, 0x10000 + kStrings);
  return file.Bytes();
}

/// A minimal PE library for `machine` that imports from `needed`. Its section is loaded at 0x1000.
inline std::string PeBytes(const std::vector<std::string>& needed, std::uint64_t machine = 0x8664,
                           bool is64 = true) {
  constexpr std::size_t kPe = 128;
  constexpr std::size_t kSection = 512;
  LibraryBytes file(2048);
  file.Put(0, "MZ");
  file.Put(0x3C, kPe, 4);
  file.Put(kPe, "PE");
  file.Put(kPe + 4, machine, 2);
  file.Put(kPe + 6, 1, 2);
  file.Put(kPe + 20, 240, 2);
  const std::size_t optional = kPe + 24;
  file.Put(optional, is64 ? 0x20B : 0x10B, 2);
  const std::size_t directories = optional + (is64 ? 112 : 96);
  file.Put(directories - 4, 16, 4);
  file.Put(directories + 8, 0x1000 + 64, 4);
  const std::size_t section = optional + 240;
  file.Put(section + 12, 0x1000, 4);
  file.Put(section + 16, 2048 - kSection, 4);
  file.Put(section + 20, kSection, 4);
  std::size_t descriptor = kSection + 64;
  std::size_t name = 1024;
  for (const std::string& library : needed) {
    file.Put(descriptor + 12, 0x1000 + name - kSection, 4);
    file.Put(name, library);
    descriptor += 20;
    name += library.size() + 1;
  }
  return file.Bytes();
}
