#include "workbench/check/Addons.h"
#include "workbench/check/Rule.h"
#include "workbench/check/Words.h"

namespace {

void Check(const CheckedProduct& product, RuleFindings& findings) {
  for (const AddonKind& kind : AddonKinds(product)) {
    for (const InstalledEntry& entry : *kind.installed) {
      if (entry.node == nullptr || entry.id.empty()) continue;
      const CheckedFile& file = *entry.file;
      if (!file.HasContent() || IsDescribed(entry)) continue;
      const std::string& id = TextAt(file.tree.root, "ID");
      RuleFinding finding;
      finding.place = PlaceAt(file, "ID");
      finding.message = (id.empty() ? "the description has no <ID>" : "<ID> is " + Quoted(id)) +
                        ", but InstalledProducts.xml and the file's name say " + Quoted(entry.id) +
                        ": the " + kind.what + " is skipped and does not count as installed";
      finding.related.push_back({PlaceOf(*kind.installedFile, entry), "installed here"});
      finding.plugin = entry.id;
      finding.subject = "ID";
      findings.push_back(std::move(finding));
    }
  }
}

}  // namespace

TEV_RULE(OtherAddonDescribed) = {
    "TEV506",
    Severity::kError,
    "The description of an installed addon or tool has another ID",
    "The <ID> in TevAddons/ID/ID.xml must be the ID of InstalledProducts.xml, to the letter. "
    "Otherwise the frame skips the entry: an entry of the catalogue with the same ID stays as it "
    "is, not installed, and the plugins that the addon brings do not start.",
    "<ID>parking</ID> in TevAddons/Parking/Parking.xml",
    "Correct the <ID>, or the ID in InstalledProducts.xml and the names of folder and file.",
    &Check};
