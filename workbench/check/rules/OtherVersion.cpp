#include <map>
#include <set>
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

/// The plugins that an addon lists with the version of their description, merged or not: an addon
/// brings the description too, and the product's entry stays as it was.
std::set<std::string> ListedByAddons(const CheckedProduct& product) {
  std::set<std::string> ids;
  for (const PluginEntry& entry : product.entries) {
    const bool isAddons = entry.addon != nullptr && entry.node != nullptr;
    if (!isAddons || entry.description == nullptr) continue;
    if (WithoutBlanks(entry.version) == WithoutBlanks(entry.description->version)) {
      ids.insert(entry.id);
    }
  }
  return ids;
}

void Check(const CheckedProduct& product, RuleFindings& findings) {
  const std::set<std::string> listed = ListedByAddons(product);
  for (const auto& [id, entry] : HandedOver(product)) {
    const Description* description = entry->description;
    if (description == nullptr || !description->file->HasContent()) continue;
    if (listed.count(id) != 0) continue;
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
    "ID the one with the greatest version is handed over; only that one is compared, and not if an "
    "installed addon lists the plugin with the version of the description.",
    R"(<Plugin ID="alarm.server" Version="2.7.0"/>, described with <Version>2.7.1</Version>)",
    "Give the entry the version of the description.",
    &Check};
