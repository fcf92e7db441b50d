#include <map>
#include <set>
#include <string>

#include "workbench/check/PluginLists.h"
#include "workbench/check/Rule.h"
#include "workbench/check/Words.h"

namespace {

void Check(const CheckedProduct& product, RuleFindings& findings) {
  std::map<std::string, const SubPlatform*> first;
  std::set<std::string> servers;
  for (const PluginDescription& plugin : KeptIn(product, PluginList::kServers)) {
    servers.insert(plugin.ID);
  }
  const CheckedFile& file = product.File(FileKind::kProduct);
  for (const SubPlatform& subPlatform : product.subPlatforms) {
    const std::string& id = subPlatform.id;
    if (subPlatform.node == nullptr || id.empty()) continue;
    const SubPlatform& other = *first.emplace(id, &subPlatform).first->second;
    const bool isPlugin = servers.count(id) != 0;
    if (&other == &subPlatform && !isPlugin) continue;
    RuleFinding finding;
    finding.place = PlaceOf(file, *subPlatform.node, "ID");
    const Description* plugin = isPlugin ? product.Kept(id) : nullptr;
    if (plugin != nullptr) {
      finding.message = Quoted(id) +
                        " is a sub platform here and also a plugin: the frame starts it once, as "
                        "the plugin with its dependencies; this entry changes nothing";
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
    "for the sub platforms. A second one of the same ID is not started, and both would have the "
    "same library, ID.dll.",
    R"(<SubPlatform ID="alarm.server"/> beside <Plugin ID="alarm.server"/>)",
    "Remove the entry that is not meant, or correct its ID.",
    &Check};
