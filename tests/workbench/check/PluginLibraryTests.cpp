#include "workbench/check/PluginLibrary.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <string>
#include <vector>

#include "host/PluginHeads.h"
#include "host/SystemLibraries.h"
#include "tests/support/TemporaryFolder.h"
#include "tests/workbench/product/ComposedLibrary.h"
#include "workbench/check/PluginLibraryReader.h"

namespace fs = std::filesystem;

namespace {

class PluginLibraryTest : public testing::Test {
 protected:
  PluginLibraryTest() {
    fs::create_directory(folder.Path() / "bin");
    product.bin = "bin";
    system.facts = ThisLibrarySystem(folder.Path() / "bin").facts;
    system.executable = folder / "absent";
  }

  void Add(const std::string& id, const std::string& bytes) {
    folder.Write("bin/" + id + ".dll", bytes);
    product.names.push_back("bin/" + id + ".dll");
    product.model.ServerPluginDescriptions.emplace_back().ID = id;
  }

  void Read() { PluginLibraryReader(product, folder.Path(), SystemNames(), system).Read(); }

  const TemporaryFolder folder;
  CheckedProduct product;
  LibrarySystem system;
};

TEST_F(PluginLibraryTest, SystemIsNotJudgedWhenTheProgramCannotBeRead) {
  LibraryParts parts;
  parts.needed = {"absent.dll", "b.dll"};
  parts.used = {"Open"};
  parts.rpath = "$ORIGIN";
  Add("a", ElfLibrary(parts));
  Add("b", PeLibrary(parts));
  Read();
  ASSERT_EQ(2U, product.libraries.size());
  for (const auto& [id, library] : product.libraries) {
    EXPECT_EQ(PluginLibrary::State::kGood, library->state);
    EXPECT_TRUE(library->notFound.empty());
    EXPECT_EQ("", library->requiredMachine);
  }
}

TEST_F(PluginLibraryTest, LibrariesThatNeedEachOtherEnd) {
  system.executable = folder.Write("HUB", ElfLibrary({}));
  constexpr int kCount = 300;
  for (int i = 0; i < kCount; ++i) {
    LibraryParts parts;
    parts.runpath = "$ORIGIN";
    parts.needed = {std::to_string((i + 1) % kCount) + ".dll"};
    parts.used = {"Open"};
    Add(std::to_string(i), ElfLibrary(parts));
  }
  Read();
  for (const auto& [id, library] : product.libraries) {
    ASSERT_EQ(1U, library->imports.size());
    EXPECT_TRUE(library->notFound.empty());
    EXPECT_EQ(5U, library->missing.size());  // its own and some of the others'
  }
}

}  // namespace
