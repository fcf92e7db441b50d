#include "workbench/check/Rule.h"
#include "workbench/check/Words.h"

namespace {

void Check(const CheckedProduct& product, RuleFindings& findings) {
  for (const PluginEntry& entry : product.entries) {
    if (entry.node == nullptr || !entry.id.empty() || entry.description != nullptr) continue;
    RuleFinding finding;
    finding.place = PlaceOf(*entry.file, *entry.node, "ID");
    const bool isEmpty = entry.node->Attribute("ID") != nullptr;
    const std::string loss = entry.addon == nullptr
                                 ? "the frame refuses the product, and nothing starts"
                                 : "the addon " + Quoted(entry.addon->id) + " is skipped";
    finding.message = Tag(entry.node->name) + (isEmpty ? " with an empty ID" : " without an ID") +
                      ": its description would be " + entry.descriptionFile->name +
                      ", which does not exist: " + loss;
    if (entry.addon != nullptr) finding.plugin = entry.addon->id;
    finding.subject = entry.file->name;
    finding.refused = entry.addon == nullptr;
    findings.push_back(std::move(finding));
  }
}

}  // namespace

TEV_RULE(EntryWithoutID) = {
    "TEV214",
    Severity::kError,
    "An entry in a list of plugins has no ID",
    "The frame looks for the description of an entry without an ID as well, META_INFO/.xml. That "
    "it is missing makes Frame_Init fail when Product.xml or DeviceDrivers.xml has the entry, "
    "and the addon be skipped when an addon has it. Entries without an ID that only a second "
    "section makes are a finding of TEV113.",
    "<Plugin Version=\"2.7.1\"/> in Product.xml",
    "Give the entry its ID, or remove it.",
    &Check};
