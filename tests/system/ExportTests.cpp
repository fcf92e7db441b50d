// The exports of the built library: its whole table, and the lock helpers at work over the real
// runtime.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <array>
#include <cstdio>
#include <fstream>
#include <set>
#include <sstream>
#include <string>

namespace {

std::string OutputOf(const std::string& command) {
  std::string output;
  FILE* pipe = popen(command.c_str(), "r");
  std::array<char, 4096> buffer;
  while (std::size_t read = std::fread(buffer.data(), 1, buffer.size(), pipe)) {
    output.append(buffer.data(), read);
  }
  EXPECT_EQ(0, pclose(pipe)) << command;
  return output;
}

std::set<std::string> ListedExports() {
  std::set<std::string> names;
  std::ifstream list(TEV_EXPORTS);
  for (std::string line; std::getline(list, line);) {
    if (!line.empty() && line[0] != '#') names.insert(line);
  }
  return names;
}

std::set<std::string> DefinedSymbols() {
  std::set<std::string> names;
  std::istringstream table(OutputOf("nm -D --defined-only -P \"" TEV_FRAME "\""));
  for (std::string line; std::getline(table, line);) names.insert(line.substr(0, line.find(' ')));
  return names;
}

TEST(Exports, AreTheLifeOfTheFrameAndTheLockHelpersAndNothingElse) {
  EXPECT_EQ(ListedExports(), DefinedSymbols());
}

TEST(Exports, TheSevenLifeEntriesAreUnmangled) {
  const std::set<std::string> exports = DefinedSymbols();
  for (const char* entry : {"Frame_Init", "Frame_Start", "Frame_Stop", "Frame_UnInit",
                            "Frame_GetLastError", "Frame_GetVersion", "Frame_Gtest"}) {
    EXPECT_EQ(1U, exports.count(entry)) << entry;
  }
}

TEST(Exports, LocksThemselvesAreImportedFromTheRuntime) {
  std::set<std::string> imported;
  std::istringstream table(OutputOf("nm -D --undefined-only -P \"" TEV_FRAME "\""));
  for (std::string line; std::getline(table, line);)
    imported.insert(line.substr(0, line.find(' ')));
  for (const char* symbol : {"_ZN9XRT_MutexC1Ev", "_ZN9XRT_MutexD1Ev", "_ZN9XRT_Mutex4LockEv",
                             "_ZN9XRT_Mutex6UnlockEv"}) {
    EXPECT_EQ(1U, imported.count(symbol)) << symbol;
  }
}

}  // namespace
