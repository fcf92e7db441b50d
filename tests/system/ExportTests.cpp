// The exports of the built library: the whole table, and the functions and data of the names.

#include <gtest/gtest.h>

#include <cstddef>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <set>
#include <string>
#include <typeinfo>

#include "sdk/os/os.h"
#include "sdk/xrt/lock.h"
#include "tests/system/ExportTable.h"

namespace {

constexpr char kRecursiveTable[] = "_ZTVN3xrt19xrt_recursive_mutexE";

std::set<std::string> ListedExports() {
  std::set<std::string> names;
  for (const char* file : {TEV_EXPORTS, TEV_PLATFORM_EXPORTS}) {
    std::ifstream list(file);
    for (std::string line; std::getline(list, line);) {
      if (!line.empty() && line[0] != '#') names.insert(line);
    }
  }
  return names;
}

std::set<std::string> ExportedNames(bool functions) {
  std::set<std::string> names;
  for (const auto& [name, symbol] : ExportedSymbols(TEV_FRAME)) {
    if (symbol.function == functions) names.insert(name);
  }
  return names;
}

/// The layout of a virtual table, the same for the compilers of both systems.
struct VirtualTable {
  std::ptrdiff_t offsetToTop;
  const std::type_info* type;
  const void* completeDestructor;
  const void* deletingDestructor;
};

/// A library loaded into the test's process, with all its symbols bound.
class Library {
 public:
  explicit Library(const std::string& path)
      : m_library(LoadLibraryW(std::filesystem::path(path).make_preferred().wstring().c_str())) {
    EXPECT_NE(nullptr, m_library) << path;
  }
  ~Library() { FreeLibrary(m_library); }
  Library(const Library&) = delete;
  Library& operator=(const Library&) = delete;

  template <typename Symbol>
  Symbol Get(const char* name) const {
    auto* const address = reinterpret_cast<void*>(GetProcAddress(m_library, name));
    EXPECT_NE(nullptr, address) << name;
    return reinterpret_cast<Symbol>(address);
  }

 private:
  const HMODULE m_library;
};

TEST(Exports, AreTheSevenEntriesAndTheLockHelpersAlone) {
  std::set<std::string> functions = ListedExports();
  functions.erase(kRecursiveTable);
  EXPECT_EQ(functions, ExportedNames(true));
  EXPECT_EQ(std::set<std::string>{kRecursiveTable}, ExportedNames(false));
}

TEST(Exports, BothLocksAssignmentsAreOneFunction) {
  const auto symbols = ExportedSymbols(TEV_FRAME);
  EXPECT_EQ(symbols.at("_ZN9XRT_MutexaSERKS_").address,
            symbols.at("_ZN3xrt9xrt_mutexaSERKS0_").address);
}

TEST(Exports, RecursiveLocksTableHasItsTypeAndTheRuntimesDestructors) {
  const ExportedSymbol symbol = ExportedSymbols(TEV_FRAME).at(kRecursiveTable);
  EXPECT_EQ(sizeof(VirtualTable), symbol.size.value_or(sizeof(VirtualTable)));

  const Library runtime(TEV_RUNTIME);
  const Library frame(TEV_FRAME);
  const auto* const table = frame.Get<const VirtualTable*>(kRecursiveTable);
  EXPECT_EQ(0, table->offsetToTop);
  EXPECT_STREQ("N3xrt19xrt_recursive_mutexE", table->type->name());
  EXPECT_EQ(runtime.Get<const void*>("_ZN3xrt19xrt_recursive_mutexD1Ev"),
            FunctionBehind(table->completeDestructor));
  EXPECT_EQ(runtime.Get<const void*>("_ZN3xrt19xrt_recursive_mutexD0Ev"),
            FunctionBehind(table->deletingDestructor));
}

TEST(Exports, CopiedRecursiveLockIsOfTheLocksType) {
  const Library frame(TEV_FRAME);
  using Lock = xrt::xrt_recursive_mutex;
  const auto copy = frame.Get<void (*)(void*, const void*)>("_ZN3xrt19xrt_recursive_mutexC1ERKS0_");
  alignas(Lock) unsigned char other[sizeof(Lock)];
  alignas(Lock) unsigned char one[sizeof(Lock)];
  std::memset(other, 0x5A, sizeof(other));
  const void* const table = &frame.Get<const VirtualTable*>(kRecursiveTable)->completeDestructor;
  std::memcpy(other, &table, sizeof(table));  // the lock that is copied is also of the type
  copy(one, other);
  EXPECT_STREQ("N3xrt19xrt_recursive_mutexE", typeid(*reinterpret_cast<Lock*>(one)).name());
  EXPECT_EQ(0, std::memcmp(one + sizeof(void*), other + sizeof(void*), sizeof(xrt::LockState)));
}

TEST(Exports, TheSevenEntriesAreUnmangled) {
  const std::set<std::string> exports = ExportedNames(true);
  for (const char* entry : {"Frame_Init", "Frame_Start", "Frame_Stop", "Frame_UnInit",
                            "Frame_GetLastError", "Frame_GetVersion", "Frame_Gtest"}) {
    EXPECT_EQ(1U, exports.count(entry)) << entry;
  }
}

TEST(Exports, LocksThemselvesAreImportedFromTheRuntime) {
  const std::set<std::string> imported = ImportedNames(TEV_FRAME);
  for (const char* symbol :
       {"_ZN9XRT_MutexC1Ev", "_ZN9XRT_MutexD1Ev", "_ZN9XRT_Mutex4LockEv", "_ZN9XRT_Mutex6UnlockEv",
        "_ZN3xrt19xrt_recursive_mutexD1Ev", "_ZN3xrt19xrt_recursive_mutexD0Ev"}) {
    EXPECT_EQ(1U, imported.count(symbol)) << symbol;
  }
}

}  // namespace
