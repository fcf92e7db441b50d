#include <algorithm>
#include <map>
#include <string>
#include <utility>

#include "workbench/check/PluginLists.h"
#include "workbench/check/Rule.h"
#include "workbench/check/Words.h"

namespace {

std::string WhyKept(const PluginEntry& winner, const PluginEntry& loser) {
  const std::string& version = winner.description->version;
  const std::string& other = loser.description->version;
  if (version == other) {
    return "both have the version " + Quoted(version) + " and that one is read first";
  }
  return "its version " + Quoted(version) + " is greater, as text, than " + Quoted(other);
}

/// What was probably meant.
std::string Meant(const PluginEntry& winner, const PluginEntry& loser) {
  if (loser.addon != nullptr && winner.addon == nullptr) {
    return "; an addon replaces a plugin only with a greater version";
  }
  const std::string& id = loser.description->id;
  const bool isCopied = winner.addon == nullptr && (loser.id == id) != (winner.id == id);
  if (!isCopied) return std::string();
  const PluginEntry& copy = loser.id == id ? winner : loser;
  return "; the <ID> in " + copy.description->file->readName + " was probably meant to be " +
         Quoted(copy.id);
}

void AddDropped(const PluginEntry& winner, const PluginEntry& loser, RuleFindings& findings) {
  const Description& description = *loser.description;
  const std::string& kept = winner.description->file->readName;
  RuleFinding finding;
  finding.place = PlaceAt(*description.file, "ID");
  finding.message = "two plugins have the ID " + Quoted(description.id) +
                    ": the frame drops this one and keeps that of " + kept + ", since " +
                    WhyKept(winner, loser) + Meant(winner, loser);
  finding.related.push_back({PlaceAt(*winner.description->file, "ID"), "this one is kept"});
  finding.plugin = description.id;
  finding.subject = description.folder;
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
    "Two plugins have one ID, or one is listed twice",
    "Of the server plugins, of the executable plugins and of the drivers with one ID the frame "
    "keeps one each: the one whose version is the greatest text, compared byte by byte, and of "
    "equal ones the one that is read first: the product's, then those of the addons in the order "
    "of ProductAddons.xml. The others are dropped without a message. A version that loses "
    "although it is greater by numbers is a finding of TEV208; an addon that replaces a plugin "
    "of the product is only a note, TEV220.",
    "META_INFO/backup.server/backup.server.xml, copied from alarm.server.xml with its <ID>",
    "Give each plugin an ID of its own, or remove one of the two.",
    &Check};
