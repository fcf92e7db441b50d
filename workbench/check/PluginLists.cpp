#include "workbench/check/PluginLists.h"

#include <algorithm>
#include <optional>
#include <set>

#include "workbench/check/VersionNumbers.h"
#include "workbench/check/Words.h"

namespace {

/// The entry whose description is the one that the frame keeps.
const PluginEntry* Winner(const PluginDescription& kept,
                          const std::vector<const PluginEntry*>& entries) {
  const auto is = [&](const PluginEntry* entry) {
    const std::string owner = entry->addon == nullptr ? std::string() : entry->addon->id;
    return entry->description->version == kept.Version &&
           entry->description->isDistributed == kept.IsDistributed && owner == kept.OwnerAddon;
  };
  const auto found = std::find_if(entries.begin(), entries.end(), is);
  return found == entries.end() ? nullptr : *found;
}

/// Whether the greater text of the two is the lower version.
bool TextOrderDiffers(const std::string& a, const std::string& b) {
  const std::optional<int> order = CompareVersions(a, b);
  return order && ((*order < 0 && a > b) || (*order > 0 && a < b));
}

}  // namespace

PluginList ListOf(const PluginEntry& entry) {
  if (entry.description == nullptr) return PluginList::kNone;
  const bool isServer = entry.type == "server";
  if (entry.addon != nullptr && !isServer) return PluginList::kDrivers;
  if (entry.description->type == PluginType::kExecutable) return PluginList::kExecutables;
  if (entry.description->type != PluginType::kLibrary) return PluginList::kNone;
  return isServer ? PluginList::kServers : PluginList::kDrivers;
}

const std::vector<PluginDescription>& KeptIn(const CheckedProduct& product, PluginList list) {
  static const std::vector<PluginDescription> none;
  switch (list) {
    case PluginList::kServers:
      return product.model.ServerPluginDescriptions;
    case PluginList::kExecutables:
      return product.model.ExePluginDescriptions;
    case PluginList::kDrivers:
      return product.model.DriverPluginDescriptions;
    case PluginList::kNone:
      break;
  }
  return none;
}

std::vector<const PluginEntry*> UsedEntries(const CheckedProduct& product) {
  std::vector<const PluginEntry*> used;
  for (const PluginEntry& entry : product.entries) {
    const bool isRead = entry.node != nullptr && !entry.id.empty();
    const bool isKept = entry.addon == nullptr || product.Merges(*entry.addon);
    if (isRead && isKept) used.push_back(&entry);
  }
  return used;
}

std::vector<const PluginEntry*> UsedDescriptions(const CheckedProduct& product) {
  std::set<const Description*> known;
  std::vector<const PluginEntry*> used;
  for (const PluginEntry* entry : UsedEntries(product)) {
    const Description* description = entry->description;
    if (description == nullptr || !description->file->HasContent()) continue;
    if (known.insert(description).second) used.push_back(entry);
  }
  return used;
}

std::string OwnerOf(const PluginEntry& entry) {
  return entry.addon == nullptr ? "the product" : "the addon " + Quoted(entry.addon->id);
}

Place PlaceOfID(const PluginEntry& entry) {
  return entry.node == nullptr ? PlaceOf(entry) : PlaceOf(*entry.file, *entry.node, "ID");
}

PluginsByID GroupByID(const CheckedProduct& product) {
  PluginsByID plugins;
  for (const PluginEntry* entry : UsedEntries(product)) {
    const PluginList list = ListOf(*entry);
    if (list == PluginList::kNone || entry->description->id.empty()) continue;
    const bool runsHere =
        product.runningModule != kDistributedModule || entry->description->isDistributed;
    if (runsHere) plugins[{list, entry->description->id}].entries.push_back(entry);
  }
  for (const PluginList list :
       {PluginList::kServers, PluginList::kExecutables, PluginList::kDrivers}) {
    for (const PluginDescription& kept : KeptIn(product, list)) {
      const auto found = plugins.find({list, kept.ID});
      if (found != plugins.end()) found->second.winner = Winner(kept, found->second.entries);
    }
  }
  return plugins;
}

Win WinOver(const PluginEntry& winner, const PluginEntry& loser) {
  const std::string& version = winner.description->version;
  const std::string& other = loser.description->version;
  if (TextOrderDiffers(version, other)) return Win::kByTextOnly;
  const bool isGreater = CompareVersions(version, other).value_or(0) > 0;
  const bool replaces = winner.addon != nullptr && loser.addon == nullptr && isGreater;
  if (replaces) return Win::kAddonReplaces;
  const bool isCopy = winner.addon == loser.addon && winner.id != loser.id;
  return isCopy ? Win::kOfOneOwner : Win::kOther;
}

std::vector<const PluginEntry*> Losers(const SameID& same) {
  std::vector<const PluginEntry*> losers;
  if (same.winner == nullptr) return losers;
  std::set<const Description*> known = {same.winner->description};
  for (const PluginEntry* entry : same.entries) {
    if (known.insert(entry->description).second) losers.push_back(entry);
  }
  return losers;
}
