#include "tests/system/ExportTable.h"

#include <gtest/gtest.h>

#include <cstring>
#include <filesystem>

#include "sdk/os/os.h"

namespace {

/// A library, mapped by the loader without running its code, for reading its tables.
class MappedImage {
 public:
  explicit MappedImage(const std::string& library)
      : m_module(LoadLibraryExW(std::filesystem::path(library).make_preferred().c_str(), nullptr,
                                DONT_RESOLVE_DLL_REFERENCES)) {
    EXPECT_NE(nullptr, m_module) << library;
  }
  ~MappedImage() { FreeLibrary(m_module); }
  MappedImage(const MappedImage&) = delete;
  MappedImage& operator=(const MappedImage&) = delete;

  template <typename Record>
  const Record* At(DWORD offset) const {
    return reinterpret_cast<const Record*>(reinterpret_cast<const char*>(m_module) + offset);
  }

  template <typename Record>
  const Record* Directory(int index) const {
    return At<Record>(Header()->OptionalHeader.DataDirectory[index].VirtualAddress);
  }

  bool IsCode(DWORD offset) const {
    const IMAGE_NT_HEADERS64* const header = Header();
    const IMAGE_SECTION_HEADER* const sections = IMAGE_FIRST_SECTION(header);
    for (WORD i = 0; i < header->FileHeader.NumberOfSections; ++i) {
      if (offset - sections[i].VirtualAddress < sections[i].Misc.VirtualSize) {
        return (sections[i].Characteristics & IMAGE_SCN_MEM_EXECUTE) != 0;
      }
    }
    return false;
  }

 private:
  const IMAGE_NT_HEADERS64* Header() const {
    return At<IMAGE_NT_HEADERS64>(static_cast<DWORD>(At<IMAGE_DOS_HEADER>(0)->e_lfanew));
  }

  HMODULE m_module;
};

}  // namespace

std::map<std::string, ExportedSymbol> ExportedSymbols(const std::string& library) {
  const MappedImage image(library);
  const auto* const table = image.Directory<IMAGE_EXPORT_DIRECTORY>(IMAGE_DIRECTORY_ENTRY_EXPORT);
  const auto* const names = image.At<DWORD>(table->AddressOfNames);
  const auto* const ordinals = image.At<WORD>(table->AddressOfNameOrdinals);
  const auto* const addresses = image.At<DWORD>(table->AddressOfFunctions);
  std::map<std::string, ExportedSymbol> symbols;
  for (DWORD i = 0; i < table->NumberOfNames; ++i) {
    const DWORD address = addresses[ordinals[i]];
    symbols.emplace(image.At<char>(names[i]),
                    ExportedSymbol{image.IsCode(address), address, std::nullopt});
  }
  EXPECT_EQ(table->NumberOfNames, table->NumberOfFunctions) << "exports without a name";
  return symbols;
}

std::set<std::string> ImportedNames(const std::string& library) {
  const MappedImage image(library);
  std::set<std::string> names;
  for (const auto* from = image.Directory<IMAGE_IMPORT_DESCRIPTOR>(IMAGE_DIRECTORY_ENTRY_IMPORT);
       from->Name != 0; ++from) {
    for (const auto* entry = image.At<IMAGE_THUNK_DATA64>(from->OriginalFirstThunk);
         entry->u1.AddressOfData != 0; ++entry) {
      const auto offset = static_cast<DWORD>(entry->u1.AddressOfData);
      names.insert(image.At<IMAGE_IMPORT_BY_NAME>(offset)->Name);
    }
  }
  return names;
}

const void* FunctionBehind(const void* address) {
  const auto* const code = static_cast<const unsigned char*>(address);
  if (code[0] != 0xFF || code[1] != 0x25) return address;  // jmp [rip + distance]
  std::int32_t distance = 0;
  std::memcpy(&distance, code + 2, sizeof(distance));
  const void* target = nullptr;
  std::memcpy(&target, code + 6 + distance, sizeof(target));
  return target;
}
