#include "src/PluginFrame/PlatformHandover.h"

#include <cstdint>
#include <memory>
#include <utility>
#include <vector>

#include "src/model/PluginDescription.h"
#include "src/private/DottedText.h"

namespace PluginFrame {

namespace {

constexpr std::int32_t kMode = 2;

ExecutableInfo MakeExecutableInfo(const PluginDescription& plugin) {
  ExecutableInfo info;
  info.ID = plugin.ID;
  info.Name = plugin.Name;
  info.Path = plugin.Path;
  info.Version = plugin.Version;
  for (const PluginDependency& dependency : plugin.Dependencies) {
    if (dependency.Category == DependencyCategory::kPlatform) {
      info.PlatformVersion = dependency.Version;  // the last one wins
      continue;
    }
    std::string group = GroupNameOf(dependency.ID);
    if (!group.empty()) info.GroupNames.push_back(std::move(group));
  }
  return info;
}

std::shared_ptr<CPluginInfo> MakePluginInfo(const PluginDescription& plugin) {
  auto info = std::make_shared<CPluginInfo>();
  info->SetVal_plugin_id(plugin.ID);
  info->SetVal_plugin_name(plugin.Name);
  info->SetVal_source(plugin.Source);
  info->SetVal_version(plugin.Version);
  info->SetVal_type(plugin.Type);
  info->SetVal_is_load(false);
  return info;
}

}  // namespace

PlatformInfo MakePlatformInfo(const ProductModel& model, const std::string& exeDirectory) {
  PlatformInfo info;
  info.Mode = kMode;
  info.Edition = model.EditionConfig;  // even when empty
  info.PlatformExePath = exeDirectory + "KPX_Exe.exe";
  for (const PluginDescription& plugin : model.ExePluginDescriptions) {
    info.Executables[plugin.ID] = MakeExecutableInfo(plugin);
  }
  return info;
}

PluginInfoMap MakePluginInfos(const ProductModel& model) {
  PluginInfoMap infos;
  const auto add = [&infos](const std::vector<PluginDescription>& plugins) {
    for (const PluginDescription& plugin : plugins) {
      infos.emplace(plugin.ID, MakePluginInfo(plugin));
    }
  };
  add(model.ServerPluginDescriptions);
  add(model.ExePluginDescriptions);
  return infos;
}

}  // namespace PluginFrame
