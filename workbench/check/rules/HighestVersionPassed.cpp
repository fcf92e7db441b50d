#include <string>

#include "workbench/check/Addons.h"
#include "workbench/check/Rule.h"
#include "workbench/check/VersionNumbers.h"
#include "workbench/check/Words.h"

namespace {

void Check(const CheckedProduct& product, RuleFindings& findings) {
  const std::string version = ThreeParts(product.model.Version);
  const auto models = InstalledModels(product);
  for (const InstalledEntry& entry : product.addons) {
    const auto model = models.find(entry.id);
    if (model == models.end() || !model->second->InstalledCompatible) continue;
    const std::string& max = model->second->MaxVersion;
    if (!IsAboveAsNumbers(version, max)) continue;
    const auto products = SupportedProducts(*entry.file);
    const SupportedProduct* support = SupportFor(products, product.model.Product);
    if (support == nullptr) continue;
    RuleFinding finding;
    finding.place = PlaceAt(*entry.file, *support->node, "MaxVersion");
    finding.message = "<MaxVersion> " + Quoted(max) + " is below the product's version " +
                      Quoted(version) + ": the addon " + Quoted(entry.id) +
                      " counts as compatible nevertheless, because the frame does not compare "
                      "<MaxVersion>";
    finding.plugin = entry.id;
    finding.subject = "MaxVersion";
    findings.push_back(std::move(finding));
  }
}

}  // namespace

TEV_RULE(HighestVersionPassed) = {
    "TEV515",
    Severity::kNote,
    "The product is newer than the highest version that an addon supports",
    "The frame decides by <MinVersion> alone whether an addon is compatible; it hands <MaxVersion> "
    "on and never compares it. So an addon runs in a product that is too new for it. The rule "
    "compares the parts of the two versions as numbers.",
    "<MaxVersion>2.6.9</MaxVersion> in a product 2.7.1",
    "Install a version of the addon that supports this product, or raise <MaxVersion> if it does.",
    &Check};
