#include <string>
#include <vector>

#include "workbench/check/Addons.h"
#include "workbench/check/Rule.h"
#include "workbench/check/Words.h"
#include "workbench/output/Nearest.h"

namespace {

std::string Suggestion(const std::string& logo) {
  return IsProductCode(logo) ? "; did you mean " + Quoted(LogoOfCode(logo)) + "?"
                             : DidYouMean(logo, KnownLogos());
}

/// Whether TEV503 reports the addon because of an entry like these.
bool IsReported(const CheckedProduct& product, const AddonModel* addon,
                const std::vector<SupportedProduct>& products) {
  return addon != nullptr && IsProductCode(product.model.Product) &&
         MisspeltSupport(product, *addon, products) != nullptr;
}

void Check(const CheckedProduct& product, RuleFindings& findings) {
  const auto models = InstalledModels(product);
  for (const InstalledEntry& entry : product.addons) {
    if (!IsDescribed(entry)) continue;
    const std::vector<SupportedProduct> products = SupportedProducts(*entry.file);
    const auto model = models.find(entry.id);
    if (IsReported(product, model == models.end() ? nullptr : model->second, products)) continue;
    for (const SupportedProduct& one : products) {
      if (!CodeOfLogo(one.logo).empty()) continue;
      RuleFinding finding;
      finding.place = PlaceAt(*entry.file, *one.node, "ProductLogo");
      finding.message =
          (one.logo.empty() ? "<Product> has no <ProductLogo>"
                            : "<ProductLogo> is " + Quoted(one.logo)) +
          "; the frame knows \"Velmora Lite\" and \"Velmora Professional\" and skips any other "
          "entry" +
          Suggestion(one.logo);
      finding.plugin = entry.id;
      finding.subject = one.logo;
      findings.push_back(std::move(finding));
    }
  }
}

}  // namespace

TEV_RULE(UnknownSupportedProduct) = {
    "TEV509",
    Severity::kWarning,
    "An addon supports a product that the frame does not know",
    "An entry of <SupportProducts> names its product in <ProductLogo>, by one of two texts: "
    "\"Velmora Lite\" is the product NVT, \"Velmora Professional\" is NVX. The frame skips an "
    "entry "
    "with any other text. When the addon is incompatible for that reason, TEV503 reports it.",
    "<ProductLogo>Velmora Light</ProductLogo>",
    "Write one of the two names, to the letter.",
    &Check};
