#include <cstdlib>
#include <string>

#include "workbench/check/Addons.h"
#include "workbench/check/Rule.h"
#include "workbench/check/Words.h"

namespace {

constexpr int kReplaces = 3;

void Report(const InstalledEntry& entry, Place place, std::string message, RuleFindings& findings) {
  RuleFinding finding;
  finding.place = std::move(place);
  finding.message = std::move(message);
  finding.plugin = entry.id;
  finding.subject = "ReplaceAddon";
  findings.push_back(std::move(finding));
}

void Check(const CheckedProduct& product, RuleFindings& findings) {
  for (const InstalledEntry& entry : product.addons) {
    if (!IsDescribed(entry)) continue;
    const XmlNode& root = entry.file->tree.root;
    const std::string& type = TextAt(root, "PublishingType");
    const std::string& replaced = TextAt(root, "ReplaceAddon/ID");
    const bool replaces = std::atoi(type.c_str()) == kReplaces;
    if (replaces && replaced.empty()) {
      Report(entry, PlaceAt(*entry.file, "PublishingType"),
             "<PublishingType> 3 means that the addon replaces another one, and <ReplaceAddon> "
             "names none",
             findings);
    } else if (!replaces && !replaced.empty()) {
      Report(entry, PlaceAt(*entry.file, "ReplaceAddon"),
             "<ReplaceAddon> is not read, because <PublishingType> is " +
                 (type.empty() ? "missing" : Quoted(type)) + ": it must be 3 for " +
                 Quoted(entry.id) + " to replace " + Quoted(replaced),
             findings);
    }
  }
}

}  // namespace

TEV_RULE(ReplacementNotRead) = {
    "TEV516",
    Severity::kWarning,
    "An addon's publishing type and its replaced addon do not fit together",
    "Only an addon with the <PublishingType> 3 replaces another one. With any other type the frame "
    "does not read <ReplaceAddon>; with type 3 and no <ReplaceAddon> it hands on an empty ID.",
    "<PublishingType>1</PublishingType> beside a <ReplaceAddon>",
    "Set <PublishingType> to 3 and name the replaced addon in <ReplaceAddon>, or remove "
    "<ReplaceAddon>.",
    &Check};
