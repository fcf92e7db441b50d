#include <vector>

#include "workbench/check/Rule.h"
#include "workbench/check/Words.h"

namespace {

/// Whether an entry stands anywhere in the file, even where the frame does not read it.
bool HasEntry(const XmlNode& root) {
  std::vector<const XmlNode*> left = {&root};
  while (!left.empty()) {
    const XmlNode* next = left.back();
    left.pop_back();
    if (next->name == "Plugin" || next->name == "SubPlatform") return true;
    for (const XmlNode& child : next->children) left.push_back(&child);
  }
  return false;
}

void Check(const CheckedProduct& product, RuleFindings& findings) {
  const CheckedFile& file = product.File(FileKind::kProduct);
  // Other rules report why a listed plugin is not started.
  const bool isJudged = product.fromFrame && file.HasContent() && !HasEntry(file.tree.root);
  const bool starts = !product.graph.ids.empty() || !product.model.ExePluginDescriptions.empty();
  if (!isJudged || starts) return;
  RuleFinding finding;
  finding.place = PlaceOf(file, file.tree.root);
  finding.message =
      "no plugin and no sub platform is listed here, and no addon brings one: the product starts "
      "nothing";
  if (!product.model.DriverPluginDescriptions.empty()) {
    finding.message += "; drivers are only handed over to the platform";
  }
  finding.subject = "Plugins";
  findings.push_back(std::move(finding));
}

}  // namespace

TEV_RULE(NothingStarts) = {
    "TEV218",
    Severity::kWarning,
    "The product starts nothing",
    "A product without plugins and sub platforms is initialised, started and stopped without an "
    "error, and does nothing.",
    "<ProductDescription><Product>NVX</Product></ProductDescription>",
    "List the plugins in <Plugins>, or check that this is the Product.xml that was meant.",
    &Check};
