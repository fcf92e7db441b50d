// The headers of the sample product's libraries, compared with what nm, readelf and objdump print.

#include <gmock/gmock.h>

#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <memory>
#include <sstream>

#include "tests/support/TemporaryFolder.h"
#include "tests/workbench/product/ComposedLibrary.h"
#include "workbench/product/LibraryHeader.h"

namespace fs = std::filesystem;

namespace {

using Lines = std::vector<std::string>;

/// What `command` prints, by lines.
Lines Printed(const std::string& command) {
  // NOLINTNEXTLINE(bugprone-command-processor,cert-env33-c): our own command
  const std::unique_ptr<FILE, int (*)(FILE*)> pipe(popen(command.c_str(), "r"), pclose);
  std::string text;
  char buffer[4096];
  for (std::size_t n = 1; n != 0;) {
    n = std::fread(buffer, 1, sizeof(buffer), pipe.get());
    text.append(buffer, n);
  }
  Lines lines;
  std::istringstream stream(text);
  for (std::string line; std::getline(stream, line);) lines.push_back(line);
  return lines;
}

std::vector<fs::path> Libraries() {
  std::vector<fs::path> libraries;
  for (const auto& entry : fs::directory_iterator(TEV_SAMPLE_BIN)) {
    const fs::path extension = entry.path().extension();
    if (extension == ".dll" || extension == ".so" || extension == ".exe") {
      libraries.push_back(entry.path());
    }
  }
  std::sort(libraries.begin(), libraries.end());
  return libraries;
}

/// The global symbols as "nm -D -P --without-symbol-versions" prints the first two columns: "Init
/// T". Letters are reduced to U, w (undefined), F and D (defined).
Lines SymbolsOfNm(const fs::path& library) {
  Lines symbols;
  for (const std::string& line :
       Printed("nm -D -P --without-symbol-versions '" + library.string() + "'")) {
    std::istringstream words(line);
    std::string name;
    char letter = 0;
    words >> name >> letter;
    const std::string functions = "TWi";
    if (letter != 'U' && letter != 'w' && letter != 'v') {
      letter = functions.find(letter) != std::string::npos ? 'F' : 'D';
    }
    symbols.push_back(name + " " + (letter == 'v' ? 'w' : letter));
  }
  std::sort(symbols.begin(), symbols.end());
  return symbols;
}

Lines SymbolsOf(const LibraryHeader& header) {
  Lines symbols;
  for (const ExportedSymbol& symbol : header.exported) {
    symbols.push_back(std::string(symbol.name) + (symbol.isFunction ? " F" : " D"));
  }
  for (const UndefinedSymbol& symbol : header.undefined) {
    symbols.push_back(std::string(symbol.name) + (symbol.isWeak ? " w" : " U"));
  }
  std::sort(symbols.begin(), symbols.end());
  return symbols;
}

/// What objdump -p prints of the dynamic section and of the versions, in words of its own.
Lines PartsOfObjdump(const fs::path& library) {
  Lines parts;
  std::string file;  // whose versions follow
  bool defines = false;
  for (const std::string& line : Printed("objdump -p '" + library.string() + "'")) {
    std::istringstream words(line);
    std::string first;
    std::string second;
    words >> first >> second;
    if (first == "NEEDED" || first == "SONAME" || first == "RPATH" || first == "RUNPATH") {
      parts.push_back(first + " " + second);
    } else if (first == "required") {
      file = line.substr(line.find("from ") + 5);
      file.pop_back();
    } else if (line == "Version definitions:") {
      defines = true;
    } else if (first.compare(0, 2, "0x") == 0 && !file.empty()) {
      parts.push_back(file + " " + line.substr(line.rfind(' ') + 1));
    } else if (defines && line.find(" 0x") != std::string::npos) {
      parts.push_back("defines " + line.substr(line.rfind(' ') + 1));
    }
  }
  std::sort(parts.begin(), parts.end());
  return parts;
}

Lines PartsOf(const LibraryHeader& header) {
  Lines parts;
  for (const std::string& name : header.needed) parts.push_back("NEEDED " + name);
  if (!header.soname.empty()) parts.push_back("SONAME " + header.soname);
  if (!header.rpath.empty()) parts.push_back("RPATH " + header.rpath);
  if (!header.runpath.empty()) parts.push_back("RUNPATH " + header.runpath);
  for (const RequiredVersion& required : header.requiredVersions) {
    parts.push_back(required.library + " " + required.version);
  }
  for (const std::string& version : header.versions) parts.push_back("defines " + version);
  std::sort(parts.begin(), parts.end());
  return parts;
}

class Binutils : public testing::Test {
 protected:
  /// The library after `strip --strip-all`.
  fs::path Stripped(const fs::path& library) const {
    fs::path stripped = folder.Path() / library.filename();
    Printed("strip --strip-all -o '" + stripped.string() + "' '" + library.string() + "'");
    return stripped;
  }

  /// A stripped library without its section headers, which are at its end.
  fs::path WithoutSections(const fs::path& stripped) const {
    std::string bytes = folder.Read(stripped.filename().string());
    std::uint64_t sections = 0;
    for (std::size_t i = 8; i-- > 0;) {
      sections = sections << 8U | static_cast<unsigned char>(bytes[40 + i]);
    }
    bytes.resize(sections);
    for (const std::size_t field : {40U, 44U, 60U, 62U}) bytes.replace(field, 2, 2, '\0');
    bytes.replace(40, 8, 8, '\0');
    return folder.Write("without_sections", bytes);
  }

  TemporaryFolder folder;
};

TEST_F(Binutils, HaveTheSameSymbols) {
  ASSERT_GE(Libraries().size(), 25U);
  for (const fs::path& library : Libraries()) {
    EXPECT_EQ(SymbolsOfNm(library), SymbolsOf(ReadLibraryHeader(library))) << library;
  }
}

TEST_F(Binutils, HaveTheSameNamesAndVersions) {
  for (const fs::path& library : Libraries()) {
    EXPECT_EQ(PartsOfObjdump(library), PartsOf(ReadLibraryHeader(library))) << library;
  }
  for (const std::string& line : Printed("ldd '" TEV_ANSWERS "'")) {  // the system's libraries
    const std::size_t path = line.find('/');
    if (path == std::string::npos) continue;
    const fs::path library = line.substr(path, line.find(' ', path) - path);
    EXPECT_EQ(PartsOfObjdump(library), PartsOf(ReadLibraryHeader(library))) << library;
    EXPECT_FALSE(ReadLibraryHeader(library).broken) << library;
  }
}

TEST_F(Binutils, StrippedLibrariesReadTheSame) {
  for (const fs::path& library : Libraries()) {
    const LibraryHeader whole = ReadLibraryHeader(library);
    const fs::path stripped = Stripped(library);
    for (const fs::path& smaller : {stripped, WithoutSections(stripped)}) {
      const LibraryHeader header = ReadLibraryHeader(smaller);
      EXPECT_FALSE(header.broken) << smaller;
      EXPECT_EQ(SymbolsOf(whole), SymbolsOf(header)) << smaller;
      EXPECT_EQ(PartsOf(whole), PartsOf(header)) << smaller;
      EXPECT_EQ(whole.machine, header.machine);
      EXPECT_EQ(whole.kind, header.kind);
    }
  }
}

/// The exported names of a PE file, as objdump -p prints them.
Lines PeExportsOfObjdump(const std::string& file) {
  Lines names;
  bool inTable = false;
  for (const std::string& line : Printed("objdump -p '" + file + "'")) {
    if (inTable && line.find('\t') == 0) names.push_back(line.substr(line.rfind(' ') + 1));
    if (line.find("[Ordinal/Name Pointer]") == 0) inTable = true;
    if (line.empty()) inTable = false;
  }
  return names;
}

/// The imports of a PE file, as objdump -p prints them.
Lines PeImportsOfObjdump(const std::string& file) {
  Lines imports;
  std::string library;
  for (const std::string& line : Printed("objdump -p '" + file + "'")) {
    const std::size_t name = line.find("DLL Name: ");
    if (name != std::string::npos) library = line.substr(name + 10);
    std::istringstream words(line);
    std::string address;
    std::string hint;
    std::string symbol;
    words >> address >> hint >> symbol;
    const bool isImport = line.find('\t') == 0 && !library.empty() && !symbol.empty() &&
                          hint.find_first_not_of("0123456789") == std::string::npos;
    if (isImport) imports.push_back(library + " " + symbol);
    if (line.find("There is an export table") == 0) break;
  }
  return imports;
}

TEST_F(Binutils, HaveTheSameExportsAndImportsOfPe) {
  LibraryParts parts;
  parts.data = {"g_table"};
  parts.needed = {"x.dll", "KERNEL32.dll"};
  parts.used = {"Log", "Post"};
  std::vector<std::string> files = {folder.Write("composed.dll", PeLibrary(parts))};
  std::error_code error;
  for (const auto& entry : fs::directory_iterator(TEV_WINDOWS_BUILD, error)) {  // if it was built
    if (entry.path().extension() == ".dll") files.push_back(entry.path().string());
  }
  for (const std::string& file : files) {
    const LibraryHeader header = ReadLibraryHeader(file);
    Lines exports;
    for (const ExportedSymbol& symbol : header.exported) {
      if (!symbol.name.empty()) exports.emplace_back(symbol.name);
    }
    Lines imports;
    for (const ImportedSymbol& symbol : header.imported) {
      if (symbol.name.empty()) continue;
      imports.push_back(header.needed[symbol.library] + " " + std::string(symbol.name));
    }
    EXPECT_FALSE(exports.empty()) << file;
    EXPECT_EQ(PeExportsOfObjdump(file), exports) << file;
    EXPECT_EQ(PeImportsOfObjdump(file), imports) << file;
  }
}

}  // namespace
