#include <map>
#include <string>

#include "workbench/check/Addons.h"
#include "workbench/check/Rule.h"
#include "workbench/check/Words.h"

namespace {

std::string Message(const std::string& what, const std::string& id, const std::string& effect) {
  return "the " + what + " " + Quoted(id) + " is listed again: " + effect;
}

/// Reports each entry whose ID an earlier entry of the list has.
template <typename Entries, typename PlaceOfEntry>
void CheckList(const Entries& entries, const PlaceOfEntry& placeOf, const std::string& what,
               const std::string& effect, RuleFindings& findings) {
  std::map<std::string, Place> first;
  for (const auto& entry : entries) {
    if (entry.node == nullptr || entry.id.empty()) continue;
    const Place place = placeOf(entry);
    const auto [known, isFirst] = first.emplace(entry.id, place);
    if (isFirst) continue;
    RuleFinding finding;
    finding.place = place;
    finding.message = Message(what, entry.id, effect);
    finding.related.push_back({known->second, "the first entry"});
    finding.plugin = entry.id;
    finding.subject = "ID";
    findings.push_back(std::move(finding));
  }
}

void Check(const CheckedProduct& product, RuleFindings& findings) {
  for (const AddonKind& kind : AddonKinds(product)) {
    CheckList(
        *kind.offered,
        [&](const CatalogueEntry& entry) { return PlaceAt(*kind.catalogue, *entry.node, "ID"); },
        kind.what, "both are offered, and only the first one can become installed", findings);
    CheckList(
        *kind.installed,
        [&](const InstalledEntry& entry) { return PlaceOf(*kind.installedFile, entry); }, kind.what,
        "of what the two entries say, only the last one's counts", findings);
  }
}

}  // namespace

TEV_RULE(DoubledAddon) = {
    "TEV513",
    Severity::kWarning,
    "An addon or tool is listed twice",
    "In a catalogue the frame keeps both entries; what is installed is merged into the first one, "
    "and the other stays offered, not installed. In InstalledProducts.xml each entry replaces the "
    "earlier one with the same ID, with its version, its packages and its checksum.",
    R"(two <Addon ID="Parking"/> in InstalledProducts.xml)",
    "Remove one of the two entries.",
    &Check};
