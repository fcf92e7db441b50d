#include "tests/system/ExportTable.h"

#include <gtest/gtest.h>

#include <filesystem>

#include "sdk/os/os.h"

namespace {

/// A library's tables, mapped as the loader maps them; nothing of it runs.
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
    const auto* const header =
        At<IMAGE_NT_HEADERS64>(static_cast<DWORD>(At<IMAGE_DOS_HEADER>(0)->e_lfanew));
    return At<Record>(header->OptionalHeader.DataDirectory[index].VirtualAddress);
  }

 private:
  HMODULE m_module;
};

}  // namespace

std::set<std::string> ExportedNames(const std::string& library) {
  const MappedImage image(library);
  const auto* const table = image.Directory<IMAGE_EXPORT_DIRECTORY>(IMAGE_DIRECTORY_ENTRY_EXPORT);
  const auto* const offsets = image.At<DWORD>(table->AddressOfNames);
  std::set<std::string> names;
  for (DWORD i = 0; i < table->NumberOfNames; ++i) names.insert(image.At<char>(offsets[i]));
  EXPECT_EQ(table->NumberOfNames, table->NumberOfFunctions) << "exports without a name";
  return names;
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
