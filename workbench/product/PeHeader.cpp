// The parts of the PE format that say what a library imports and exports.

#include <algorithm>
#include <cstddef>
#include <map>
#include <utility>

#include "workbench/product/FileBytes.h"
#include "workbench/product/LibraryHeader.h"

namespace {

constexpr std::uint64_t kHeaderOffset = 0x3C;  // in the DOS header
constexpr std::uint64_t kIsProgram = 0x2;      // in the file's flags, as the next one
constexpr std::uint64_t kIsLibrary = 0x2000;
constexpr std::uint64_t k64Bit = 0x20B;  // magic number of the optional header
constexpr std::uint64_t kExports = 0;    // index of a data directory, as the next one
constexpr std::uint64_t kImports = 1;
constexpr std::uint64_t kHasCode = 0x20000020;  // flags of a section: code, executable

// Limits that no valid file reaches; a damaged file may contain any number, or a list without end.
constexpr std::uint64_t kMostSections = 1000;
constexpr std::uint64_t kMostLibraries = 10000;
constexpr std::uint64_t kMostExports = 70000;

std::string MachineName(std::uint64_t machine) {
  static const std::map<std::uint64_t, std::string> names = {
      {0x14C, "x86"}, {0x1C4, "ARM"}, {0x8664, "x86-64"}, {0xAA64, "AArch64"}};
  const auto name = names.find(machine);
  return name == names.end() ? "PE machine " + std::to_string(machine) : name->second;
}

struct Section {
  std::uint64_t address;
  std::uint64_t size;      // in memory
  std::uint64_t offset;    // in the file
  std::uint64_t fileSize;  // in the file
  bool hasCode;
};

struct Directory {
  std::uint64_t address = 0;  // 0: none
  std::uint64_t size = 0;
};

class PeReader {
 public:
  PeReader(FileBytes& file, LibraryHeader& header) : m_file(file), m_header(header) {}

  void Read() {
    const std::uint64_t pe = m_file.Number(kHeaderOffset, 4);
    if (m_file.Bytes(pe, 4) != std::string("PE\0\0", 4)) {
      m_header.format = LibraryHeader::Format::kNone;  // a program for DOS
      return;
    }
    m_header.machine = MachineName(m_file.Number(pe + 4, 2));
    const std::uint64_t flags = m_file.Number(pe + 22, 2);
    if ((flags & kIsProgram) != 0) m_header.kind = LibraryHeader::Kind::kProgram;
    if ((flags & kIsLibrary) != 0) m_header.kind = LibraryHeader::Kind::kLibrary;
    const std::uint64_t optional = pe + 24;
    m_header.is64 = m_file.Number(optional, 2) == k64Bit;
    m_directories = optional + (m_header.is64 ? 112 : 96);
    ReadSections(optional + m_file.Number(pe + 20, 2), m_file.Number(pe + 6, 2));
    ReadImports(DirectoryAt(kImports));
    ReadExports(DirectoryAt(kExports));
    if (IsCut()) throw FileBytes::Broken();
  }

  /// Makes the names in the header refer to the text that it owns.
  void TakeNames() {
    m_header.names = std::make_shared<const std::string>(std::move(m_names));
    const std::string_view all = *m_header.names;
    for (std::size_t i = 0; i < m_importNames.size(); ++i) {
      m_header.imported[i].name = all.substr(m_importNames[i].first, m_importNames[i].second);
    }
    for (std::size_t i = 0; i < m_exportNames.size(); ++i) {
      m_header.exported[i].name = all.substr(m_exportNames[i].first, m_exportNames[i].second);
    }
  }

 private:
  using NameSpan = std::pair<std::size_t, std::size_t>;  // in m_names

  Directory DirectoryAt(std::uint64_t index) {
    if (m_file.Number(m_directories - 4, 4) <= index) return Directory();
    return {m_file.Number(m_directories + 8 * index, 4),
            m_file.Number(m_directories + 8 * index + 4, 4)};
  }

  void ReadSections(std::uint64_t table, std::uint64_t count) {
    if (count > kMostSections) throw FileBytes::Broken();
    for (std::uint64_t i = 0; i < count; ++i) {
      const std::uint64_t at = table + 40 * i;
      const std::uint64_t fileSize = m_file.Number(at + 16, 4);
      m_sections.push_back({m_file.Number(at + 12, 4), std::max(m_file.Number(at + 8, 4), fileSize),
                            m_file.Number(at + 20, 4), fileSize,
                            (m_file.Number(at + 36, 4) & kHasCode) != 0});
    }
  }

  bool IsCut() const {
    return std::any_of(m_sections.begin(), m_sections.end(), [this](const Section& section) {
      return section.fileSize != 0 && !m_file.Contains(section.offset, section.fileSize);
    });
  }

  std::uint64_t OffsetOf(std::uint64_t address) const {
    for (const Section& section : m_sections) {
      if (address >= section.address && address - section.address < section.fileSize) {
        return section.offset + (address - section.address);
      }
    }
    throw FileBytes::Broken();
  }

  bool IsCode(std::uint64_t address) const {
    return std::any_of(m_sections.begin(), m_sections.end(), [address](const Section& section) {
      return section.hasCode && address >= section.address &&
             address - section.address < section.size;
    });
  }

  std::string Text(std::uint64_t offset) {
    std::string text;
    m_file.AppendText(offset, text);
    m_libraryBytes += text.size();
    if (m_libraryBytes > m_file.Size()) throw FileBytes::Broken();
    return text;
  }

  NameSpan AddName(std::uint64_t offset) {
    const std::size_t begin = m_names.size();
    m_file.AppendText(offset, m_names);
    return {begin, m_names.size() - begin};
  }

  void ReadImports(const Directory& directory) {
    if (directory.address == 0) return;
    const std::uint64_t imports = OffsetOf(directory.address);
    for (std::uint64_t i = 0;; ++i) {
      if (i == kMostLibraries) throw FileBytes::Broken();
      const std::uint64_t at = imports + 20 * i;
      const std::uint64_t name = m_file.Number(at + 12, 4);
      if (name == 0) break;
      m_header.needed.push_back(Text(OffsetOf(name)));
      const std::uint64_t names = m_file.Number(at, 4);
      const std::uint64_t addresses = m_file.Number(at + 16, 4);  // the same, before loading
      if (names != 0 || addresses != 0) ReadImportedNames(OffsetOf(names != 0 ? names : addresses));
    }
  }

  void ReadImportedNames(std::uint64_t table) {
    const std::size_t word = m_header.is64 ? 8 : 4;
    const std::uint64_t byNumber = std::uint64_t{1} << (8 * word - 1);
    for (std::uint64_t at = table;; at += word) {
      const std::uint64_t entry = m_file.Number(at, word);
      if (entry == 0) break;
      // In a valid file each import has an entry of its own.
      if (m_importNames.size() >= m_file.Size() / word) throw FileBytes::Broken();
      ImportedSymbol symbol{m_header.needed.size() - 1, {}, 0};
      NameSpan span{0, 0};
      if ((entry & byNumber) != 0) {
        symbol.ordinal = entry & 0xFFFFU;
      } else {
        span = AddName(OffsetOf(entry) + 2);
      }
      m_importNames.push_back(span);
      m_header.imported.push_back(symbol);
    }
  }

  /// A function that lies in the directory is a text: the library and function that stand in.
  bool IsFunction(std::uint64_t address, const Directory& directory) const {
    const bool isForwarded =
        address >= directory.address && address - directory.address < directory.size;
    return isForwarded || IsCode(address);
  }

  void ReadExports(const Directory& directory) {
    if (directory.address == 0) return;
    const std::uint64_t exports = OffsetOf(directory.address);
    const std::uint64_t base = m_file.Number(exports + 16, 4);
    const std::uint64_t functionCount = m_file.Number(exports + 20, 4);
    const std::uint64_t nameCount = m_file.Number(exports + 24, 4);
    if (functionCount > kMostExports || nameCount > kMostExports) throw FileBytes::Broken();
    if (functionCount == 0) return;
    const std::uint64_t functions = OffsetOf(m_file.Number(exports + 28, 4));
    std::vector<bool> isNamed(functionCount, false);
    if (nameCount != 0) {
      const std::uint64_t names = OffsetOf(m_file.Number(exports + 32, 4));
      const std::uint64_t numbers = OffsetOf(m_file.Number(exports + 36, 4));
      for (std::uint64_t i = 0; i < nameCount; ++i) {
        const std::uint64_t number = m_file.Number(numbers + 2 * i, 2);
        if (number >= functionCount) throw FileBytes::Broken();
        isNamed[number] = true;
        const NameSpan span = AddName(OffsetOf(m_file.Number(names + 4 * i, 4)));
        AddExport(span, m_file.Number(functions + 4 * number, 4), base + number, directory);
      }
    }
    for (std::uint64_t number = 0; number < functionCount; ++number) {
      const std::uint64_t address = m_file.Number(functions + 4 * number, 4);
      if (address != 0 && !isNamed[number]) AddExport({0, 0}, address, base + number, directory);
    }
  }

  void AddExport(NameSpan span, std::uint64_t address, std::uint64_t ordinal,
                 const Directory& directory) {
    m_exportNames.push_back(span);
    m_header.exported.push_back({{}, IsFunction(address, directory), ordinal});
  }

  FileBytes& m_file;
  LibraryHeader& m_header;
  std::uint64_t m_directories = 0;
  std::vector<Section> m_sections;
  std::string m_names;
  std::vector<NameSpan> m_importNames;
  std::vector<NameSpan> m_exportNames;
  std::uint64_t m_libraryBytes = 0;
};

}  // namespace

void ReadPe(FileBytes& file, LibraryHeader& header) {
  PeReader reader(file, header);
  try {
    reader.Read();
  } catch (const FileBytes::Broken&) {
    header.broken = true;
  }
  reader.TakeNames();
}
