// Checks which folder includes which, and that each file of the frame includes what it uses.
// dependencies_tests.py checks what is included transitively.

#include <gtest/gtest.h>

#include <algorithm>
#include <cctype>
#include <cstddef>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <map>
#include <regex>
#include <set>
#include <string>
#include <vector>

namespace fs = std::filesystem;

namespace {

/// What the files of a folder may include: "..." below these folders, <...> with these beginnings
/// beside the headers of the language.
struct Allowed {
  std::vector<std::string> folders;
  std::vector<std::string> libraries;
};

const std::vector<std::string> kFrameFolders = {"src/PluginFrame", "src/lock", "src/model",
                                                "src/private"};

const std::map<std::string, Allowed>& AllowedIncludes() {
  static const std::map<std::string, Allowed> allowed = {
      {"src/PluginFrame",
       {{"src/PluginFrame", "src/private", "src/model", "src/lock", "sdk"}, {"boost/thread/"}}},
      {"src/private", {{"src/private", "src/model", "sdk"}, {"libxml/"}}},
      {"src/model", {{"src/model"}, {}}},
      {"src/lock", {{"src/lock", "sdk/xrt"}, {}}},
      {"sdk", {{"sdk", "src/model"}, {"stdbool.h", "stdint.h", "windows.h"}}},
      {"workbench/output", {{"workbench/output"}, {"fmt/"}}},
      {"workbench/product",
       {{"workbench/product", "workbench/output", "src/model", "sdk"}, {"libxml/"}}},
      {"workbench/check",
       {{"workbench/check", "workbench/product", "workbench/output", "src/model", "sdk"},
        {"boost/uuid/", "fmt/", "libxml/", "nlohmann/"}}},
      {"workbench/record",
       {{"workbench/record", "workbench/output", "sdk", "src/model"}, {"date/", "nlohmann/"}}},
      {"workbench/timeline", {{"workbench/timeline", "workbench/record", "workbench/output"}, {}}},
      {"workbench/report",
       {{"workbench/report", "workbench/timeline", "workbench/record", "workbench/output"},
        {"boost/graph/", "fmt/", "nlohmann/"}}},
      {"workbench/shake",
       {{"workbench/shake", "workbench/record", "workbench/output", "sdk", "src/model"},
        {"fmt/", "nlohmann/"}}},
      {"workbench/replay",
       {{"workbench/replay", "workbench/timeline", "workbench/record", "workbench/output", "stub"},
        {}}},
      {"stub", {{"stub", "sdk"}, {"dlfcn.h"}}},
      {"host",
       {{"host", "workbench", "sdk", "reference", "src/model"},
        {"CLI/", "fmt/", "libxml/xmlerror.h", "nlohmann/"}}},
      {"samples", {{"samples", "sdk"}, {}}}};
  return allowed;
}

/// The reference libraries alone include the system's headers and those of many libraries.
const std::vector<std::string> kReferenceFolders = {"reference", "sdk", "src/model"};

struct Include {
  std::string name;
  bool isOurs = false;  // written in quotation marks
};

bool IsSource(const fs::path& path) {
  return path.extension() == ".h" || path.extension() == ".cpp";
}

std::vector<fs::path> SourcesIn(const std::string& folder) {
  std::vector<fs::path> sources;
  for (const auto& entry : fs::recursive_directory_iterator(fs::path(TEV_SOURCE_DIR) / folder)) {
    if (entry.is_regular_file() && IsSource(entry.path())) sources.push_back(entry.path());
  }
  return sources;
}

std::string Read(const fs::path& path) {
  std::ifstream file(path);
  return std::string(std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>());
}

std::vector<Include> IncludesOf(const std::string& text) {
  static const std::regex pattern("# *include *([\"<])([^\">]+)[\">]");
  std::vector<Include> includes;
  for (std::sregex_iterator match(text.begin(), text.end(), pattern), end; match != end; ++match) {
    includes.push_back({(*match)[2], (*match)[1] == "\""});
  }
  return includes;
}

bool BeginsWithOneOf(const std::string& text, const std::vector<std::string>& beginnings) {
  return std::any_of(beginnings.begin(), beginnings.end(), [&](const std::string& begin) {
    return text.compare(0, begin.size(), begin) == 0;
  });
}

bool IsBelowOneOf(const std::string& path, const std::vector<std::string>& folders) {
  return std::any_of(folders.begin(), folders.end(), [&](const std::string& folder) {
    return path.compare(0, folder.size() + 1, folder + "/") == 0;
  });
}

bool IsOfTheLanguage(const std::string& header) {
  return header.find_first_of("./") == std::string::npos;
}

/// What the sources below `folder` include against the rule, one line each.
template <typename IsAllowed>
std::string Offences(const std::string& folder, IsAllowed isAllowed) {
  const std::vector<fs::path> sources = SourcesIn(folder);
  if (sources.empty()) return folder + " holds no source file";
  std::string offences;
  for (const fs::path& source : sources) {
    for (const Include& include : IncludesOf(Read(source))) {
      if (!isAllowed(include)) offences += source.string() + " includes " + include.name + "\n";
    }
  }
  return offences;
}

TEST(Includes, PointOnlyDownwards) {
  for (const auto& [folder, allowed] : AllowedIncludes()) {
    const Allowed& rule = allowed;
    EXPECT_EQ("", Offences(folder, [&](const Include& include) {
                return include.isOurs ? IsBelowOneOf(include.name, rule.folders)
                                      : IsOfTheLanguage(include.name) ||
                                            BeginsWithOneOf(include.name, rule.libraries);
              }));
  }
  EXPECT_EQ("", Offences("reference", [](const Include& include) {
              return !include.isOurs || IsBelowOneOf(include.name, kReferenceFolders);
            }));
}

TEST(Includes, EveryFolderOfTheWorkbenchHasARule) {
  std::string without;
  for (const auto& entry : fs::directory_iterator(fs::path(TEV_SOURCE_DIR) / "workbench")) {
    const std::string folder = "workbench/" + entry.path().filename().string();
    if (entry.is_directory() && AllowedIncludes().count(folder) == 0) without += folder + "\n";
  }
  EXPECT_EQ("", without);
}

/// Which names of the standard library the frame uses from which header.
const std::map<std::string, std::vector<std::string>>& StandardNames() {
  static const std::map<std::string, std::vector<std::string>> names = {
      {"algorithm", {"all_of", "find", "find_if", "min", "replace", "stable_sort"}},
      {"atomic",
       {"atomic", "memory_order_acquire", "memory_order_relaxed", "memory_order_release"}},
      {"cstddef", {"ptrdiff_t", "size_t"}},
      {"cstdint", {"int32_t", "uint32_t", "uint64_t"}},
      {"cstdio", {"fclose", "ferror", "FILE", "fopen", "fread", "fseek", "ftell"}},
      {"cstdlib", {"atoi"}},
      {"cstring", {"memset", "strlen", "strspn"}},
      {"exception", {"exception"}},
      {"functional", {"function"}},
      {"limits", {"numeric_limits"}},
      {"map", {"map", "multimap"}},
      {"memory", {"make_shared", "make_unique", "shared_ptr", "unique_ptr"}},
      {"mutex", {"lock_guard", "mutex"}},
      {"new", {"bad_alloc"}},
      {"set", {"set"}},
      {"string", {"string", "to_string"}},
      {"typeinfo", {"type_info"}},
      {"utility", {"exchange", "move"}},
      {"vector", {"vector"}}};
  return names;
}

/// Text without comments and without what stands in quotation marks.
std::string CodeOf(const std::string& text) {
  static const std::regex noise("//[^\n]*|\"(\\\\.|[^\"\\\\\n])*\"");
  return std::regex_replace(text, noise, "");
}

/// The names in `code`, those of the standard library with "std::" before them. Members, which
/// follow a "." or an arrow, are left out.
std::set<std::string> NamesIn(const std::string& code) {
  static const std::regex name("(std::|\\.|->)?\\b([A-Za-z_][A-Za-z_0-9]*)");
  std::set<std::string> names;
  for (std::sregex_iterator match(code.begin(), code.end(), name), end; match != end; ++match) {
    const std::string before = (*match)[1];
    if (before.empty() || before == "std::") names.insert(before + (*match)[2].str());
  }
  return names;
}

/// The types that `code` defines outside of any other.
std::set<std::string> TypesDefinedIn(const std::string& code) {
  static const std::regex type("\n(struct|class|enum class|enum) ([A-Za-z]+)[^;\n]*\\{");
  std::set<std::string> types;
  for (std::sregex_iterator match(code.begin(), code.end(), type), end; match != end; ++match) {
    types.insert((*match)[2]);
  }
  return types;
}

/// Which header has which name: the types of src/ and sdk/, and what the frame uses of std.
std::map<std::string, std::string> HeadersOfNames() {
  std::map<std::string, std::string> headers;
  for (const auto& [header, names] : StandardNames()) {
    for (const std::string& name : names) headers["std::" + name] = header;
  }
  for (const char* folder : {"src", "sdk"}) {
    for (const fs::path& source : SourcesIn(folder)) {
      if (source.extension() != ".h") continue;
      const std::string name = fs::relative(source, TEV_SOURCE_DIR).generic_string();
      for (const std::string& type : TypesDefinedIn(CodeOf(Read(source)))) headers[type] = name;
    }
  }
  return headers;
}

/// What `source` includes, and what the header of its own name includes.
std::set<std::string> IncludedBy(const fs::path& source) {
  std::set<std::string> included;
  fs::path header = source;
  header.replace_extension(".h");
  for (const fs::path& file : {source, header}) {
    for (const Include& include : IncludesOf(Read(file))) included.insert(include.name);
  }
  return included;
}

TEST(Includes, NameWhatEachFileOfTheFrameUses) {
  const std::map<std::string, std::string> headers = HeadersOfNames();
  ASSERT_EQ(1U, headers.count("ProductModel"));
  std::string missing;
  for (const std::string& folder : kFrameFolders) {
    for (const fs::path& source : SourcesIn(folder)) {
      const std::string path = fs::relative(source, TEV_SOURCE_DIR).generic_string();
      const std::set<std::string> included = IncludedBy(source);
      for (const std::string& name : NamesIn(CodeOf(Read(source)))) {
        const auto header = headers.find(name);
        if (header != headers.end() && header->second != path &&
            included.count(header->second) == 0) {
          missing += path + " uses " + name + " without " + header->second + "\n";
        }
        if (header == headers.end() && name.compare(0, 5, "std::") == 0) {
          missing += path + " uses " + name + ", which StandardNames does not have\n";
        }
      }
    }
  }
  EXPECT_EQ("", missing);
}

TEST(Sources, OfTheFrameHaveNoConditionalForTheOperatingSystem) {
  static const std::regex conditional("\\s*#\\s*(if|ifdef|ifndef|elif)\\b.*");
  std::string found;
  for (const auto& entry : fs::recursive_directory_iterator(fs::path(TEV_SOURCE_DIR) / "src")) {
    if (!entry.is_regular_file()) continue;
    std::ifstream file(entry.path());
    for (std::string line; std::getline(file, line);) {
      if (std::regex_match(line, conditional)) found += entry.path().string() + ": " + line + "\n";
    }
  }
  EXPECT_EQ("", found);
}

}  // namespace
