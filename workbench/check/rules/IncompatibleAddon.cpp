#include <string>
#include <vector>

#include "workbench/check/Addons.h"
#include "workbench/check/Rule.h"
#include "workbench/check/VersionNumbers.h"
#include "workbench/check/Words.h"
#include "workbench/output/Nearest.h"

namespace {

constexpr char kSecondAddonVersion[] = "3.0.0";

/// "<MinVersion> "2.10.0" is below "2.6.0"", and that this is so as text when numbers differ.
std::string Compared(const std::string& min, const char* how, const std::string& other,
                     bool otherAsNumbers) {
  return "<MinVersion> " + Quoted(min) + " is " + how + " " + Quoted(other) +
         (otherAsNumbers ? " when compared as text, as the frame compares versions" : "");
}

/// Why an addon with this lowest version does not run in the product of this version.
std::string WhyByVersion(const std::string& code, const std::string& version,
                         const std::string& min) {
  if (code == kProfessionalCode && version == kFirstAddonVersion) {
    return "<MinVersion> is " + Quoted(min) +
           R"(, and an "NVX" 2.6.0 runs only addons with the <MinVersion> "2.6.0")";
  }
  if (version < min) {
    return Compared(min, "above the product's version", version, IsAboveAsNumbers(version, min));
  }
  const std::string bound =
      version < kSecondAddonVersion ? kFirstAddonVersion : kSecondAddonVersion;
  return Compared(min, "below", bound, IsAboveAsNumbers(min, bound)) +
         ", and an \"NVX\" of version " + Quoted(version) + " runs only addons from " +
         Quoted(bound) + " on";
}

/// Fills in place and message.
void Explain(const CheckedProduct& product, const InstalledEntry& entry, const AddonModel& addon,
             RuleFinding& finding) {
  const std::string& code = product.model.Product;
  const std::vector<SupportedProduct> products = SupportedProducts(*entry.file);
  const SupportedProduct* support = SupportFor(products, code);
  const SupportedProduct* misspelt = MisspeltSupport(product, addon, products);
  const std::string effect =
      ": the addon " + Quoted(addon.ID) + " is incompatible" +
      (entry.plugins.empty() ? ", and nothing of it is added" : NotAdded(entry.plugins.size()));
  if (misspelt != nullptr) {
    finding.place = PlaceOf(*entry.file, *misspelt->node);
    finding.message = "no entry of <SupportProducts> is for " + Quoted(LogoOfCode(code)) +
                      ", the running product" + effect + "; this one is for " +
                      Quoted(misspelt->logo) + ", which the frame does not know" +
                      DidYouMean(misspelt->logo, KnownLogos());
  } else if (support == nullptr) {
    finding.place = PlaceAt(*entry.file, "SupportProducts");
    finding.message = "no entry of <SupportProducts> is for " + Quoted(LogoOfCode(code)) +
                      ", the running product" + effect;
  } else if (addon.MinVersion.empty()) {
    finding.place = PlaceOf(*entry.file, *support->node);
    finding.message = "the entry for " + Quoted(support->logo) + " has no <MinVersion>" + effect;
  } else {
    finding.place = PlaceAt(*entry.file, *support->node, "MinVersion");
    finding.message =
        WhyByVersion(code, ThreeParts(product.model.Version), addon.MinVersion) + effect;
  }
}

bool AddonsCanRun(const CheckedProduct& product) {
  const std::string& code = product.model.Product;
  if (!IsProductCode(code)) return false;  // TEV501 reports that
  return code != kProfessionalCode ||      // TEV502 reports this
         ThreeParts(product.model.Version) >= kFirstAddonVersion;
}

void Check(const CheckedProduct& product, RuleFindings& findings) {
  if (!AddonsCanRun(product)) return;
  const auto models = InstalledModels(product);
  for (const InstalledEntry& entry : product.addons) {
    const auto found = models.find(entry.id);
    if (found == models.end() || found->second->InstalledCompatible) continue;
    RuleFinding finding;
    Explain(product, entry, *found->second, finding);
    finding.plugin = entry.id;
    finding.subject = "MinVersion";
    findings.push_back(std::move(finding));
  }
}

}  // namespace

TEV_RULE(IncompatibleAddon) = {
    "TEV503",
    Severity::kError,
    "An installed addon is not compatible with the product",
    "An addon runs in the product NVX when its <MinVersion> for \"Velmora Professional\" is not "
    "above the product's version and not below 2.6.0, or not below 3.0.0 in a product from 3.0.0 "
    "on; a product 2.6.0 runs only addons whose <MinVersion> is 2.6.0. In the product NVT the "
    "<MinVersion> for \"Velmora Lite\" must not be above the product's version. All are compared "
    "as texts: 2.10.0 is below 2.6.0, and 2.7.1.5 is above a product 2.7.1. An incompatible addon "
    "is still handed to the platform, but its plugins and services are not added to the product.",
    "<MinVersion>2.9.0</MinVersion> in a product 2.7.1",
    "Install the version of the addon that belongs to this product, correct its <SupportProducts>, "
    "or remove the addon from InstalledProducts.xml.",
    &Check};
