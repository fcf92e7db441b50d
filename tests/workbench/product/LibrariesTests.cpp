#include <gmock/gmock.h>

#include <fstream>
#include <random>
#include <sstream>

#include "tests/support/TemporaryFolder.h"
#include "tests/workbench/product/LibraryBytes.h"
#include "workbench/product/Libraries.h"

using testing::Contains;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::IsSubsetOf;
using testing::Not;
using testing::Optional;

namespace fs = std::filesystem;

namespace {

const LocalNames kNames = {[](const std::string& local) { return fs::path(local); },
                           [](const fs::path& path) { return path.string(); }};

constexpr char kWords[] = "what the loader says";

constexpr char kNoFile[] = "libx.so: cannot open shared object file: No such file or directory";

class Libraries : public testing::Test {
 protected:
  std::optional<std::vector<std::string>> Needed(const std::string& bytes) const {
    return NeededLibraries(folder.Write("library", bytes));
  }

  /// The reason for plugin.dll, without the folder's path.
  std::string Why(const std::string& words = kWords) const {
    std::string why = WhyNotLoaded(folder.Path() / "plugin.dll", words, program, kNames);
    const std::string path = (folder.Path() / "").string();
    for (std::size_t at = why.find(path); at != std::string::npos; at = why.find(path)) {
      why.erase(at, path.size());
    }
    return why;
  }

  void UseProgram(const std::string& bytes) { program.executable = folder.Write("program", bytes); }

  TemporaryFolder folder;
  LoadingProgram program;
};

using NeededOfLibrary = Libraries;
using WhyNotLoadedTest = Libraries;

TEST_F(NeededOfLibrary, AreReadFromEveryKindOfElf) {
  for (const bool is64 : {true, false}) {
    for (const bool bigEndian : {true, false}) {
      EXPECT_THAT(Needed(ElfBytes({"libx.so", "liby.so.6"}, 62, is64, bigEndian)),
                  Optional(ElementsAre("libx.so", "liby.so.6")));
      EXPECT_THAT(Needed(ElfBytes({}, 62, is64, bigEndian)), Optional(IsEmpty()));
    }
  }
}

TEST_F(NeededOfLibrary, AreReadFromEveryKindOfPe) {
  for (const bool is64 : {true, false}) {
    EXPECT_THAT(Needed(PeBytes({"x.dll", "KERNEL32.dll"}, 0x8664, is64)),
                Optional(ElementsAre("x.dll", "KERNEL32.dll")));
    EXPECT_THAT(Needed(PeBytes({}, 0x8664, is64)), Optional(IsEmpty()));
  }
}

TEST_F(NeededOfLibrary, AreReadFromBuiltLibrary) {
  EXPECT_THAT(NeededLibraries(TEV_NEEDS_A_LIBRARY),
              Optional(Contains(fs::path(TEV_ANSWERS).filename().string())));
}

TEST_F(NeededOfLibrary, AreNoneOfOtherFiles) {
  EXPECT_EQ(std::nullopt, Needed(""));
  EXPECT_EQ(std::nullopt, Needed("M"));
  EXPECT_EQ(std::nullopt, Needed("#!/bin/sh\n"));
  EXPECT_EQ(std::nullopt, Needed("MZ" + std::string(100, '\0')));
  EXPECT_EQ(std::nullopt, NeededLibraries(folder.Path()));
  EXPECT_EQ(std::nullopt, NeededLibraries(folder.Path() / "absent"));
}

TEST_F(NeededOfLibrary, AreNeverInventedFromWhatIsCut) {
  for (const std::string& whole : {ElfBytes({"libx.so"}), PeBytes({"x.dll"})}) {
    const auto expected = Needed(whole);
    int cuts = 0;
    for (std::size_t size = 0; size < whole.size(); size += 16) {
      const auto needed = Needed(whole.substr(0, size));
      EXPECT_TRUE(!needed || needed == expected) << "cut at " << size;
      if (!needed) ++cuts;
    }
    EXPECT_GT(cuts, 60);
  }
}

TEST_F(NeededOfLibrary, EndForAnyChangedByte) {
  std::mt19937 random(3);
  for (const std::string& whole : {ElfBytes({"libx.so", "liby.so"}), PeBytes({"x.dll"})}) {
    for (std::size_t at = 0; at < whole.size(); ++at) {
      std::string bytes = whole;
      bytes[at] = static_cast<char>(at % 2 == 0 ? 0xFF : random() % 256);
      const auto needed = Needed(bytes);
      for (const std::string& name : needed.value_or(std::vector<std::string>())) {
        ASSERT_NE(std::string::npos, bytes.find(name)) << "changed at " << at;
      }
    }
  }
}

TEST_F(NeededOfLibrary, EndForBuiltLibraryThatIsCutOrChanged) {
  std::string whole;
  {
    std::ifstream file(TEV_NEEDS_A_LIBRARY, std::ios::binary);
    whole.assign(std::istreambuf_iterator<char>(file), {});
  }
  ASSERT_GT(whole.size(), 4096U);
  const auto expected = Needed(whole);
  const std::string path = folder.Write("cut", whole);
  for (std::size_t size = (whole.size() - 1) / 64 * 64; size > 0; size -= 64) {
    fs::resize_file(path, size);
    const auto needed = NeededLibraries(path);
    ASSERT_TRUE(!needed || needed == expected) << "cut at " << size;
  }
  EXPECT_EQ(std::nullopt, NeededLibraries(path));
  for (std::size_t at = 0; at < 4096; at += 3) {
    std::string bytes = whole;
    bytes[at] = static_cast<char>(~static_cast<unsigned char>(bytes[at]));
    Needed(bytes);
  }
}

constexpr std::size_t kSegmentBytes = 56;  // of a program header
constexpr std::size_t kEntryBytes = 16;    // of a dynamic entry

/// An ELF library with `count` program headers, of which only the first three are valid.
std::string ElfWithManySegments(std::size_t count) {
  const std::string whole = ElfBytes({"libx.so"});
  LibraryBytes file(whole.size() + count * kSegmentBytes);
  file.Put(0, whole);
  file.Put(32, whole.size(), 8);
  file.Put(56, count, 2);
  file.Put(whole.size(), whole.substr(64, 3 * kSegmentBytes));
  return file.Bytes();
}

/// An ELF library with `count` dynamic entries before those that matter.
std::string ElfWithManyEntries(std::size_t count) {
  const std::string whole = ElfBytes({"libx.so"});
  LibraryBytes file(whole.size() + (count + 3) * kEntryBytes);
  file.Put(0, whole);
  file.Put(64 + 2 * kSegmentBytes + 8, whole.size(), 8);
  file.Put(64 + 2 * kSegmentBytes + 32, (count + 3) * kEntryBytes, 8);
  for (std::size_t i = 0; i < count; ++i) file.Put(whole.size() + i * kEntryBytes, 21, 8);
  file.Put(whole.size() + count * kEntryBytes, whole.substr(kElfDynamic, 2 * kEntryBytes));
  return file.Bytes();
}

/// A PE library with `count` sections, of which only the first is valid.
std::string PeWithManySections(std::size_t count) {
  const std::string whole = PeBytes({"x.dll"});
  const std::size_t table = 128 + 24 + 240;
  LibraryBytes file(whole.size() + count * 40);
  file.Put(0, whole);
  file.Put(128 + 6, count, 2);
  file.Put(128 + 20, whole.size() - 128 - 24, 2);  // the table follows the optional header
  file.Put(whole.size(), whole.substr(table, 40));
  return file.Bytes();
}

std::string PeWithManyImports(std::size_t count) {
  const std::string whole = PeBytes({"x.dll"});
  LibraryBytes file(whole.size() + (count + 1) * 20);
  file.Put(0, whole);
  file.Put(128 + 24 + 112 + 8, 0x1000 + whole.size() - 512, 4);
  file.Put(128 + 24 + 240 + 16, file.Bytes().size() - 512, 4);
  for (std::size_t i = 0; i < count; ++i) {
    file.Put(whole.size() + i * 20 + 12, 0x1000 + 1024 - 512, 4);
  }
  return file.Bytes();
}

TEST_F(NeededOfLibrary, AreNoneFromTablesBeyondAllReason) {
  EXPECT_THAT(Needed(ElfWithManySegments(1000)), Optional(ElementsAre("libx.so")));
  EXPECT_EQ(std::nullopt, Needed(ElfWithManySegments(1001)));
  EXPECT_THAT(Needed(ElfWithManyEntries(9000)), Optional(ElementsAre("libx.so")));
  EXPECT_EQ(std::nullopt, Needed(ElfWithManyEntries(10001)));
  EXPECT_THAT(Needed(PeWithManySections(1000)), Optional(ElementsAre("x.dll")));
  EXPECT_EQ(std::nullopt, Needed(PeWithManySections(1001)));
  EXPECT_THAT(Needed(PeWithManyImports(9000)), Optional(testing::SizeIs(9000)));
  EXPECT_EQ(std::nullopt, Needed(PeWithManyImports(10001)));
}

TEST_F(NeededOfLibrary, AreNoneOfPeWithoutImportDirectory) {
  std::string pe = PeBytes({"x.dll"});
  pe[128 + 24 + 108] = 1;
  EXPECT_THAT(Needed(pe), Optional(IsEmpty()));
}

TEST_F(WhyNotLoadedTest, FileIsMissing) {
  EXPECT_EQ("plugin.dll does not exist", Why());
}

TEST_F(WhyNotLoadedTest, FileIsNoLibrary) {
  folder.Write("plugin.dll", "#!/bin/sh\n");
  EXPECT_EQ("plugin.dll is no library: neither ELF nor PE", Why());
  folder.Write("plugin.dll", "");
  EXPECT_EQ("plugin.dll is empty", Why());
  folder.Write("plugin.dll", ElfBytes({}).substr(0, 100));
  EXPECT_EQ("plugin.dll is no sound ELF library: it is cut short or damaged", Why());
  fs::remove(folder.Path() / "plugin.dll");
  fs::create_directory(folder.Path() / "plugin.dll");
  EXPECT_EQ("plugin.dll is a directory", Why());
}

TEST_F(WhyNotLoadedTest, MachineOrFormatIsAnother) {
  UseProgram(ElfBytes({}));
  folder.Write("plugin.dll", ElfBytes({}, 183));
  EXPECT_EQ("plugin.dll is for AArch64, this program for x86-64", Why());
  folder.Write("plugin.dll", PeBytes({}));
  EXPECT_EQ("plugin.dll is a library of the format PE, this program needs ELF", Why());
  UseProgram(PeBytes({}));
  folder.Write("plugin.dll", PeBytes({}, 0x14C));
  EXPECT_EQ("plugin.dll is for x86, this program for x86-64", Why());
  program.executable = folder.Path() / "absent";
  EXPECT_EQ(kWords, Why());
}

TEST_F(WhyNotLoadedTest, NeededLibraryLiesBesideIt) {
  folder.Write("plugin.dll", ElfBytes({"libc.so.6", "libx.so"}));
  folder.Write("libx.so", ElfBytes({}));
  const std::string reason =
      "needs libx.so, which lies beside it but is not looked for there: link the plugin with an "
      "RPATH of $ORIGIN";
  EXPECT_EQ(reason, Why(kNoFile));
  EXPECT_EQ(reason, Why((folder.Path() / "plugin.dll").string() + ": " + kNoFile));
  EXPECT_EQ("libx.so: undefined symbol: f", Why("libx.so: undefined symbol: f"));
}

TEST_F(WhyNotLoadedTest, LibraryBesideItNeedsAnother) {
  folder.Write("plugin.dll", ElfBytes({"liby.so"}));
  folder.Write("liby.so", ElfBytes({"libx.so", "liby.so"}));
  EXPECT_EQ("needs liby.so, which needs libx.so, which is in no folder where the loader looks",
            Why(kNoFile));
  folder.Write("libx.so", ElfBytes({}));
  EXPECT_EQ(
      "needs liby.so, which needs libx.so, which lies beside it but is not looked for there: link "
      "liby.so with an RPATH of $ORIGIN",
      Why(kNoFile));
}

TEST_F(WhyNotLoadedTest, NeededLibraryBesideItIsForAnotherMachine) {
  UseProgram(ElfBytes({}));
  folder.Write("plugin.dll", ElfBytes({"libx.so"}));
  folder.Write("libx.so", ElfBytes({}, 40));
  EXPECT_EQ("needs libx.so, which is for ARM, this program for x86-64", Why(kNoFile));
}

TEST_F(WhyNotLoadedTest, OnlyTheNamedLibraryIsBlamed) {
  folder.Write("plugin.dll", ElfBytes({"x.so", "libx.so", "libx.so.1"}));
  for (const char* name : {"x.so", "libx.so.1", "libx.so"}) folder.Write(name, ElfBytes({}));
  EXPECT_EQ(
      "needs libx.so, which lies beside it but is not looked for there: link the plugin with an "
      "RPATH of $ORIGIN",
      Why(kNoFile));
  EXPECT_EQ(
      "needs libx.so.1, which lies beside it but is not looked for there: link the plugin with an "
      "RPATH of $ORIGIN",
      Why("libx.so.1: cannot open shared object file: No such file or directory"));
  EXPECT_EQ("libz.so: cannot open: No such file or directory",
            Why("libz.so: cannot open: No such file or directory"));
}

TEST_F(WhyNotLoadedTest, NameInTheFoldersPathIsNotBlamed) {
  fs::create_directory(folder.Path() / "libq.so");
  folder.Write("libq.so/plugin.dll", ElfBytes({"libq.so", "libx.so"}));
  const fs::path library = folder.Path() / "libq.so" / "plugin.dll";
  EXPECT_EQ("needs libx.so, which is in no folder where the loader looks",
            WhyNotLoaded(library, library.string() + ": " + kNoFile, program, kNames));
}

TEST_F(WhyNotLoadedTest, LibrariesThatNeedEachOtherEnd) {
  folder.Write("plugin.dll", ElfBytes({"liby.so"}));
  folder.Write("liby.so", ElfBytes({"libw.so"}));
  folder.Write("libw.so", ElfBytes({"liby.so"}));
  EXPECT_EQ(kNoFile, Why(kNoFile));
}

TEST_F(WhyNotLoadedTest, PeNeedsWhatIsNowhere) {
  TemporaryFolder system;
  system.Write("kernel32.dll", "");
  folder.Write("plugin.dll", PeBytes({"KERNEL32.dll", "api-ms-win-crt-heap-l1-1-0.dll", "y.dll"}));
  folder.Write("y.dll", PeBytes({"KERNEL32.dll", "x.dll"}));
  EXPECT_EQ(kWords, Why());
  program.folders = {system.Path()};
  EXPECT_EQ(
      "needs y.dll, which needs x.dll, which is neither beside it nor in a folder where the loader "
      "looks",
      Why());
  system.Write("x.dll", "");
  EXPECT_EQ(kWords, Why());
}

std::string Content(const fs::path& file) {
  std::ostringstream content;
  content << std::ifstream(file, std::ios::binary).rdbuf();
  return content.str();
}

TEST_F(Libraries, ExportWhatTheyDefineAndNotWhatTheyNeed) {
  EXPECT_THAT(ExportedNames(TEV_ANSWERS), Contains("Answer"));
  EXPECT_THAT(ExportedNames(TEV_NEEDS_A_LIBRARY), Not(Contains("Answer")));
}

TEST_F(Libraries, CutAnywhereExportNothingElse) {
  const std::string whole = Content(TEV_ANSWERS);
  const std::vector<std::string> exported = ExportedNames(TEV_ANSWERS);
  for (std::size_t size = 0; size < whole.size(); size += 97) {
    EXPECT_THAT(ExportedNames(folder.Write("library", whole.substr(0, size))), IsSubsetOf(exported))
        << size;
  }
}

TEST_F(Libraries, WithDamagedHeadersExportInBoundedTime) {
  const std::string whole = Content(TEV_ANSWERS);
  std::mt19937 random(7);
  for (int i = 0; i < 300; ++i) {
    std::string damaged = whole;
    for (int j = 0; j < 20; ++j) {
      // The section headers of an ELF file are at its end.
      const std::size_t at = j % 2 == 0 ? random() % 1024 : whole.size() - 1 - random() % 2048;
      damaged[at] = static_cast<char>(random());
    }
    EXPECT_LE(ExportedNames(folder.Write("library", damaged)).size(), 1000000U);
  }
}

}  // namespace
