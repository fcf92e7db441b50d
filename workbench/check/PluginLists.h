#pragma once

#include <map>
#include <string>
#include <utility>
#include <vector>

#include "workbench/check/CheckedProduct.h"
#include "workbench/check/RuleFinding.h"

// The frame's three lists of plugins, seen from the entries that fill them.

enum class PluginList {
  kNone,         // the frame drops the plugin
  kServers,      // libraries that the frame starts
  kExecutables,  // programs that the local-procedure-call framework starts
  kDrivers       // libraries that the platform starts
};

/// The list into which the frame puts the plugin of an entry before it trims the lists. Where the
/// product's own entries go by the description's type first, an addon's go by their Category.
PluginList ListOf(const PluginEntry& entry);

/// The list's plugins as the frame keeps them.
const std::vector<PluginDescription>& KeptIn(const CheckedProduct& product, PluginList list);

/// The entries that the frame uses: with an ID, and of an addon only when the frame merges it.
std::vector<const PluginEntry*> UsedEntries(const CheckedProduct& product);

/// Those with a description that can be read, each description once.
std::vector<const PluginEntry*> UsedDescriptions(const CheckedProduct& product);

/// "the product" or `the addon "Parking"`.
std::string OwnerOf(const PluginEntry& entry);

/// Where the ID of an entry stands.
Place PlaceOfID(const PluginEntry& entry);

/// Plugins of one ID in one list, in the order in which the frame reads them.
struct SameID {
  std::vector<const PluginEntry*> entries;  // each with a description
  const PluginEntry* winner = nullptr;      // whose description the frame keeps; null for none
};

/// By list and by the ID in their description, all plugins that the running module keeps.
using PluginsByID = std::map<std::pair<PluginList, std::string>, SameID>;

PluginsByID GroupByID(const CheckedProduct& product);

/// Why one of two plugins with one ID is kept.
enum class Win {
  kAddonReplaces,  // an addon brings a greater version than the product has, as text and by numbers
  kByTextOnly,     // its version is the greater text, but the smaller by numbers
  kOfOneOwner,     // two entries of the product, or of one addon, lead to one ID
  kOther
};

Win WinOver(const PluginEntry& winner, const PluginEntry& loser);

/// The plugins of `same` that are dropped for the winner, each description once.
std::vector<const PluginEntry*> Losers(const SameID& same);
