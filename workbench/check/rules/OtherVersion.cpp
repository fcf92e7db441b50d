#include <map>
#include <string>

#include "workbench/check/PluginLists.h"
#include "workbench/check/Rule.h"
#include "workbench/check/Words.h"

namespace {

/// `text` without blanks and line breaks at its ends.
std::string WithoutBlanks(const std::string& text) {
  constexpr char kBlanks[] = " \t\r\n";
  const std::size_t begin = text.find_first_not_of(kBlanks);
  if (begin == std::string::npos) return std::string();
  return text.substr(begin, text.find_last_not_of(kBlanks) + 1 - begin);
}

/// For each ID in a list, the entry that the frame hands over: the one with the greatest version.
std::map<std::string, const PluginEntry*> HandedOver(const CheckedProduct& product) {
  std::map<std::string, const PluginEntry*> entries;
  for (const PluginEntry* entry : UsedEntries(product)) {
    const PluginEntry*& kept = entries.emplace(entry->id, entry).first->second;
    if (entry->version > kept->version) kept = entry;
  }
  return entries;
}

void Check(const CheckedProduct& product, RuleFindings& findings) {
  for (const auto& [id, entry] : HandedOver(product)) {
    const Description* description = entry->description;
    if (description == nullptr || !description->file->HasContent()) continue;
    const std::string version = WithoutBlanks(entry->version);  // TEV121 reports the blanks
    if (version.empty() || version == WithoutBlanks(description->version)) continue;
    RuleFinding finding;
    finding.place = PlaceOf(*entry->file, *entry->node, "Version");
    const std::string described = description->version.empty()
                                      ? "its description has no version"
                                      : "its description has " + Quoted(description->version);
    finding.message = Quoted(id) + " is listed with the version " + Quoted(entry->version) +
                      ", but " + described +
                      ": the frame goes by the description; the entry's version is only "
                      "handed over to the platform";
    finding.related.push_back({PlaceAt(*description->file, "Version"), "the description"});
    finding.plugin = id;
    finding.subject = "Version";
    findings.push_back(std::move(finding));
  }
}

}  // namespace

TEV_RULE(OtherVersion) = {
    "TEV217",
    Severity::kNote,
    "A plugin is listed with another version than its description has",
    "Which of several plugins with one ID is kept, and which version the log and the platform's "
    "table of plugins have, is decided by the <Version> of the description. The version of the "
    "entry is handed over to the platform and used for nothing else. Of several entries with one "
    "ID the one with the greatest version is handed over; only that one is compared.",
    R"(<Plugin ID="alarm.server" Version="2.7.0"/>, described with <Version>2.7.1</Version>)",
    "Give the entry the version of the description.",
    &Check};
