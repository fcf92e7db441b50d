#include "workbench/check/PluginLists.h"
#include "workbench/check/Rule.h"
#include "workbench/check/Words.h"

namespace {

void Check(const CheckedProduct& product, RuleFindings& findings) {
  for (const auto& [key, same] : GroupByID(product)) {
    for (const PluginEntry* loser : Losers(same)) {
      if (WinOver(*same.winner, *loser) != Win::kAddonReplaces) continue;
      const Description& kept = *same.winner->description;
      const Description& dropped = *loser->description;
      RuleFinding finding;
      finding.place = PlaceOfID(*same.winner);
      finding.message = OwnerOf(*same.winner) + " replaces " + Quoted(kept.id) +
                        " of the product: " + "the frame keeps its version " +
                        Quoted(kept.version) + " and drops " + Quoted(dropped.version);
      finding.related.push_back({PlaceAt(*dropped.file, "Version"), "this one is dropped"});
      finding.plugin = kept.id;
      finding.subject = same.winner->addon->id;
      findings.push_back(std::move(finding));
    }
  }
}

}  // namespace

TEV_RULE(ReplacedByAddon) = {
    "TEV220",
    Severity::kNote,
    "An addon replaces a plugin of the product",
    "An addon can bring another description with the ID of one of the product's plugins, in a "
    "folder of another name. When its version is the greater text, the frame keeps the addon's "
    "description and drops the product's. Both have the library ID.dll.",
    "META_INFO/map.server.parking/map.server.parking.xml with <ID>map.server</ID>",
    "Nothing, if the addon is meant to replace the plugin.",
    &Check};
