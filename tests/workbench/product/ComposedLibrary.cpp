#include "tests/workbench/product/ComposedLibrary.h"

#include <cstdint>
#include <utility>

#include "tests/workbench/product/LibraryBytes.h"

namespace {

constexpr std::uint64_t kBase = 0x10000;  // address of an ELF library

/// The hash by which the loader compares names of versions.
std::uint64_t ElfHash(const std::string& name) {
  std::uint64_t hash = 0;
  for (const char c : name) {
    hash = (hash << 4U) + static_cast<unsigned char>(c);
    const std::uint64_t high = hash & 0xF0000000U;
    hash = (hash ^ high >> 24U) & ~high & 0xFFFFFFFFU;
  }
  return hash;
}

/// Lays out a 64-bit ELF library: the headers, the tables, the texts.
class ElfComposer {
 public:
  explicit ElfComposer(const LibraryParts& parts) : m_parts(parts) {
    for (const std::string& name : parts.used) m_symbols.push_back({Text(name), 0x10, 0});
    for (const std::string& name : parts.exported) m_symbols.push_back({Text(name), 0x12, 1});
    for (const std::string& name : parts.data) m_symbols.push_back({Text(name), 0x11, 1});
  }

  std::string Bytes() {
    AddNames();
    AddHash();
    AddSymbols();
    AddRelocations();
    if (!m_parts.version.empty() || !m_parts.required.empty()) AddVersions();
    const std::size_t dynamic = kTables + m_tables.size();
    const std::size_t texts = dynamic + 16 * (m_entries.size() + 3);
    AddEntry(5, kBase + texts);
    AddEntry(10, m_texts.size());
    AddEntry(0, 0);
    std::string entries;
    for (const auto& [tag, value] : m_entries) entries += Number(tag, 8) + Number(value, 8);
    const std::size_t size = texts + m_texts.size();
    return Header() + Segment(1, 0, size) + Segment(2, dynamic, entries.size()) + m_tables +
           entries + m_texts;
  }

 private:
  static constexpr std::size_t kTables = 64 + 2 * 56;  // where they begin

  struct Symbol {
    std::size_t name;
    std::uint64_t info;
    std::uint64_t section;
  };

  static std::string Number(std::uint64_t number, std::size_t size) {
    LibraryBytes bytes(size);
    bytes.Put(0, number, size);
    return bytes.Bytes();
  }

  static std::string Header() {
    LibraryBytes header(64);
    header.Put(0, std::string("\177ELF\2\1\1", 7));
    header.Put(16, 3, 2);
    header.Put(18, 62, 2);
    header.Put(20, 1, 4);
    header.Put(32, 64, 8);
    header.Put(52, 64, 2);
    header.Put(54, 56, 2);
    header.Put(56, 2, 2);
    return header.Bytes();
  }

  /// The loader writes into the dynamic segment and the addresses, so all is writable.
  static std::string Segment(std::uint64_t type, std::uint64_t offset, std::uint64_t size) {
    return Number(type, 4) + Number(7, 4) + Number(offset, 8) + Number(kBase + offset, 8) +
           Number(kBase + offset, 8) + Number(size, 8) + Number(size, 8) + Number(0x1000, 8);
  }

  std::size_t Text(const std::string& text) {
    const std::size_t at = m_texts.size();
    m_texts += text + '\0';
    return at;
  }

  void AddEntry(std::uint64_t tag, std::uint64_t value) { m_entries.emplace_back(tag, value); }

  /// Appends a table and returns its address.
  std::uint64_t AddTable(const std::string& table) {
    const std::uint64_t address = kBase + kTables + m_tables.size();
    m_tables += table;
    m_tables.resize((m_tables.size() + 7) / 8 * 8, '\0');
    return address;
  }

  void AddNames() {
    for (const std::string& name : m_parts.needed) AddEntry(1, Text(name));
    if (!m_parts.soname.empty()) AddEntry(14, Text(m_parts.soname));
    if (!m_parts.rpath.empty()) AddEntry(15, Text(m_parts.rpath));
    if (!m_parts.runpath.empty()) AddEntry(29, Text(m_parts.runpath));
  }

  /// One bucket, whose chain has every symbol.
  void AddHash() {
    const std::size_t count = m_symbols.size();
    std::string table = Number(1, 4) + Number(count, 4) + Number(count > 1 ? 1 : 0, 4);
    for (std::size_t i = 0; i < count; ++i) {
      table += Number(i == 0 || i + 1 == count ? 0 : i + 1, 4);
    }
    AddEntry(4, AddTable(table));
  }

  void AddSymbols() {
    std::string table;
    for (const Symbol& symbol : m_symbols) {
      table += Number(symbol.name, 4) + Number(symbol.info, 2) + Number(symbol.section, 2) +
               Number(symbol.section == 0 ? 0 : kBase, 8) + Number(0, 8);
    }
    AddEntry(6, AddTable(table));
  }

  /// Each used symbol has an address that the loader fills.
  void AddRelocations() {
    const std::size_t count = m_parts.used.size();
    const std::uint64_t addresses = AddTable(std::string(8 * count, '\0'));
    std::string table;
    for (std::size_t i = 0; i < count; ++i) {
      table += Number(addresses + 8 * i, 8) + Number((i + 1) << 32U | 6U, 8) + Number(0, 8);
    }
    AddEntry(7, AddTable(table));
    AddEntry(8, table.size());
    AddEntry(9, 24);
  }

  void AddVersions() {
    std::string ofSymbols;
    for (std::size_t i = 0; i < m_symbols.size(); ++i) ofSymbols += Number(1, 2);
    AddEntry(0x6ffffff0, AddTable(ofSymbols));
    if (!m_parts.version.empty()) {
      const std::size_t name = Text(m_parts.version);
      AddEntry(0x6ffffffc, AddTable(Number(1, 2) + Number(0, 2) + Number(2, 2) + Number(1, 2) +
                                    Number(ElfHash(m_parts.version), 4) + Number(20, 4) +
                                    Number(0, 4) + Number(name, 4) + Number(0, 4)));
      AddEntry(0x6ffffffd, 1);
    }
    std::string needs;
    for (std::size_t i = 0; i < m_parts.required.size(); ++i) {
      const auto& [library, version] = m_parts.required[i];
      const std::size_t next = i + 1 == m_parts.required.size() ? 0 : 32;
      needs += Number(1, 2) + Number(1, 2) + Number(Text(library), 4) + Number(16, 4) +
               Number(next, 4) + Number(ElfHash(version), 4) + Number(0, 2) + Number(3 + i, 2) +
               Number(Text(version), 4) + Number(0, 4);
    }
    if (needs.empty()) return;
    AddEntry(0x6ffffffe, AddTable(needs));
    AddEntry(0x6fffffff, m_parts.required.size());
  }

  const LibraryParts& m_parts;
  std::string m_texts = std::string(1, '\0');
  std::vector<Symbol> m_symbols = {{0, 0, 0}};
  std::string m_tables;
  std::vector<std::pair<std::uint64_t, std::uint64_t>> m_entries;  // of the dynamic segment
};

}  // namespace

std::string ElfLibrary(const LibraryParts& parts) {
  return ElfComposer(parts).Bytes();
}

std::string PeLibrary(const LibraryParts& parts) {
  constexpr std::size_t kPe = 128;
  constexpr std::size_t kOptional = kPe + 24;
  constexpr std::size_t kTables = 2048;  // offset of the section with the tables
  constexpr std::uint64_t kAddress = 0x3000;
  const std::size_t count = parts.exported.size() + parts.data.size();
  std::vector<std::string> names = parts.exported;
  names.insert(names.end(), parts.data.begin(), parts.data.end());
  std::size_t size =
      20 * (parts.needed.size() + 1) + 16 * (parts.used.size() + 1) + 40 + 10 * count;
  for (const auto& list : {parts.needed, parts.used, names}) {
    for (const std::string& name : list) size += name.size() + 4;
  }
  LibraryBytes file(kTables + (size + 511) / 512 * 512);
  file.Put(0, "MZ");
  file.Put(0x3C, kPe, 4);
  file.Put(kPe, "PE");
  file.Put(kPe + 4, 0x8664, 2);
  file.Put(kPe + 6, 3, 2);
  file.Put(kPe + 20, 240, 2);
  file.Put(kPe + 22, 0x2022, 2);
  file.Put(kOptional, 0x20B, 2);
  file.Put(kOptional + 16, 0x1000, 4);
  file.Put(kOptional + 24, 0x180000000, 8);
  file.Put(kOptional + 32, 0x1000, 4);
  file.Put(kOptional + 36, 512, 4);
  file.Put(kOptional + 56, 0x8000, 4);
  file.Put(kOptional + 60, 1024, 4);
  file.Put(kOptional + 108, 16, 4);
  const auto section = [&file](std::size_t number, const char* name, std::uint64_t address,
                               std::size_t offset, std::size_t bytes, std::uint64_t flags) {
    const std::size_t at = kOptional + 240 + 40 * number;
    file.Put(at, name);
    file.Put(at + 8, bytes, 4);
    file.Put(at + 12, address, 4);
    file.Put(at + 16, bytes, 4);
    file.Put(at + 20, offset, 4);
    file.Put(at + 36, flags, 4);
  };
  section(0, ".text", 0x1000, 1024, 512, 0x60000020);
  section(1, ".data", 0x2000, 1536, 512, 0xC0000040);
  section(2, ".rdata", kAddress, kTables, file.Bytes().size() - kTables, 0x40000040);

  std::size_t free = kTables;  // the next unused byte
  const auto take = [&free](std::size_t bytes) {
    const std::size_t at = free;
    free += bytes;
    return at;
  };
  const auto address = [](std::size_t offset) { return kAddress + offset - kTables; };
  const auto text = [&](const std::string& name, std::size_t before) {
    const std::size_t at = take(before + name.size() + 1);
    file.Put(at + before, name);
    return address(at);
  };
  const std::size_t imports = take(20 * (parts.needed.size() + 1));
  const std::size_t thunks = take(8 * (parts.used.size() + 1));
  const std::size_t loaded = take(8 * (parts.used.size() + 1));
  for (std::size_t i = 0; i < parts.needed.size(); ++i) {
    // All but the first import nothing: they use the entry that ends the list.
    const std::size_t skipped = i == 0 ? 0 : 8 * parts.used.size();
    file.Put(imports + 20 * i, address(thunks + skipped), 4);
    file.Put(imports + 20 * i + 12, text(parts.needed[i], 0), 4);
    file.Put(imports + 20 * i + 16, address(loaded + skipped), 4);
  }
  for (std::size_t i = 0; i < parts.used.size(); ++i) {
    const std::uint64_t name = text(parts.used[i], 2);
    file.Put(thunks + 8 * i, name, 8);
    file.Put(loaded + 8 * i, name, 8);
  }
  if (!parts.needed.empty()) {
    file.Put(kOptional + 112 + 8, address(imports), 4);
    file.Put(kOptional + 112 + 12, 20 * (parts.needed.size() + 1), 4);
  }
  const std::size_t exports = take(40 + 10 * count);
  file.Put(kOptional + 112, address(exports), 4);
  file.Put(exports + 16, 1, 4);
  file.Put(exports + 20, count, 4);
  file.Put(exports + 24, count, 4);
  for (std::size_t i = 0; i < 3; ++i)
    file.Put(exports + 28 + 4 * i, address(exports + 40 + 4 * count * i), 4);
  for (std::size_t i = 0; i < count; ++i) {
    file.Put(exports + 40 + 4 * i, i < parts.exported.size() ? 0x1000 + i : 0x2000 + i, 4);
    file.Put(exports + 40 + 4 * (count + i), text(names[i], 0), 4);
    file.Put(exports + 40 + 8 * count + 2 * i, i, 2);
  }
  file.Put(kOptional + 112 + 4, free - exports, 4);
  return file.Bytes();
}
