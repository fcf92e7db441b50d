#include <string>
#include <utility>

#include "workbench/check/Addons.h"
#include "workbench/check/Rule.h"
#include "workbench/check/Words.h"

namespace {

void Report(Place place, const XmlNode& node, std::string message, RuleFindings& findings) {
  RuleFinding finding;
  finding.place = std::move(place);
  finding.message = std::move(message);
  finding.subject = node.name;
  findings.push_back(std::move(finding));
}

void CheckCatalogue(const AddonKind& kind, bool isAddon, RuleFindings& findings) {
  for (const CatalogueEntry& entry : *kind.offered) {
    if (entry.node == nullptr || !entry.id.empty()) continue;
    std::string message = Tag(kind.element) + " has no <ID>: ";
    message += isAddon ? "the frame takes it for an installed addon without an ID"
                       : "an installed tool cannot be matched to it";
    if (entry.node->Attribute("ID") != nullptr) {
      message += "; the attribute ID is not read here, write an element <ID>";
    }
    Report(PlaceAt(*kind.catalogue, *entry.node, "ID"), *entry.node, std::move(message), findings);
  }
}

void CheckInstalled(const AddonKind& kind, RuleFindings& findings) {
  for (const InstalledEntry& entry : *kind.installed) {
    if (entry.node == nullptr || !entry.id.empty()) continue;
    std::string message = Tag(kind.element) + " has no ID: the frame skips the entry";
    if (!TextAt(*entry.node, "ID").empty()) {
      message += "; the element <ID> is not read here, write an attribute ID";
    }
    Report(PlaceOf(*kind.installedFile, *entry.node, "ID"), *entry.node, std::move(message),
           findings);
  }
}

void Check(const CheckedProduct& product, RuleFindings& findings) {
  for (const AddonKind& kind : AddonKinds(product)) {
    CheckCatalogue(kind, kind.installed == &product.addons, findings);
    CheckInstalled(kind, findings);
  }
}

}  // namespace

TEV_RULE(AddonWithoutID) = {
    "TEV508",
    Severity::kError,
    "An entry of an addon or tool has no ID",
    "The ID is by what catalogue, installed list and description belong together: an element <ID> "
    "in ProductAddons.xml and ProductTools.xml, an attribute ID in InstalledProducts.xml. An addon "
    "of the catalogue without an ID counts as installed; an installed entry without an ID is "
    "skipped.",
    "<Addon><Name>Parking</Name></Addon> in ProductAddons.xml",
    "Give the entry its ID, or remove it.",
    &Check};
