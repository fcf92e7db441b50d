#include "workbench/check/PluginLists.h"
#include "workbench/check/Rule.h"
#include "workbench/check/Words.h"

namespace {

void Check(const CheckedProduct& product, RuleFindings& findings) {
  for (const auto& [key, same] : GroupByID(product)) {
    for (const PluginEntry* loser : Losers(same)) {
      if (WinOver(*same.winner, *loser) != Win::kByTextOnly) continue;
      const Description& dropped = *loser->description;
      const Description& kept = *same.winner->description;
      RuleFinding finding;
      finding.place = PlaceAt(*dropped.file, "Version");
      finding.message = Quoted(dropped.id) + " of " + OwnerOf(*loser) + ", version " +
                        Quoted(dropped.version) + ", is dropped for that of " +
                        OwnerOf(*same.winner) + ", version " + Quoted(kept.version) +
                        ": versions are compared byte by byte, and " + Quoted(kept.version) +
                        " is the greater text, although the lower version";
      finding.related.push_back({PlaceAt(*kept.file, "Version"), "this one is kept"});
      finding.plugin = dropped.id;
      finding.subject = dropped.folder;
      findings.push_back(std::move(finding));
    }
  }
}

}  // namespace

TEV_RULE(VersionAsText) = {
    "TEV208",
    Severity::kError,
    "The older of two plugins is kept, because versions are compared as texts",
    "Of plugins with one ID the frame keeps the one with the greatest version, but it compares "
    "versions byte by byte: \"1.9\" is greater than \"1.10\", since \"9\" is greater than \"1\". "
    "So a plugin that was made to replace an older one can lose against it, without a message.",
    "<Version>2.9.0</Version> in the product, <Version>2.10.0</Version> in an addon",
    "Give the plugin that is to be kept a version that is the greater text, for example one with "
    "a greater first number, or the same number of digits in each part.",
    &Check};
