#include "host/PluginHeads.h"

#include <filesystem>
#include <set>
#include <system_error>

#include "reference/os/LocalText.h"
#include "workbench/product/StartGraph.h"

namespace {

constexpr char kLibraryExtension[] = ".dll";

std::int64_t SizeOf(const std::string& file) {
  std::error_code error;
  const auto size = std::filesystem::file_size(PathFromLocal(file), error);
  return error ? -1 : static_cast<std::int64_t>(size);
}

PluginHead Head(const std::string& id, const char* kind, const std::string& version,
                const std::string& library) {
  PluginHead head;
  head.id = id;
  head.kind = kind;
  head.version = version;
  head.library = library;
  head.librarySize = SizeOf(library);
  return head;
}

}  // namespace

LocalNames SystemNames() {
  return {&PathFromLocal, &LocalFromPath};
}

std::vector<PluginHead> PluginHeads(const ProductModel& model, const std::string& bin) {
  const StartGraph graph = MakeStartGraph(model);
  std::vector<PluginHead> heads;
  std::set<std::string> known;
  const auto add = [&](PluginHead head) {
    if (!known.insert(head.id).second) return;
    const auto waits = graph.dependsOn.find(head.id);
    if (waits != graph.dependsOn.end()) head.dependsOn = waits->second;
    heads.push_back(std::move(head));
  };
  for (const PluginDescription& plugin : model.ServerPluginDescriptions) {
    add(Head(plugin.ID, "server", plugin.Version, plugin.Path + plugin.ID + kLibraryExtension));
  }
  for (const SubPlatformEntry& subPlatform : model.SubPlatforms) {
    add(Head(subPlatform.ID, "platform", subPlatform.Version,
             bin + subPlatform.ID + kLibraryExtension));
  }
  for (const PluginDescription& plugin : model.ExePluginDescriptions) {
    heads.push_back(Head(plugin.ID, "executable", plugin.Version, plugin.Path));
  }
  for (const PluginDescription& plugin : model.DriverPluginDescriptions) {
    heads.push_back(
        Head(plugin.ID, "driver", plugin.Version, plugin.Path + plugin.ID + kLibraryExtension));
  }
  return heads;
}
