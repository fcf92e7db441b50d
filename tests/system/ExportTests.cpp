// The exports of the built library: its whole table.

#include <gtest/gtest.h>

#include <fstream>
#include <set>
#include <string>

#include "tests/system/ExportTable.h"

namespace {

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

TEST(Exports, AreTheSevenEntriesAndTheLockHelpersAlone) {
  EXPECT_EQ(ListedExports(), ExportedNames(TEV_FRAME));
}

TEST(Exports, TheSevenEntriesAreUnmangled) {
  const std::set<std::string> exports = ExportedNames(TEV_FRAME);
  for (const char* entry : {"Frame_Init", "Frame_Start", "Frame_Stop", "Frame_UnInit",
                            "Frame_GetLastError", "Frame_GetVersion", "Frame_Gtest"}) {
    EXPECT_EQ(1U, exports.count(entry)) << entry;
  }
}

TEST(Exports, LocksThemselvesAreImportedFromTheRuntime) {
  const std::set<std::string> imported = ImportedNames(TEV_FRAME);
  for (const char* symbol : {"_ZN9XRT_MutexC1Ev", "_ZN9XRT_MutexD1Ev", "_ZN9XRT_Mutex4LockEv",
                             "_ZN9XRT_Mutex6UnlockEv"}) {
    EXPECT_EQ(1U, imported.count(symbol)) << symbol;
  }
}

}  // namespace
