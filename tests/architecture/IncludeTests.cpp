// Which folder may include which.

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <map>
#include <regex>
#include <string>
#include <vector>

namespace fs = std::filesystem;

namespace {

const std::map<std::string, std::vector<std::string>>& AllowedIncludes() {
  static const std::map<std::string, std::vector<std::string>> allowed = {
      {"src/PluginFrame", {"src/PluginFrame", "src/private", "src/model", "src/lock", "sdk"}},
      {"src/private", {"src/private", "src/model", "sdk"}},
      {"src/model", {"src/model"}},
      {"src/lock", {"src/lock", "sdk/xrt"}},
      {"sdk", {"sdk", "src/model"}},
      {"reference", {"reference", "sdk", "src/model"}},
      {"workbench/output", {"workbench", "sdk", "src/model"}},
      {"workbench/product", {"workbench/product", "src/model", "sdk"}},
      {"workbench/record", {"workbench/record", "sdk", "src/model"}},
      {"host", {"host", "workbench", "sdk", "reference", "src/model"}},
      {"samples", {"samples", "sdk"}}};
  return allowed;
}

bool Within(const std::string& path, const std::vector<std::string>& folders) {
  for (const std::string& folder : folders) {
    if (path.compare(0, folder.size() + 1, folder + "/") == 0) return true;
  }
  return false;
}

/// What each source file below `folder` includes against the rule, one line each.
std::string Offences(const std::string& folder, const std::vector<std::string>& allowed) {
  static const std::regex include("\\s*#include \"([^\"]+)\".*");
  std::string offences;
  int files = 0;
  for (const auto& entry : fs::recursive_directory_iterator(fs::path(TEV_SOURCE_DIR) / folder)) {
    const std::string extension = entry.path().extension().string();
    if (extension != ".h" && extension != ".cpp") continue;
    ++files;
    std::ifstream file(entry.path());
    std::smatch match;
    for (std::string line; std::getline(file, line);) {
      if (std::regex_match(line, match, include) && !Within(match[1], allowed)) {
        offences += entry.path().string() + " includes " + match[1].str() + "\n";
      }
    }
  }
  return files > 0 ? offences : folder + " holds no source file";
}

TEST(Includes, PointOnlyDownwards) {
  for (const auto& rule : AllowedIncludes()) {
    EXPECT_EQ("", Offences(rule.first, rule.second));
  }
}

TEST(Includes, EveryFolderOfTheWorkbenchHasARule) {
  std::string without;
  for (const auto& entry : fs::directory_iterator(fs::path(TEV_SOURCE_DIR) / "workbench")) {
    const std::string folder = "workbench/" + entry.path().filename().string();
    if (entry.is_directory() && AllowedIncludes().count(folder) == 0) without += folder + "\n";
  }
  EXPECT_EQ("", without);
}

TEST(Includes, OnlyOneSourceOfTheFrameKnowsTheParser) {
  std::string users;
  for (const auto& entry : fs::recursive_directory_iterator(fs::path(TEV_SOURCE_DIR) / "src")) {
    if (!entry.is_regular_file()) continue;
    std::ifstream file(entry.path());
    for (std::string line; std::getline(file, line);) {
      if (line.find("#include <libxml/") != std::string::npos) {
        users += entry.path().filename().string() + " ";
        break;
      }
    }
  }
  EXPECT_EQ("XmlProto.cpp ", users);
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
