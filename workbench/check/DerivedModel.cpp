#include "workbench/check/DerivedModel.h"

#include <algorithm>
#include <vector>

#include "workbench/check/CheckedProduct.h"

namespace {

PluginDescription DescriptionOf(const Description& description) {
  PluginDescription plugin;
  plugin.Type = description.type;
  plugin.ID = description.id;
  plugin.Version = description.version;
  plugin.IsDistributed = description.isDistributed;
  for (const Dependency& dependency : description.dependencies) {
    plugin.Dependencies.push_back(
        {dependency.id, dependency.version, dependency.category, dependency.dependentType});
  }
  return plugin;
}

/// Keeps one description for each ID, the one with the greatest text as its version.
void Trim(std::vector<PluginDescription>& plugins, bool distributedOnly) {
  std::stable_sort(plugins.begin(), plugins.end(),
                   [](const PluginDescription& a, const PluginDescription& b) {
                     return a.ID != b.ID ? a.ID < b.ID : a.Version > b.Version;
                   });
  std::string last;
  const auto isDropped = [&](const PluginDescription& plugin) {
    if ((distributedOnly && !plugin.IsDistributed) || plugin.ID == last) return true;
    last = plugin.ID;
    return false;
  };
  std::vector<PluginDescription> kept;
  for (PluginDescription& plugin : plugins) {
    if (!isDropped(plugin)) kept.push_back(std::move(plugin));
  }
  plugins = std::move(kept);
}

}  // namespace

ProductModel DeriveModel(const CheckedProduct& product) {
  ProductModel model;
  for (const PluginEntry& entry : product.entries) {
    if (entry.addon != nullptr || entry.description == nullptr) continue;
    const Description& description = *entry.description;
    if (description.type == PluginType::kExecutable) {
      model.ExePluginDescriptions.push_back(DescriptionOf(description));
    } else if (description.type == PluginType::kLibrary) {
      (entry.type == "server" ? model.ServerPluginDescriptions : model.DriverPluginDescriptions)
          .push_back(DescriptionOf(description));
    }
  }
  const bool distributedOnly = product.runningModule == kDistributedModule;
  Trim(model.ServerPluginDescriptions, distributedOnly);
  Trim(model.ExePluginDescriptions, distributedOnly);
  Trim(model.DriverPluginDescriptions, distributedOnly);
  for (const SubPlatform& subPlatform : product.subPlatforms) {
    model.SubPlatforms.push_back({subPlatform.id, subPlatform.version});
  }
  const CheckedFile& file = product.File(FileKind::kProduct);
  if (file.HasContent()) {
    model.Product = TextAt(file.tree.root, "Product");
    model.Version = TextAt(file.tree.root, "Version");
  }
  return model;
}
