#include <map>
#include <string>

#include "workbench/check/PluginLists.h"
#include "workbench/check/Rule.h"
#include "workbench/check/Words.h"

namespace {

/// The kept plugins' IDs, by their list; the first of a server, a program and a driver of one ID.
std::map<std::string, PluginList> Plugins(const CheckedProduct& product) {
  std::map<std::string, PluginList> plugins;
  for (const PluginList list :
       {PluginList::kServers, PluginList::kExecutables, PluginList::kDrivers}) {
    for (const PluginDescription& plugin : KeptIn(product, list)) plugins.emplace(plugin.ID, list);
  }
  return plugins;
}

/// What it means that the sub platform has the ID of a plugin of that list.
std::string Message(const std::string& id, PluginList list) {
  const std::string same = Quoted(id) + " is a sub platform here and also ";
  switch (list) {
    case PluginList::kDrivers:
      return same +
             "a driver: the frame loads its library and calls its Init, and hands it to the "
             "platform as a driver too";
    case PluginList::kExecutables:
      return same + "a program: the frame loads " + id +
             ".dll for this entry, and leaves the program to the platform";
    default:
      return same +
             "a plugin: the frame starts it once, as the plugin with its dependencies; this "
             "entry changes nothing";
  }
}

void Check(const CheckedProduct& product, RuleFindings& findings) {
  std::map<std::string, const SubPlatform*> first;
  const std::map<std::string, PluginList> plugins = Plugins(product);
  const CheckedFile& file = product.File(FileKind::kProduct);
  for (const SubPlatform& subPlatform : product.subPlatforms) {
    const std::string& id = subPlatform.id;
    if (subPlatform.node == nullptr || id.empty()) continue;
    const SubPlatform& other = *first.emplace(id, &subPlatform).first->second;
    const auto same = plugins.find(id);
    if (&other == &subPlatform && same == plugins.end()) continue;
    RuleFinding finding;
    finding.place = PlaceOf(file, *subPlatform.node, "ID");
    const Description* plugin = same == plugins.end() ? nullptr : product.Kept(id);
    if (plugin != nullptr) {
      finding.message = Message(id, same->second);
      finding.related.push_back({PlaceOfID(*plugin->entries.front()), "listed as a plugin"});
    } else {
      finding.message = Quoted(id) + " is listed again: the frame starts it once";
      finding.related.push_back({PlaceOf(file, *other.node, "ID"), "listed here first"});
    }
    finding.plugin = id;
    finding.subject = "SubPlatform";
    findings.push_back(std::move(finding));
  }
}

}  // namespace

TEV_RULE(DoubledSubPlatform) = {
    "TEV212",
    Severity::kWarning,
    "A sub platform has the ID of a plugin or of another sub platform",
    "The frame makes one record for each ID that it starts: for the server plugins first, then "
    "for the sub platforms, each with the library ID.dll. A second one of the same ID is not "
    "started. A driver or a program of the same ID is not started by the frame, but as a sub "
    "platform its library is loaded all the same.",
    R"(<SubPlatform ID="alarm.server"/> beside <Plugin ID="alarm.server"/>)",
    "Remove the entry that is not meant, or correct its ID.",
    &Check};
