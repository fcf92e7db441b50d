// The parts of the ELF format that say what a library needs and exports.

#include <algorithm>
#include <cstddef>
#include <map>

#include "workbench/product/FileBytes.h"
#include "workbench/product/LibraryHeader.h"

namespace {

constexpr std::uint64_t kClass64 = 2;
constexpr std::uint64_t kBigEndian = 2;
constexpr std::uint64_t kLoad = 1;     // type of a segment
constexpr std::uint64_t kDynamic = 2;  // type of a segment
constexpr std::uint64_t kEnd = 0;      // tag of a dynamic entry, as the next two
constexpr std::uint64_t kNeeded = 1;
constexpr std::uint64_t kStringTable = 5;
constexpr std::uint64_t kDynamicSymbols = 11;  // type of a section
constexpr std::uint64_t kUndefined = 0;        // section of a symbol that another library defines

// Limits that no valid file reaches; a damaged file may contain any number.
constexpr std::uint64_t kMostSegments = 1000;
constexpr std::uint64_t kMostEntries = 10000;
constexpr std::uint64_t kMostSections = 70000;
constexpr std::uint64_t kMostSymbols = 1000000;
constexpr std::size_t kMostNameBytes = 1U << 26U;

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
  std::uint64_t sections, sectionEntrySize, sectionCount;               // in the file
  std::uint64_t sectionOffset, sectionSize, sectionLink;                // in a section's header
  std::uint64_t symbolSize, symbolSection;                              // in a symbol
};

constexpr Layout k32 = {4, 28, 42, 44, 4, 8, 16, 32, 46, 48, 16, 20, 24, 16, 14};
constexpr Layout k64 = {8, 32, 54, 56, 8, 16, 32, 40, 58, 60, 24, 32, 40, 24, 6};

struct Segment {
  std::uint64_t type;
  std::uint64_t offset;
  std::uint64_t address;
  std::uint64_t size;
};

std::vector<Segment> ReadSegments(FileBytes& file, const Layout& layout) {
  const std::uint64_t table = file.Number(layout.programHeaders, layout.word);
  const std::uint64_t size = file.Number(layout.programHeaderSize, 2);
  const std::uint64_t count = file.Number(layout.programHeaderCount, 2);
  if (count > kMostSegments) throw FileBytes::Broken();
  std::vector<Segment> segments;
  for (std::uint64_t i = 0; i < count; ++i) {
    const std::uint64_t at = table + i * size;
    segments.push_back({file.Number(at, 4), file.Number(at + layout.segmentOffset, layout.word),
                        file.Number(at + layout.segmentAddress, layout.word),
                        file.Number(at + layout.segmentSize, layout.word)});
  }
  return segments;
}

std::uint64_t OffsetOf(const std::vector<Segment>& segments, std::uint64_t address) {
  for (const Segment& segment : segments) {
    const bool within = address >= segment.address && address - segment.address < segment.size;
    if (segment.type == kLoad && within) return segment.offset + (address - segment.address);
  }
  throw FileBytes::Broken();
}

struct Section {
  std::uint64_t type;
  std::uint64_t offset;
  std::uint64_t size;
  std::uint64_t link;  // for a symbol table: the index of the section with the names
};

std::vector<Section> ReadSections(FileBytes& file, const Layout& layout) {
  const std::uint64_t table = file.Number(layout.sections, layout.word);
  const std::uint64_t size = file.Number(layout.sectionEntrySize, 2);
  const std::uint64_t count = table == 0 ? 0 : file.Number(layout.sectionCount, 2);
  if (count > kMostSections) throw FileBytes::Broken();
  std::vector<Section> sections;
  for (std::uint64_t i = 0; i < count; ++i) {
    const std::uint64_t at = table + i * size;
    sections.push_back({file.Number(at + 4, 4), file.Number(at + layout.sectionOffset, layout.word),
                        file.Number(at + layout.sectionSize, layout.word),
                        file.Number(at + layout.sectionLink, 4)});
  }
  return sections;
}

void ReadExports(FileBytes& file, const Layout& layout, LibraryHeader& header) {
  const std::vector<Section> sections = ReadSections(file, layout);
  for (const Section& symbols : sections) {
    if (symbols.type != kDynamicSymbols) continue;
    const std::uint64_t count = symbols.size / layout.symbolSize;
    if (symbols.link >= sections.size() || count > kMostSymbols) throw FileBytes::Broken();
    const std::uint64_t names = sections[symbols.link].offset;
    std::size_t nameBytes = 0;
    for (std::uint64_t i = 1; i < count; ++i) {  // the first one is empty
      const std::uint64_t at = symbols.offset + i * layout.symbolSize;
      if (file.Number(at + layout.symbolSection, 2) == kUndefined) continue;
      header.exported.push_back(file.Text(names + file.Number(at, 4)));
      nameBytes += header.exported.back().size();
      if (nameBytes > kMostNameBytes) throw FileBytes::Broken();
    }
  }
}

}  // namespace

void ReadElf(FileBytes& file, LibraryPart part, LibraryHeader& header) {
  const Layout& layout = file.Number(4, 1) == kClass64 ? k64 : k32;
  file.UseBigEndian(file.Number(5, 1) == kBigEndian);
  header.machine = MachineName(file.Number(18, 2));

  if (part == LibraryPart::kExports) return ReadExports(file, layout, header);
  const std::vector<Segment> segments = ReadSegments(file, layout);
  const auto dynamic = std::find_if(segments.begin(), segments.end(), [](const Segment& segment) {
    return segment.type == kDynamic;
  });
  if (dynamic == segments.end()) return;
  std::vector<std::uint64_t> names;  // offsets in the string table
  std::uint64_t strings = 0;
  const std::uint64_t entries = dynamic->size / (2 * layout.word);
  for (std::uint64_t i = 0; i < entries; ++i) {
    if (i == kMostEntries) throw FileBytes::Broken();
    const std::uint64_t at = dynamic->offset + i * 2 * layout.word;
    const std::uint64_t tag = file.Number(at, layout.word);
    const std::uint64_t value = file.Number(at + layout.word, layout.word);
    if (tag == kEnd) break;
    if (tag == kNeeded) names.push_back(value);
    if (tag == kStringTable) strings = value;
  }
  for (const std::uint64_t name : names) {
    header.needed.push_back(file.Text(OffsetOf(segments, strings) + name));
  }
}
