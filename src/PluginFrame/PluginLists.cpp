#include "src/PluginFrame/PluginLists.h"

#include <algorithm>
#include <utility>

#include "src/model/PluginDescription.h"

namespace PluginFrame {

namespace {

template <typename T>
void Append(std::vector<T>& list, const std::vector<T>& more) {
  list.insert(list.end(), more.begin(), more.end());
}

/// Sorts `list` by ID, and by falling version within an ID, and keeps the first entry of each ID
/// for which `wanted` holds. Texts are compared byte by byte.
template <typename Entry, typename Wanted>
void Trim(std::vector<Entry>& list, Wanted wanted) {
  std::stable_sort(list.begin(), list.end(), [](const Entry& left, const Entry& right) {
    const int order = left.ID.compare(right.ID);
    return order != 0 ? order < 0 : left.Version > right.Version;
  });
  std::vector<Entry> kept;
  std::string lastID;  // empty before the first, so that an entry without an ID is never kept
  for (Entry& entry : list) {
    if (!wanted(entry) || entry.ID == lastID) continue;
    lastID = entry.ID;
    kept.push_back(std::move(entry));
  }
  list = std::move(kept);
}

void AppendVersions(std::string& text, const std::vector<PluginDescription>& plugins) {
  for (const PluginDescription& plugin : plugins) text += plugin.ID + ":" + plugin.Version + ";";
}

}  // namespace

void AddInstalledAddon(ProductModel& model, const AddonModel& addon) {
  Append(model.ServerPluginDescriptions, addon.ServerPluginDescriptions);
  Append(model.ExePluginDescriptions, addon.ExePluginDescriptions);
  Append(model.DriverPluginDescriptions, addon.DriverPluginDescriptions);
  Append(model.AddonServices, addon.Services);
  Append(model.Plugins, addon.Plugins);
}

void TrimPluginLists(ProductModel& model, bool distributedOnly) {
  const auto runsHere = [distributedOnly](const PluginDescription& plugin) {
    return plugin.IsDistributed || !distributedOnly;
  };
  Trim(model.ServerPluginDescriptions, runsHere);
  Trim(model.ExePluginDescriptions, runsHere);
  Trim(model.DriverPluginDescriptions, runsHere);
  Trim(model.Plugins, [](const ProductPluginEntry&) { return true; });
}

std::string PluginVersionsText(const ProductModel& model) {
  std::string text;
  AppendVersions(text, model.ServerPluginDescriptions);
  AppendVersions(text, model.ExePluginDescriptions);
  return text;
}

std::string DriverVersionsText(const ProductModel& model) {
  std::string text;
  AppendVersions(text, model.DriverPluginDescriptions);
  return text;
}

std::string PluginsToInitText(const ProductModel& model) {
  std::string text = "Plugins need to init:\n";
  int count = 0;
  const auto add = [&](const std::string& id) {
    text += "[" + id + "] ";
    if (++count % 5 == 0) text += "\n";
  };
  for (const SubPlatformEntry& subPlatform : model.SubPlatforms) add(subPlatform.ID);
  for (const PluginDescription& plugin : model.ServerPluginDescriptions) add(plugin.ID);
  for (const PluginDescription& plugin : model.ExePluginDescriptions) add(plugin.ID);
  // Removes " \n" after a full last line. Without items it removes the heading's ":\n", which
  // readers of the table rely on.
  if (count % 5 == 0) text.resize(text.size() - 2);
  return text;
}

}  // namespace PluginFrame
