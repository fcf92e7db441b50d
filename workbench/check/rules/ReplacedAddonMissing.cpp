#include <cstdlib>
#include <set>
#include <string>

#include "workbench/check/Addons.h"
#include "workbench/check/Rule.h"
#include "workbench/check/Suggestions.h"
#include "workbench/check/Words.h"

namespace {

constexpr int kReplaces = 3;

std::set<std::string> KnownAddons(const CheckedProduct& product) {
  std::set<std::string> ids;
  for (const CatalogueEntry& entry : product.offeredAddons) ids.insert(entry.id);
  for (const InstalledEntry& entry : product.addons) ids.insert(entry.id);
  return ids;
}

void Check(const CheckedProduct& product, RuleFindings& findings) {
  const std::set<std::string> known = KnownAddons(product);
  Suggestions suggestions({known.begin(), known.end()});
  for (const InstalledEntry& entry : product.addons) {
    if (!IsDescribed(entry)) continue;
    const XmlNode& root = entry.file->tree.root;
    if (std::atoi(TextAt(root, "PublishingType").c_str()) != kReplaces) continue;
    const std::string& replaced = TextAt(root, "ReplaceAddon/ID");
    if (replaced.empty() || known.count(replaced) != 0) continue;
    RuleFinding finding;
    finding.place = PlaceAt(*entry.file, "ReplaceAddon/ID");
    finding.message = "the addon " + Quoted(entry.id) + " replaces " + Quoted(replaced) +
                      ", which is neither in ProductAddons.xml nor installed: there is nothing to "
                      "replace" +
                      suggestions.DidYouMean(replaced);
    finding.plugin = entry.id;
    finding.subject = replaced;
    findings.push_back(std::move(finding));
  }
}

}  // namespace

TEV_RULE(ReplacedAddonMissing) = {
    "TEV507",
    Severity::kNote,
    "An addon replaces an addon that is not there",
    "An addon with the <PublishingType> 3 names in <ReplaceAddon> the addon that it replaces. The "
    "frame hands the ID on as it stands; an ID that is neither in ProductAddons.xml nor installed "
    "is an addon that is no longer offered, or a misspelt one.",
    "<ReplaceAddon><ID>Parkng</ID></ReplaceAddon>",
    "Correct the ID. If the replaced addon is no longer offered, nothing needs to be done.",
    &Check};
