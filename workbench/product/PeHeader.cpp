// The parts of the PE format that say what a library imports and exports.

#include <cstddef>
#include <map>

#include "workbench/product/FileBytes.h"
#include "workbench/product/LibraryHeader.h"

namespace {

constexpr std::uint64_t kHeaderOffset = 0x3C;  // in the DOS header
constexpr std::uint64_t k64Bit = 0x20B;        // magic number of the optional header
constexpr std::uint64_t kExports = 0;          // index of a data directory, as the next one
constexpr std::uint64_t kImports = 1;

// Limits that no valid file reaches; a damaged file may contain any number, or a list without end.
constexpr std::uint64_t kMostSections = 1000;
constexpr std::uint64_t kMostImports = 10000;
constexpr std::uint64_t kMostExports = 70000;

std::string MachineName(std::uint64_t machine) {
  static const std::map<std::uint64_t, std::string> names = {
      {0x14C, "x86"}, {0x1C4, "ARM"}, {0x8664, "x86-64"}, {0xAA64, "AArch64"}};
  const auto name = names.find(machine);
  return name == names.end() ? "PE machine " + std::to_string(machine) : name->second;
}

struct Section {
  std::uint64_t address;
  std::uint64_t offset;
  std::uint64_t size;  // in the file
};

std::vector<Section> ReadSections(FileBytes& file, std::uint64_t table, std::uint64_t count) {
  if (count > kMostSections) throw FileBytes::Broken();
  std::vector<Section> sections;
  for (std::uint64_t i = 0; i < count; ++i) {
    const std::uint64_t at = table + 40 * i;
    sections.push_back({file.Number(at + 12, 4), file.Number(at + 20, 4), file.Number(at + 16, 4)});
  }
  return sections;
}

std::uint64_t OffsetOf(const std::vector<Section>& sections, std::uint64_t address) {
  for (const Section& section : sections) {
    if (address >= section.address && address - section.address < section.size) {
      return section.offset + (address - section.address);
    }
  }
  throw FileBytes::Broken();
}

void ReadImports(FileBytes& file, const std::vector<Section>& sections, std::uint64_t table,
                 LibraryHeader& header) {
  const std::uint64_t imports = OffsetOf(sections, table);
  for (std::uint64_t i = 0;; ++i) {
    if (i == kMostImports) throw FileBytes::Broken();
    const std::uint64_t name = file.Number(imports + 20 * i + 12, 4);
    if (name == 0) break;
    header.needed.push_back(file.Text(OffsetOf(sections, name)));
  }
}

void ReadExports(FileBytes& file, const std::vector<Section>& sections, std::uint64_t table,
                 LibraryHeader& header) {
  const std::uint64_t exports = OffsetOf(sections, table);
  const std::uint64_t count = file.Number(exports + 24, 4);
  if (count > kMostExports) throw FileBytes::Broken();
  if (count == 0) return;
  const std::uint64_t names = OffsetOf(sections, file.Number(exports + 32, 4));
  for (std::uint64_t i = 0; i < count; ++i) {
    header.exported.push_back(file.Text(OffsetOf(sections, file.Number(names + 4 * i, 4))));
  }
}

}  // namespace

void ReadPe(FileBytes& file, LibraryPart part, LibraryHeader& header) {
  const std::uint64_t pe = file.Number(kHeaderOffset, 4);
  if (file.Bytes(pe, 4) != std::string("PE\0\0", 4)) {
    header.format = LibraryHeader::Format::kNone;  // a program for DOS
    return;
  }
  header.machine = MachineName(file.Number(pe + 4, 2));
  const std::uint64_t sectionCount = file.Number(pe + 6, 2);
  const std::uint64_t optionalSize = file.Number(pe + 20, 2);
  const std::uint64_t optional = pe + 24;
  const bool is64 = file.Number(optional, 2) == k64Bit;
  const std::uint64_t directories = optional + (is64 ? 112 : 96);
  const std::uint64_t directory = part == LibraryPart::kExports ? kExports : kImports;
  if (file.Number(directories - 4, 4) <= directory) return;
  const std::uint64_t table = file.Number(directories + 8 * directory, 4);
  if (table == 0) return;
  const std::vector<Section> sections = ReadSections(file, optional + optionalSize, sectionCount);
  if (part == LibraryPart::kExports) {
    ReadExports(file, sections, table, header);
  } else {
    ReadImports(file, sections, table, header);
  }
}
