#include <set>
#include <string>

#include "workbench/check/Addons.h"
#include "workbench/check/FileHints.h"
#include "workbench/check/FileNameFault.h"
#include "workbench/check/Rule.h"
#include "workbench/check/Words.h"
#include "workbench/output/Text.h"

namespace {

/// Why the file is not there: what the ID has that a name of a file cannot have, or what lies there
/// instead.
std::string Hint(const CheckedProduct& product, const PluginEntry& entry,
                 const std::set<std::string>& listed) {
  const std::string there = NameHint(product, entry.descriptionFile->name, listed);
  const std::string fault = FileNameFault(entry.id);
  return fault.empty() ? there : "; the ID " + fault + there;
}

std::string Message(const PluginEntry& entry, const std::string& hint) {
  const std::string loss = entry.addon == nullptr
                               ? "the frame refuses the product, and nothing starts"
                               : "the addon " + Quoted(entry.addon->id) + " is skipped" +
                                     NotAdded(entry.addon->plugins.size());
  return Quoted(entry.id) + " has no description: " + Escaped(entry.descriptionFile->name) +
         " does not exist: " + loss + hint;
}

void Check(const CheckedProduct& product, RuleFindings& findings) {
  if (!product.Exists(product.bin + "/META_INFO/")) return;  // TEV101 reports that
  std::set<std::string> listed;
  for (const PluginEntry& entry : product.entries) listed.insert(entry.id);
  std::size_t count = 0;
  for (const PluginEntry& entry : product.entries) {
    if (entry.node == nullptr || entry.id.empty() || !entry.descriptionFile->missing) continue;
    const CheckedFile& file = *entry.descriptionFile;
    if (!file.readName.empty()) continue;
    RuleFinding finding;
    finding.place = PlaceOf(*entry.file, *entry.node, "ID");
    const bool isHinted = ++count <= kMostHints;
    finding.message = Message(entry, isHinted ? Hint(product, entry, listed) : std::string());
    finding.plugin = entry.id;
    finding.subject = file.name;
    finding.refused = entry.addon == nullptr;
    findings.push_back(std::move(finding));
  }
}

}  // namespace

TEV_RULE(NoDescription) = {
    "TEV201",
    Severity::kError,
    "A listed plugin has no description",
    "Every plugin in Product.xml, every driver in DeviceDrivers.xml and every plugin of an addon "
    "needs the file META_INFO/ID/ID.xml. When that of a plugin or driver of the product is "
    "missing, Frame_Init fails and nothing is started; when that of an addon's plugin is "
    "missing, the whole addon is skipped.",
    R"(<Plugin ID="stroage.server"/> in Product.xml, and META_INFO/storage.server on disk)",
    "Correct the ID, add the description, or remove the entry.",
    &Check};
