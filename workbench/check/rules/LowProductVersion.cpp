#include <cstddef>
#include <string>

#include "workbench/check/Addons.h"
#include "workbench/check/Rule.h"
#include "workbench/check/VersionNumbers.h"
#include "workbench/check/Words.h"

namespace {

/// Why no addon is read at all; empty when addons are read or there are none.
std::string WhyNotRead(const CheckedProduct& product, const std::string& version) {
  if (!ThreeParts(version).empty()) return std::string();
  const std::size_t offered = product.offeredAddons.size();
  const std::size_t installed = product.addons.size();
  if (offered + installed == 0) return std::string();
  std::string lost = offered == 0 ? std::string() : std::to_string(offered) + " of the catalogue";
  if (installed > 0) lost += (offered > 0 ? ", " : "") + std::to_string(installed) + " installed";
  return (version.empty() ? "<Version> is missing or empty" : "<Version> is " + Quoted(version)) +
         "; without three parts, as in \"2.7.0\", the frame reads no addon (" + lost + ")";
}

/// Why a version that looks higher is below the first one that runs addons.
std::string WhyBelow(const std::string& version) {
  if (version.front() == ' ') return ", because a blank comes before every digit";
  return IsAboveAsNumbers(version, kFirstAddonVersion)
             ? " when compared as text, as the frame compares versions"
             : "";
}

/// Why every addon is incompatible; empty when some can be compatible or none is installed.
std::string WhyIncompatible(const CheckedProduct& product, const std::string& version) {
  if (product.model.Product != kProfessionalCode || version >= kFirstAddonVersion) {
    return std::string();
  }
  const IncompatibleAddons addons = FindIncompatible(product);
  if (addons.ids.empty()) return std::string();
  return "the version " + Quoted(version) + " is below \"2.6.0\"" + WhyBelow(version) +
         R"(, and an "NVX" below "2.6.0" runs no addon: every installed addon ()" +
         QuotedList(addons.ids) + ") is incompatible" + NotAdded(addons.plugins);
}

void Check(const CheckedProduct& product, RuleFindings& findings) {
  const CheckedFile& file = product.File(FileKind::kProduct);
  if (!file.HasContent()) return;
  const std::string& version = product.model.Version;
  std::string message = WhyNotRead(product, version);
  if (message.empty()) message = WhyIncompatible(product, ThreeParts(version));
  if (message.empty()) return;
  RuleFinding finding;
  finding.place = PlaceAt(file, "Version");
  finding.message = std::move(message);
  finding.subject = "Version";
  findings.push_back(std::move(finding));
}

}  // namespace

TEV_RULE(LowProductVersion) = {
    "TEV502",
    Severity::kError,
    "The product has a version with which no addon is compatible",
    "The frame compares addons with the first three parts of <Version> in Product.xml. With fewer "
    "parts it reads no addon at all, not even the catalogue. In the product NVX every addon is "
    "incompatible when these three parts are below 2.6.0, and versions are compared as texts, "
    "character by character: 2.10.0 and 10.0.0 are below 2.6.0, because the character 1 comes "
    "before 2 and before 6. A blank before the version comes before every digit.",
    "<Version>2.10.0.7</Version>",
    "Give the product three parts or more, and a version that is not below 2.6.0 as text: 2.9.10 "
    "or 3.0.0 instead of 2.10.0.",
    &Check};
