#include <set>
#include <string>
#include <vector>

#include "workbench/check/PluginLists.h"
#include "workbench/check/Rule.h"
#include "workbench/check/Words.h"

namespace {

std::string Remaining(const CheckedProduct& product) {
  std::size_t count = 0;
  for (const PluginList list :
       {PluginList::kServers, PluginList::kExecutables, PluginList::kDrivers}) {
    count += KeptIn(product, list).size();
  }
  return count == 0 ? "nothing remains"
                    : Counted(count, "plugin") + " remain" + (count == 1 ? "s" : "");
}

void Check(const CheckedProduct& product, RuleFindings& findings) {
  if (product.runningModule != kDistributedModule) return;
  std::set<std::string> dropped;
  for (const PluginEntry* entry : UsedDescriptions(product)) {
    const Description& description = *entry->description;
    const bool isDropped = !description.isDistributed && !description.id.empty() &&
                           ListOf(*entry) != PluginList::kNone;
    if (isDropped && product.Kept(description.id) == nullptr) dropped.insert(description.id);
  }
  if (dropped.empty()) return;
  RuleFinding finding;
  const CheckedFile& file = product.File(FileKind::kProduct);
  finding.place = PlaceAt(file, "Plugins");
  finding.message =
      "this is the distributed module, which keeps only plugins with <IsDistributed> 1: " +
      QuotedList({dropped.begin(), dropped.end()}) + (dropped.size() == 1 ? " is" : " are") +
      " dropped, " + Remaining(product);
  finding.subject = "IsDistributed";
  findings.push_back(std::move(finding));
}

}  // namespace

TEV_RULE(DroppedByModule) = {
    "TEV219",
    Severity::kNote,
    "The distributed module drops plugins",
    "When the running module is 2, the frame drops every plugin, program and driver whose "
    "description does not have <IsDistributed>1</IsDistributed>, and starts the rest. Sub "
    "platforms are kept. Dependencies on what was dropped are findings of TEV302.",
    "<IsDistributed>true</IsDistributed>, which reads as 0",
    "Nothing, if these plugins belong to the other module; else write 1.",
    &Check};
