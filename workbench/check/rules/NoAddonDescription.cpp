#include "workbench/check/Addons.h"
#include "workbench/check/FileHints.h"
#include "workbench/check/Rule.h"
#include "workbench/check/Words.h"

namespace {

void Check(const CheckedProduct& product, RuleFindings& findings) {
  for (const AddonKind& kind : AddonKinds(product)) {
    for (const InstalledEntry& entry : *kind.installed) {
      if (entry.node == nullptr || entry.id.empty()) continue;
      const CheckedFile& file = *entry.file;
      if (!file.missing || !file.readName.empty()) continue;
      RuleFinding finding;
      finding.place = PlaceOf(*kind.installedFile, entry);
      finding.message = Quoted(entry.id) + " has no description: " + file.name +
                        " does not exist: the " + kind.what + " does not count as installed" +
                        NameHint(product, file.name);
      finding.plugin = entry.id;
      finding.subject = file.name;
      findings.push_back(std::move(finding));
    }
  }
}

}  // namespace

TEV_RULE(NoAddonDescription) = {
    "TEV505",
    Severity::kError,
    "An installed addon or tool has no description",
    "Every addon and tool in InstalledProducts.xml needs the file TevAddons/ID/ID.xml. Without it "
    "the frame skips the entry: an entry of the catalogue with the same ID stays as it is, not "
    "installed, and the plugins that the addon brings do not start.",
    R"(<Addon ID="Parkng"/>, and TevAddons/Parking on disk)",
    "Correct the ID, install the addon again, or remove the entry.",
    &Check};
