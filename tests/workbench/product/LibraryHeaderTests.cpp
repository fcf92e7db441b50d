#include "workbench/product/LibraryHeader.h"

#include <gmock/gmock.h>

#include <filesystem>
#include <fstream>
#include <sstream>

#include "tests/support/TemporaryFolder.h"
#include "tests/workbench/product/ComposedLibrary.h"
#include "tests/workbench/product/LibraryBytes.h"

namespace {

/// Everything that a header contains, one thing a line.
std::string Text(const LibraryHeader& header) {
  std::ostringstream text;
  const char* kinds[] = {"library", "program", "other"};
  text << header.machine << (header.is64 ? " 64 " : " 32 ") << kinds[static_cast<int>(header.kind)]
       << (header.broken ? " broken\n" : "\n");
  for (const std::string& name : header.needed) text << "needs " << name << "\n";
  for (const ExportedSymbol& symbol : header.exported) {
    text << (symbol.isFunction ? "function " : "data ") << symbol.name;
    if (symbol.ordinal != 0) text << " " << symbol.ordinal;
    text << "\n";
  }
  if (!header.soname.empty()) text << "soname " << header.soname << "\n";
  if (!header.rpath.empty()) text << "rpath " << header.rpath << "\n";
  if (!header.runpath.empty()) text << "runpath " << header.runpath << "\n";
  for (const UndefinedSymbol& symbol : header.undefined) {
    text << (symbol.isWeak ? "weak " : "undefined ") << symbol.name << "\n";
  }
  for (const std::string& version : header.versions) text << "defines " << version << "\n";
  for (const RequiredVersion& required : header.requiredVersions) {
    text << "requires " << required.version << " of " << required.library << "\n";
  }
  for (const ImportedSymbol& symbol : header.imported) {
    text << "imports " << symbol.library << ":" << symbol.name << symbol.ordinal << "\n";
  }
  return text.str();
}

class LibraryHeaderTest : public testing::Test {
 protected:
  LibraryHeader Read(const std::string& bytes) const {
    return ReadLibraryHeader(folder.Write("library", bytes));
  }

  /// Reads `whole` with each aligned field overwritten, then cut before every byte. The file is
  /// changed in place: writing a new one each time takes long.
  void Damage(const std::string& whole) const {
    const std::string path = folder.Write("library", whole);
    std::fstream file(path, std::ios::binary | std::ios::in | std::ios::out);
    const auto put = [&file](std::size_t at, const std::string& bytes) {
      file.seekp(static_cast<std::streamoff>(at));
      file.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
      file.flush();
    };
    for (const std::size_t width : {1U, 2U, 4U, 8U}) {
      for (std::size_t at = 0; at + width <= whole.size(); at += width) {
        for (const std::uint64_t value :
             {std::uint64_t{0}, std::uint64_t{1}, ~std::uint64_t{0}, ~std::uint64_t{0} >> 1U}) {
          LibraryBytes field(width);
          field.Put(0, value, width);
          put(at, field.Bytes());
          ASSERT_LE(Text(ReadLibraryHeader(path)).size(), 40 * whole.size() + 1000) << "at " << at;
        }
        put(at, whole.substr(at, width));
      }
    }
    file.close();
    for (std::size_t size = whole.size(); size-- > 0;) {
      std::filesystem::resize_file(path, size);
      const LibraryHeader header = ReadLibraryHeader(path);
      ASSERT_TRUE(header.broken || !header.IsLibraryFile()) << "cut at " << size;
    }
  }

  TemporaryFolder folder;
};

TEST_F(LibraryHeaderTest, HasWhatAnElfFileExportsAndUses) {
  LibraryParts parts;
  parts.data = {"g_table"};
  parts.needed = {"libx.so", "liby.so.6"};
  parts.used = {"Log", "Post"};
  parts.soname = "a.so.1";
  parts.rpath = "/opt/lib";
  parts.runpath = "$ORIGIN:/usr/lib";
  parts.version = "A_2";
  parts.required = {{"libx.so", "X_1"}, {"liby.so.6", "Y_7"}};
  EXPECT_EQ(
      "x86-64 64 library\n"
      "needs libx.so\nneeds liby.so.6\n"
      "function Init\nfunction UnInit\ndata g_table\n"
      "soname a.so.1\nrpath /opt/lib\nrunpath $ORIGIN:/usr/lib\n"
      "undefined Log\nundefined Post\n"
      "defines A_2\nrequires X_1 of libx.so\nrequires Y_7 of liby.so.6\n",
      Text(Read(ElfLibrary(parts))));
}

TEST_F(LibraryHeaderTest, HasWhatAPeFileExportsAndImports) {
  LibraryParts parts;
  parts.data = {"g_table"};
  parts.needed = {"x.dll", "KERNEL32.dll"};
  parts.used = {"Log", "Post"};
  EXPECT_EQ(
      "x86-64 64 library\n"
      "needs x.dll\nneeds KERNEL32.dll\n"
      "function Init 1\nfunction UnInit 2\ndata g_table 3\n"
      "imports 0:Log0\nimports 0:Post0\n",
      Text(Read(PeLibrary(parts))));
}

TEST_F(LibraryHeaderTest, ForwarderOfAPeFileIsAFunction) {
  std::string bytes = PeLibrary({{}, {"g_table"}});
  const std::size_t exports = 2048 + 20 + 16;
  LibraryBytes file(bytes.size());
  file.Put(0, bytes);
  file.Put(exports + 40, 0x3000 + 20 + 16 + 50, 4);  // a text inside of the export directory
  file.Put(128 + 24 + 112 + 4, 200, 4);
  EXPECT_EQ("x86-64 64 library\nfunction g_table 1\n", Text(Read(file.Bytes())));
}

TEST_F(LibraryHeaderTest, ImportByNumberHasNoName) {
  LibraryParts parts;
  parts.needed = {"x.dll"};
  parts.used = {"Log"};
  LibraryBytes file(PeLibrary(parts).size());
  file.Put(0, PeLibrary(parts));
  file.Put(2048 + 40, 0x8000000000000011, 8);
  EXPECT_EQ("x86-64 64 library\nneeds x.dll\nfunction Init 1\nfunction UnInit 2\nimports 0:17\n",
            Text(Read(file.Bytes())));
}

TEST_F(LibraryHeaderTest, NoFieldOfAnElfFileLeadsOutside) {
  LibraryParts parts;
  parts.needed = {"libx.so"};
  parts.used = {"Log"};
  parts.runpath = "$ORIGIN";
  parts.version = "A_2";
  parts.required = {{"libx.so", "X_1"}};
  Damage(ElfLibrary(parts));
}

TEST_F(LibraryHeaderTest, NoFieldOfAPeFileLeadsOutside) {
  LibraryParts parts;
  parts.needed = {"x.dll"};
  parts.used = {"Log"};
  Damage(PeLibrary(parts));
}

/// A file whose symbols all have the same name, of almost the file's size.
std::string ElfWithLongSharedName(std::size_t count) {
  LibraryParts parts;
  parts.exported.assign(count, "y");
  parts.exported.front() = std::string(count * 24, 'x');
  const std::string bytes = ElfLibrary(parts);
  LibraryBytes file(bytes.size());
  file.Put(0, bytes);
  const std::size_t hash = 64 + 2 * 56;
  const std::size_t table = (hash + 4 * (3 + count + 1) + 7) / 8 * 8;
  for (std::size_t i = 1; i <= count; ++i) file.Put(table + 24 * i, 1, 4);
  return file.Bytes();
}

TEST_F(LibraryHeaderTest, NamesTogetherAreNotLongerThanTheFile) {
  const LibraryHeader header = Read(ElfWithLongSharedName(50000));
  EXPECT_TRUE(header.broken);
  EXPECT_LE(header.exported.size(), 3U);
}

}  // namespace
