#include "workbench/check/PluginLists.h"
#include "workbench/check/Rule.h"
#include "workbench/check/Words.h"

namespace {

void Check(const CheckedProduct& product, RuleFindings& findings) {
  for (const PluginEntry* entry : UsedDescriptions(product)) {
    const Description& description = *entry->description;
    if (!description.id.empty()) continue;
    RuleFinding finding;
    finding.place = PlaceAt(*description.file, "ID");
    const bool isEmpty = !Select(description.file->tree.root, "ID").empty();
    finding.message = std::string(isEmpty ? "<ID> is empty" : "<Plugin> without <ID>") +
                      ": the frame drops the plugin, without a message; " + Quoted(entry->id) +
                      " was probably meant";
    finding.related.push_back({PlaceOfID(*entry), "listed here"});
    finding.plugin = entry->id;
    finding.subject = "ID";
    findings.push_back(std::move(finding));
  }
}

}  // namespace

TEV_RULE(DescriptionWithoutID) = {
    "TEV204",
    Severity::kError,
    "A description has no ID",
    "The frame reads the ID of a plugin from its description, not from its entry or its folder. "
    "It drops plugins without an ID when it sorts its lists: the plugin never starts, and "
    "nothing is logged.",
    "<Plugin><Type>2</Type><Version>2.7.1</Version></Plugin>",
    "Add <ID> with the ID by which the plugin is listed.",
    &Check};
