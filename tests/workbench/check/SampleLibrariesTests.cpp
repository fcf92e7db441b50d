// The libraries of the sample product, as this system loads them.

#include <gtest/gtest.h>

#include <filesystem>
#include <string>

#include "host/PluginHeads.h"
#include "host/SystemLibraries.h"
#include "tests/support/TemporaryFolder.h"
#include "workbench/check/PluginLibrary.h"
#include "workbench/check/PluginLibraryReader.h"
#include "workbench/check/ProductReader.h"
#include "workbench/check/Rule.h"

namespace fs = std::filesystem;

namespace {

/// The findings on libraries, a line each.
std::string LibraryFindings(const fs::path& folder) {
  const LocalNames names = SystemNames();
  const auto product = ReadCheckedProduct({folder, "bin"}, names, 1);
  PluginLibraryReader(*product, folder, names, ThisLibrarySystem(folder / "bin")).Read();
  EXPECT_GE(product->libraries.size(), 20U);
  std::vector<const Rule*> rules;
  for (const Rule* rule : AllRules()) {
    if (std::string(rule->id).compare(0, 4, "TEV4") == 0) rules.push_back(rule);
  }
  std::string text;
  for (const RuleFinding& finding : RunRules(rules, *product)) {
    text += finding.place.file + ": " + finding.message + " [" + finding.rule + "]\n";
  }
  return text;
}

constexpr char kWithoutLibrary[] =  // which the sample's HUB shows as not loaded
    "bin/backup.server.dll: does not exist: \"backup.server\" is not started [TEV401]\n";

TEST(SampleLibraries, LackOnePluginsLibrary) {
  EXPECT_EQ(kWithoutLibrary, LibraryFindings(fs::canonical(TEV_SITE)));
}

TEST(SampleLibraries, HaveFindingsForWhatIsReplaced) {
  const TemporaryFolder folder;
  const fs::path copy = fs::canonical(folder.Path()) / "site";
  fs::copy(TEV_SITE, copy, fs::copy_options::recursive);
  fs::remove(copy / "bin" / "clock.server.dll");
  fs::resize_file(copy / "bin" / "user.server.dll", 5000);
  EXPECT_EQ(
      kWithoutLibrary +
          std::string(
              "bin/clock.server.dll: does not exist: \"clock.server\" is not started [TEV401]\n"
              "bin/user.server.dll: is cut short or damaged, so that loading it fails or ends the "
              "host: \"user.server\" is not started "
              "[TEV403]\n"),
      LibraryFindings(copy));
}

}  // namespace
