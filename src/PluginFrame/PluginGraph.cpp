#include "src/PluginFrame/PluginGraph.h"

#include <algorithm>
#include <memory>
#include <utility>

#include "src/model/PluginDescription.h"

namespace PluginFrame {

namespace {

constexpr int kFirstKeyNumber = 100;

/// The key of a name; empty for a name without one.
const std::string& KeyOf(const PluginKeys& keys, const std::string& name) {
  static const std::string none;
  const auto key = keys.find(name);
  return key == keys.end() ? none : key->second;
}

std::shared_ptr<FramePluginData> FindShared(const PluginDataMap& data, const PluginKeys& keys,
                                            const std::string& name) {
  const auto found = data.find(KeyOf(keys, name));
  return found == data.end() ? nullptr : found->second;
}

bool OrdersTheStart(const PluginDependency& dependency) {
  const bool onPlugin = dependency.Category == DependencyCategory::kPlugin ||
                        dependency.Category == DependencyCategory::kOther;
  return onPlugin && dependency.DependentType == 1;
}

}  // namespace

void AddPluginKeys(PluginKeys& keys, const ProductModel& model) {
  int number = kFirstKeyNumber;
  const auto add = [&](const std::string& name) {
    keys.emplace(name, std::to_string(number++) + "_" + name);
  };
  for (const PluginDescription& plugin : model.ServerPluginDescriptions) add(plugin.ID);
  for (const SubPlatformEntry& subPlatform : model.SubPlatforms) add(subPlatform.ID);
}

void AddPluginData(PluginDataMap& data, const PluginKeys& keys, const ProductModel& model) {
  const auto add = [&](const std::string& name) {
    const std::string& key = KeyOf(keys, name);
    if (key.empty()) return;
    auto plugin = std::make_shared<FramePluginData>();
    plugin->name = name;
    data.emplace(key, std::move(plugin));
  };
  for (const PluginDescription& plugin : model.ServerPluginDescriptions) add(plugin.ID);
  for (const SubPlatformEntry& subPlatform : model.SubPlatforms) add(subPlatform.ID);

  for (const PluginDescription& description : model.ServerPluginDescriptions) {
    const auto plugin = FindShared(data, keys, description.ID);
    if (!plugin) continue;
    for (const PluginDependency& dependency : description.Dependencies) {
      if (!OrdersTheStart(dependency)) continue;
      const auto other = FindShared(data, keys, dependency.ID);
      if (!other) continue;
      plugin->depends_on.push_back(other);
      other->depended_by.push_back(plugin);
    }
  }
}

FramePluginData* FindPluginData(const PluginDataMap& data, const PluginKeys& keys,
                                const std::string& name) {
  return FindShared(data, keys, name).get();
}

bool ReadyToStart(const FramePluginData& plugin) {
  return std::all_of(plugin.depends_on.begin(), plugin.depends_on.end(),
                     [](const auto& other) { return other->state != kPending; });
}

bool ReadyToStop(const FramePluginData& plugin) {
  return std::all_of(plugin.depended_by.begin(), plugin.depended_by.end(),
                     [](const auto& other) { return IsStopped(other->state); });
}

void DisconnectPluginData(PluginDataMap& data) {
  for (auto& entry : data) {
    entry.second->depends_on.clear();
    entry.second->depended_by.clear();
  }
}

}  // namespace PluginFrame
