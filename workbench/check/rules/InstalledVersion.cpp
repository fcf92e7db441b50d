#include <string>

#include "workbench/check/Addons.h"
#include "workbench/check/Rule.h"
#include "workbench/check/Words.h"

namespace {

void Check(const CheckedProduct& product, RuleFindings& findings) {
  for (const AddonKind& kind : AddonKinds(product)) {
    for (const InstalledEntry& entry : *kind.installed) {
      if (!IsDescribed(entry)) continue;
      const std::string& installed = entry.node->Value("Version");
      const std::string& described = TextAt(entry.file->tree.root, "Version");
      if (installed.empty() || described.empty() || installed == described) continue;
      RuleFinding finding;
      finding.place = PlaceOf(*kind.installedFile, *entry.node, "Version");
      finding.message = "the " + std::string(kind.what) + " " + Quoted(entry.id) +
                        " is installed as version " + Quoted(installed) +
                        ", but its description has " + Quoted(described) +
                        ": the frame hands on both";
      finding.related.push_back(
          {PlaceAt(*entry.file, "Version"), "the version of the description"});
      finding.plugin = entry.id;
      finding.subject = "Version";
      findings.push_back(std::move(finding));
    }
  }
}

}  // namespace

TEV_RULE(InstalledVersion) = {
    "TEV514",
    Severity::kWarning,
    "An addon or tool is installed with another version than that of its description",
    "The version in InstalledProducts.xml is that of the installation, the one in "
    "TevAddons/ID/ID.xml "
    "that of the files. The frame hands both on to the platform and compares them with nothing. "
    "When they differ, an update was probably not finished, or an old description was left behind.",
    R"(<Addon ID="Parking" Version="1.3.0"/>, and <Version>1.4.0</Version> in Parking.xml)",
    "Install the addon again, or correct the version that is wrong.",
    &Check};
