// Each rule with its smallest bad products and its near misses, checked with the frame's own model.

#include <gtest/gtest.h>

#include <algorithm>
#include <cctype>
#include <filesystem>
#include <set>
#include <string>
#include <vector>

#include "host/FrameLibrary.h"
#include "host/PluginHeads.h"
#include "host/ProductCheck.h"
#include "host/SystemLibraries.h"
#include "reference/kpx/PlatformRecord.h"
#include "tests/support/TemporaryFolder.h"
#include "tests/workbench/check/CaseFile.h"
#include "tests/workbench/product/ComposedLibrary.h"
#include "workbench/check/Rule.h"

namespace fs = std::filesystem;

namespace {

/// Those that can be laid out on this system.
const std::vector<ProductCase>& Cases() {
  static const std::vector<ProductCase> possible = [] {
    std::vector<ProductCase> cases = ReadCases(TEV_CASES);
    const auto isImpossible = [](const ProductCase& one) {
      return one.needsAnyNames && !TEV_ANY_NAMES;
    };
    cases.erase(std::remove_if(cases.begin(), cases.end(), isImpossible), cases.end());
    return cases;
  }();
  return possible;
}

std::string Shown(const Place& place) {
  std::string text = place.file;
  if (place.line > 0) text += ":" + std::to_string(place.line);
  if (place.column > 0) text += ":" + std::to_string(place.column);
  return text + ": ";
}

std::string Shown(const RuleFindings& findings) {
  std::string text;
  for (const RuleFinding& finding : findings) {
    text += Shown(finding.place) + Word(finding.severity) + ": " + finding.message + " [" +
            finding.rule + "]\n";
    for (const RelatedPlace& related : finding.related) {
      text += Shown(related.place) + "note: " + related.message + "\n";
    }
  }
  return text;
}

const ProductCase* g_case = nullptr;  // that is tested
std::string g_folder;                 // of its product

/// What the system says of a file, and what the case says of it.
FileFacts FactsOf(const fs::path& file) {
  FileFacts facts = ThisLibrarySystem(fs::path()).facts(file);
  const std::string name = file.lexically_relative(g_folder).generic_string();
  facts.isWritableByAll = g_case->writable.count(name) != 0;
  facts.isExecutable = g_case->noProgram.count(name) == 0;
  return facts;
}

/// The system of a case: this one, or one whose program and libraries lie in `folder`.
LibrarySystem SystemOf(const ProductCase& one, const fs::path& bin, const TemporaryFolder& folder) {
  LibrarySystem system = ThisLibrarySystem(bin);
  system.facts = &FactsOf;
  if (one.system.empty()) return system;
  const bool isPe = one.system == "pe";
  LibraryParts program;
  program.exported = {"OfferedByHub"};
  const std::string bytes = isPe ? PeLibrary(program) : ElfLibrary(program);
  system.executable = folder.Write("HUB", bytes);
  system.loaded.clear();
  system.environmentFolders.clear();
  system.cache.clear();
  system.folders = {folder.Path()};
  if (isPe) system.folders.push_back(bin);
  system.ignoresCase = isPe;
  LibraryParts libc;
  libc.exported = {"printf"};
  folder.Write("libc", isPe ? PeLibrary(libc) : ElfLibrary(libc));
  return system;
}

/// A test of its own for each case, so that each has its own process: the frame initialises once.
class RuleCase : public testing::TestWithParam<std::size_t> {};

TEST_P(RuleCase, HasTheseFindings) {
  const ProductCase& one = Cases()[GetParam()];
  const TemporaryFolder folder;
  LayOutCase(one, TEV_GOOD_PRODUCT, TEV_FIXTURES, folder.Path());
  SetRunningModule(one.module);
  const FrameLibrary frame(TEV_FRAME);
  const auto place = FindProduct(folder.Path() / "bin", SystemNames());
  ASSERT_TRUE(place);
  const TemporaryFolder systemFolder;
  g_case = &one;
  g_folder = folder.Path().string();
  const LibrarySystem system = SystemOf(one, folder.Path() / "bin", systemFolder);
  const bool isOfLibraries = one.rule.compare(0, 4, "TEV4") == 0;
  const auto product =
      ReadProductWithFrame(*place, one.module, frame, isOfLibraries ? &system : nullptr);
  const std::string found = Shown(RunRules(AllRules(), *product));
  EXPECT_EQ(one.findings, found) << found;
}

/// "TEV101_portal_in_other_letters"
std::string NameOfCase(const testing::TestParamInfo<std::size_t>& info) {
  const ProductCase& one = Cases()[info.param];
  std::string name = one.rule + (one.isClean ? "_clean_" : "_bad_") + one.title;
  std::replace_if(
      name.begin(), name.end(),
      [](char c) { return std::isalnum(static_cast<unsigned char>(c)) == 0; }, '_');
  return name;
}

INSTANTIATE_TEST_SUITE_P(Each, RuleCase, testing::Range(std::size_t{0}, Cases().size()),
                         &NameOfCase);

TEST(RuleCases, EachRuleHasABadProductWithItsFindingAndANearMiss) {
  std::set<std::string> bad;
  std::set<std::string> clean;
  for (const ProductCase& one : Cases()) {
    if (one.isClean && one.findings.empty()) clean.insert(one.rule);
    const bool hasFinding = one.findings.find("[" + one.rule + "]") != std::string::npos;
    if (!one.isClean && hasFinding) bad.insert(one.rule);
  }
  std::set<std::string> rules;
  for (const Rule* rule : AllRules()) rules.insert(rule->id);
  EXPECT_EQ(rules, bad);
  EXPECT_EQ(rules, clean);
}

}  // namespace
