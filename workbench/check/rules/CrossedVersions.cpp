#include <string>

#include "workbench/check/Addons.h"
#include "workbench/check/Rule.h"
#include "workbench/check/VersionNumbers.h"
#include "workbench/check/Words.h"

namespace {

/// Compares the two versions in `node`.
void CheckBounds(const InstalledEntry& entry, const XmlNode& node, RuleFindings& findings) {
  const std::string& min = TextAt(node, "MinVersion");
  const std::string& max = TextAt(node, "MaxVersion");
  if (!IsAboveAsNumbers(min, max)) return;
  RuleFinding finding;
  finding.place = PlaceAt(*entry.file, node, "MinVersion");
  finding.message = "<MinVersion> " + Quoted(min) + " is above <MaxVersion> " + Quoted(max) +
                    " of the same " + Tag(node.name) +
                    ": no version lies between them; were they exchanged?";
  finding.plugin = entry.id;
  finding.subject = node.name + " " + min + " " + max;
  findings.push_back(std::move(finding));
}

void Check(const CheckedProduct& product, RuleFindings& findings) {
  for (const AddonKind& kind : AddonKinds(product)) {
    for (const InstalledEntry& entry : *kind.installed) {
      if (!IsDescribed(entry)) continue;
      for (const SupportedProduct& support : SupportedProducts(*entry.file)) {
        CheckBounds(entry, *support.node, findings);
      }
      const auto replaced = Select(entry.file->tree.root, "ReplaceAddon");
      if (!replaced.empty()) CheckBounds(entry, *replaced.front(), findings);
    }
  }
}

}  // namespace

TEV_RULE(CrossedVersions) = {
    "TEV504",
    Severity::kWarning,
    "A lowest version is above the highest one",
    "<MinVersion> and <MaxVersion> of a supported product, or of a replaced addon, are the lowest "
    "and the highest version that fit. The rule compares their parts as numbers. The frame "
    "compares only the <MinVersion> of an addon with the product's version; <MaxVersion> is handed "
    "on to the platform.",
    "<MinVersion>2.9.9</MinVersion> <MaxVersion>2.6.0</MaxVersion>",
    "Correct the two versions.",
    &Check};
