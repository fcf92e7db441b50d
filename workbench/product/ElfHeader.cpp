// What the loader reads of an ELF file: its segments, and the tables that the dynamic segment
// names. Sections are not used, so a file without them reads the same.

#include <algorithm>
#include <cstddef>
#include <map>

#include "workbench/product/FileBytes.h"
#include "workbench/product/LibraryHeader.h"

namespace {

constexpr std::uint64_t kClass64 = 2;
constexpr std::uint64_t kBigEndian = 2;

// Types of a segment.
constexpr std::uint64_t kLoad = 1;
constexpr std::uint64_t kDynamic = 2;

// Types of a file.
constexpr std::uint64_t kExecutable = 2;
constexpr std::uint64_t kShared = 3;

// Tags of a dynamic entry.
enum Tag : std::uint64_t {
  kEnd = 0,
  kNeeded = 1,
  kPltRelocationsSize = 2,
  kHash = 4,
  kStrings = 5,
  kSymbols = 6,
  kRelaTable = 7,
  kRelaSize = 8,
  kStringsSize = 10,
  kSoname = 14,
  kRpath = 15,
  kRelTable = 17,
  kRelSize = 18,
  kPltRelocationsKind = 20,
  kPltRelocations = 23,
  kRunpath = 29,
  kGnuHash = 0x6ffffef5,
  kFlags1 = 0x6ffffffb,
  kVersionDefinitions = 0x6ffffffc,
  kVersionDefinitionCount = 0x6ffffffd,
  kVersionNeeds = 0x6ffffffe,
  kVersionNeedCount = 0x6fffffff
};
constexpr std::uint64_t kIsProgram = 0x08000000;  // in kFlags1

// Of a symbol.
constexpr std::uint64_t kUndefined = 0;  // its section
constexpr std::uint64_t kLocal = 0;      // its binding, as the next one
constexpr std::uint64_t kWeak = 2;
constexpr std::uint64_t kNoType = 0;  // its type, as the next two
constexpr std::uint64_t kFunction = 2;
constexpr std::uint64_t kIndirectFunction = 10;

constexpr std::uint64_t kWeakVersion = 2;  // flag

// Limits that no valid file reaches; a damaged file may contain any number.
constexpr std::uint64_t kMostSegments = 1000;
constexpr std::uint64_t kMostEntries = 10000;
constexpr std::uint64_t kMostSymbols = 1000000;

std::string MachineName(std::uint64_t machine) {
  static const std::map<std::uint64_t, std::string> names = {
      {3, "x86"},  {8, "MIPS"},    {20, "PowerPC"},  {21, "PowerPC64"}, {22, "S/390"},
      {40, "ARM"}, {62, "x86-64"}, {183, "AArch64"}, {243, "RISC-V"},   {258, "LoongArch"}};
  const auto name = names.find(machine);
  return name == names.end() ? "ELF machine " + std::to_string(machine) : name->second;
}

/// The offsets and sizes of the fields, which differ between 32-bit and 64-bit files.
struct Layout {
  std::size_t word;
  std::uint64_t programHeaders, programHeaderSize, programHeaderCount;  // in the file
  std::uint64_t segmentOffset, segmentAddress, segmentSize;             // in a segment
  std::uint64_t symbolSize, symbolInfo, symbolSection;                  // in a symbol
  unsigned relocationShift;  // of the symbol's index in a relocation
};

constexpr Layout k32 = {4, 28, 42, 44, 4, 8, 16, 16, 12, 14, 8};
constexpr Layout k64 = {8, 32, 54, 56, 8, 16, 32, 24, 4, 6, 32};

struct Segment {
  std::uint64_t type;
  std::uint64_t offset;
  std::uint64_t address;
  std::uint64_t size;
};

/// A place in the file, and how many bytes of its segment follow.
struct Span {
  std::uint64_t offset = 0;
  std::uint64_t size = 0;
};

class ElfReader {
 public:
  ElfReader(FileBytes& file, LibraryHeader& header) : m_file(file), m_header(header) {}

  void Read() {
    m_layout = m_file.Number(4, 1) == kClass64 ? &k64 : &k32;
    m_header.is64 = m_layout == &k64;
    m_file.UseBigEndian(m_file.Number(5, 1) == kBigEndian);
    m_header.machine = MachineName(m_file.Number(18, 2));
    const std::uint64_t type = m_file.Number(16, 2);
    if (type == kShared) m_header.kind = LibraryHeader::Kind::kLibrary;
    if (type == kExecutable) m_header.kind = LibraryHeader::Kind::kProgram;
    ReadSegments();
    ReadDynamic();
    if (Value(kStrings) != 0) ReadStrings();
    ReadNames();
    if (Value(kSymbols) != 0) ReadSymbols();
    ReadRequiredVersions();
    ReadVersions();
    if (IsCut()) throw FileBytes::Broken();
  }

 private:
  std::uint64_t Word(std::uint64_t at) { return m_file.Number(at, m_layout->word); }

  void ReadSegments() {
    const std::uint64_t table = Word(m_layout->programHeaders);
    const std::uint64_t size = m_file.Number(m_layout->programHeaderSize, 2);
    const std::uint64_t count = m_file.Number(m_layout->programHeaderCount, 2);
    if (count > kMostSegments || !m_file.Contains(table, count * size)) throw FileBytes::Broken();
    for (std::uint64_t i = 0; i < count; ++i) {
      const std::uint64_t at = table + i * size;
      m_segments.push_back({m_file.Number(at, 4), Word(at + m_layout->segmentOffset),
                            Word(at + m_layout->segmentAddress), Word(at + m_layout->segmentSize)});
    }
  }

  bool IsCut() const {
    return std::any_of(m_segments.begin(), m_segments.end(), [this](const Segment& segment) {
      return segment.type == kLoad && !m_file.Contains(segment.offset, segment.size);
    });
  }

  Span At(std::uint64_t address) const {
    for (const Segment& segment : m_segments) {
      if (segment.type != kLoad || address < segment.address) continue;
      const std::uint64_t within = address - segment.address;
      if (within >= segment.size) continue;
      if (!m_file.Contains(segment.offset, within)) throw FileBytes::Broken();
      return {segment.offset + within, segment.size - within};
    }
    throw FileBytes::Broken();
  }

  void ReadDynamic() {
    const auto dynamic = std::find_if(m_segments.begin(), m_segments.end(),
                                      [](const Segment& s) { return s.type == kDynamic; });
    if (dynamic == m_segments.end()) return;
    const std::size_t word = m_layout->word;
    if (!m_file.Contains(dynamic->offset, 0)) throw FileBytes::Broken();
    for (std::uint64_t i = 0; i < dynamic->size / (2 * word); ++i) {
      if (i == kMostEntries) throw FileBytes::Broken();
      const std::uint64_t at = dynamic->offset + i * 2 * word;
      const std::uint64_t tag = Word(at);
      const std::uint64_t value = Word(at + word);
      if (tag == kEnd) break;
      if (tag == kNeeded) m_needed.push_back(value);
      m_values[tag] = value;
    }
    const bool isProgram = (Value(kFlags1) & kIsProgram) != 0;
    if (isProgram) m_header.kind = LibraryHeader::Kind::kProgram;
  }

  bool Has(Tag tag) const { return m_values.count(tag) != 0; }

  std::uint64_t Value(Tag tag) const {
    const auto value = m_values.find(tag);
    return value == m_values.end() ? 0 : value->second;
  }

  void ReadStrings() {
    const Span span = At(Value(kStrings));
    const std::uint64_t rest = std::min(span.size, m_file.Size() - span.offset);
    const std::uint64_t size = Has(kStringsSize) ? std::min(Value(kStringsSize), rest) : rest;
    m_strings = std::make_shared<const std::string>(m_file.Bytes(span.offset, size));
    m_header.names = m_strings;
  }

  /// A text of the string table. All of them together are not longer than the file: those of a
  /// valid file do not overlap so much.
  std::string_view String(std::uint64_t offset) {
    if (!m_strings || offset >= m_strings->size()) throw FileBytes::Broken();
    const auto begin = static_cast<std::size_t>(offset);
    const std::size_t end = m_strings->find('\0', begin);
    m_stringBytes += std::min(end, m_strings->size()) - begin;
    if (end == std::string::npos || m_stringBytes > m_file.Size()) throw FileBytes::Broken();
    return std::string_view(*m_strings).substr(begin, end - begin);
  }

  void ReadNames() {
    for (const std::uint64_t name : m_needed) m_header.needed.emplace_back(String(name));
    if (Has(kSoname)) m_header.soname = String(Value(kSoname));
    if (Has(kRpath)) m_header.rpath = String(Value(kRpath));
    if (Has(kRunpath)) m_header.runpath = String(Value(kRunpath));
  }

  void ReadSymbols() {
    const std::uint64_t table = At(Value(kSymbols)).offset;
    const std::uint64_t count = SymbolCount();
    if (count > kMostSymbols) throw FileBytes::Broken();
    for (std::uint64_t i = 1; i < count; ++i) {  // the first one is empty
      const std::uint64_t at = table + i * m_layout->symbolSize;
      const std::uint64_t info = m_file.Number(at + m_layout->symbolInfo, 1);
      const std::uint64_t binding = info >> 4U;
      const std::uint64_t type = info & 15U;
      if (binding == kLocal) continue;
      const std::string_view name = String(m_file.Number(at, 4));
      if (m_file.Number(at + m_layout->symbolSection, 2) == kUndefined) {
        m_header.undefined.push_back({name, binding == kWeak});
      } else {
        const bool isFunction = type == kNoType || type == kFunction || type == kIndirectFunction;
        m_header.exported.push_back({name, isFunction});
      }
    }
  }

  /// The symbol table has no size of its own: the hash table that covers it has.
  std::uint64_t SymbolCount() {
    if (Has(kHash)) return m_file.Number(At(Value(kHash)).offset + 4, 4);
    const std::uint64_t hashed = Has(kGnuHash) ? GnuHashCount(At(Value(kGnuHash)).offset) : 0;
    // The linker's hash table of a file that exports nothing covers no symbol at all.
    return hashed > 1 ? hashed : RelocatedSymbolCount();
  }

  std::uint64_t GnuHashCount(std::uint64_t table) {
    const std::uint64_t buckets = m_file.Number(table, 4);
    const std::uint64_t first = m_file.Number(table + 4, 4);  // symbol that is in the table
    const std::uint64_t bloomWords = m_file.Number(table + 8, 4);
    const std::uint64_t bucketTable = table + 16 + bloomWords * m_layout->word;
    if (!m_file.Contains(bucketTable, buckets * 4)) throw FileBytes::Broken();
    std::uint64_t last = 0;
    for (std::uint64_t i = 0; i < buckets; ++i) {
      last = std::max(last, m_file.Number(bucketTable + 4 * i, 4));
    }
    if (last < first) return first;
    // An odd number ends the chain of a bucket.
    const std::uint64_t chains = bucketTable + 4 * buckets;
    while ((m_file.Number(chains + 4 * (last - first), 4) & 1U) == 0) ++last;
    return last + 1;
  }

  /// One more than the last symbol that a relocation names.
  std::uint64_t RelocatedSymbolCount() {
    const std::size_t word = m_layout->word;
    const bool pltHasAddends = Value(kPltRelocationsKind) == kRelaTable;
    return std::max(
               {LastSymbol(kRelaTable, kRelaSize, 3 * word),
                LastSymbol(kRelTable, kRelSize, 2 * word),
                LastSymbol(kPltRelocations, kPltRelocationsSize, (pltHasAddends ? 3 : 2) * word)}) +
           1;
  }

  std::uint64_t LastSymbol(Tag table, Tag size, std::uint64_t entrySize) {
    if (!Has(table) || Value(size) == 0) return 0;
    const std::uint64_t offset = At(Value(table)).offset;
    if (!m_file.Contains(offset, Value(size))) throw FileBytes::Broken();
    std::uint64_t last = 0;
    for (std::uint64_t i = 0; i < Value(size) / entrySize; ++i) {
      const std::uint64_t info = Word(offset + i * entrySize + m_layout->word);
      last = std::max(last, info >> m_layout->relocationShift);
    }
    return last;
  }

  /// Counts the steps of a list whose entries name the next one; a damaged one may be a cycle.
  void Step() {
    if (++m_steps > kMostEntries) throw FileBytes::Broken();
  }

  void ReadRequiredVersions() {
    if (!Has(kVersionNeeds)) return;
    std::uint64_t at = At(Value(kVersionNeeds)).offset;
    for (std::uint64_t i = 0; i < Value(kVersionNeedCount); ++i) {
      Step();
      const std::string library(String(m_file.Number(at + 4, 4)));
      const std::uint64_t count = m_file.Number(at + 2, 2);
      std::uint64_t version = at + m_file.Number(at + 8, 4);
      for (std::uint64_t j = 0; j < count; ++j) {
        Step();
        const bool isWeak = (m_file.Number(version + 4, 2) & kWeakVersion) != 0;
        const std::string_view name = String(m_file.Number(version + 8, 4));
        if (!isWeak) m_header.requiredVersions.push_back({library, std::string(name)});
        version += m_file.Number(version + 12, 4);
      }
      at += m_file.Number(at + 12, 4);
    }
  }

  void ReadVersions() {
    if (!Has(kVersionDefinitions)) return;
    std::uint64_t at = At(Value(kVersionDefinitions)).offset;
    for (std::uint64_t i = 0; i < Value(kVersionDefinitionCount); ++i) {
      Step();
      const std::uint64_t name = at + m_file.Number(at + 12, 4);
      m_header.versions.emplace_back(String(m_file.Number(name, 4)));
      at += m_file.Number(at + 16, 4);
    }
  }

  FileBytes& m_file;
  LibraryHeader& m_header;
  const Layout* m_layout = nullptr;
  std::vector<Segment> m_segments;
  std::map<std::uint64_t, std::uint64_t> m_values;  // the last of each tag
  std::vector<std::uint64_t> m_needed;              // offsets in the string table
  std::shared_ptr<const std::string> m_strings;
  std::uint64_t m_stringBytes = 0;
  std::uint64_t m_steps = 0;
};

}  // namespace

void ReadElf(FileBytes& file, LibraryHeader& header) {
  ElfReader(file, header).Read();
}
