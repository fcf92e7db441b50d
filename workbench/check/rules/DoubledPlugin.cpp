#include <algorithm>
#include <map>
#include <string>
#include <utility>

#include "workbench/check/DroppedPlugin.h"
#include "workbench/check/PluginLists.h"
#include "workbench/check/Rule.h"
#include "workbench/check/Words.h"

namespace {

void AddDropped(const PluginEntry& winner, const PluginEntry& loser, RuleFindings& findings) {
  RuleFinding finding = DroppedFinding(winner, loser);
  if (loser.addon != nullptr && winner.addon == nullptr) {
    finding.message += "; an addon replaces a plugin only with a greater version";
  } else if (loser.addon == nullptr && loser.description->version != winner.description->version) {
    finding.message += "; as numbers they cannot be compared: see that the newer one is kept";
  }
  findings.push_back(std::move(finding));
}

/// A program and a library of one ID; neither is dropped.
void AddBoth(const PluginEntry& program, const PluginEntry& library, RuleFindings& findings) {
  const std::string& id = program.description->id;
  RuleFinding finding;
  finding.place = PlaceAt(*program.description->file, "ID");
  finding.message = "a program and a library have the ID " + Quoted(id) +
                    ": the frame keeps both, but a dependency on " + Quoted(id) +
                    " never means the program";
  finding.related.push_back(
      {PlaceAt(*library.description->file, "ID"), "this one describes the library"});
  finding.plugin = id;
  finding.subject = program.description->folder;
  findings.push_back(std::move(finding));
}

/// Entries of one file that name the same description.
void CheckEntries(const CheckedProduct& product, RuleFindings& findings) {
  std::map<std::pair<const CheckedFile*, std::string>, const PluginEntry*> first;
  for (const PluginEntry* entry : UsedEntries(product)) {
    const PluginEntry& other =
        *first.emplace(std::make_pair(entry->file, entry->id), entry).first->second;
    if (other.node == entry->node) continue;  // also when its addon is installed twice
    RuleFinding finding;
    finding.place = PlaceOfID(*entry);
    finding.message = Quoted(entry->id) + " is listed again: the frame keeps it once";
    if (entry->version != other.version) {
      finding.message += ", and hands over " + Quoted(std::max(entry->version, other.version)) +
                         ", the greater text of the two versions";
    }
    finding.related.push_back({PlaceOfID(other), "listed here first"});
    finding.plugin = entry->id;
    finding.subject = entry->file->name;
    findings.push_back(std::move(finding));
  }
}

void Check(const CheckedProduct& product, RuleFindings& findings) {
  CheckEntries(product, findings);
  const PluginsByID plugins = GroupByID(product);
  for (const auto& [key, same] : plugins) {
    for (const PluginEntry* loser : Losers(same)) {
      if (WinOver(*same.winner, *loser) == Win::kOther) AddDropped(*same.winner, *loser, findings);
    }
    const auto& [list, id] = key;
    if (list != PluginList::kExecutables || same.winner == nullptr) continue;
    for (const PluginList libraries : {PluginList::kServers, PluginList::kDrivers}) {
      const auto found = plugins.find({libraries, id});
      const bool isBoth = found != plugins.end() && found->second.winner != nullptr;
      if (isBoth) AddBoth(*same.winner, *found->second.winner, findings);
    }
  }
}

}  // namespace

TEV_RULE(DoubledPlugin) = {
    "TEV207",
    Severity::kWarning,
    "The product and an addon have a plugin of one ID, or one plugin is listed twice",
    "Of the server plugins, of the executable plugins and of the drivers with one ID the frame "
    "keeps one each: the one whose version is the greatest text, compared byte by byte, and of "
    "equal ones the one that is read first: the product's, then those of the addons in the order "
    "of ProductAddons.xml, then those of the other installed addons. The others are dropped "
    "without a message. In a distributed module, plugins that are not distributed are dropped "
    "before. A version that loses although it is greater by numbers is a finding of TEV208, two "
    "plugins of the product with one ID are one of TEV221; an addon that replaces a plugin of the "
    "product is only a note, TEV220.",
    "<Plugin ID=\"alarm.server\"/> twice in <Plugins>",
    "Remove one of the two, or give each plugin an ID of its own.",
    &Check};
