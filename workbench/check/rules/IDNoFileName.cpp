#include <set>
#include <string>

#include "workbench/check/FileNameFault.h"
#include "workbench/check/PluginLists.h"
#include "workbench/check/Rule.h"
#include "workbench/check/Words.h"
#include "workbench/output/Text.h"

namespace {

class Checked {
 public:
  explicit Checked(RuleFindings& findings) : m_findings(findings) {}

  /// `use` is what the frame does with the ID.
  void Check(const std::string& id, const Place& place, const std::string& use) {
    const std::string fault = FileNameFault(id);
    if (fault.empty() || !m_reported.insert(id).second) return;
    RuleFinding finding;
    finding.place = place;
    finding.message = Quoted(id) + " " + fault + ": the frame takes the ID as it stands and " + use;
    finding.plugin = id;
    finding.subject = "ID";
    m_findings.push_back(std::move(finding));
  }

 private:
  RuleFindings& m_findings;
  std::set<std::string> m_reported;
};

/// "loads bin/a.server.dll"
std::string Loads(const CheckedProduct& product, const std::string& id) {
  return "loads " + Escaped(product.bin + "/" + id + ".dll");
}

/// What the frame does with the ID of a description.
std::string Use(const CheckedProduct& product, const PluginEntry& entry) {
  if (ListOf(entry) == PluginList::kServers) return Loads(product, entry.description->id);
  return ListOf(entry) == PluginList::kExecutables
             ? "hands it over to the local-procedure-call framework"
             : "hands it over to the platform";
}

void Check(const CheckedProduct& product, RuleFindings& findings) {
  Checked checked(findings);
  for (const PluginEntry* entry : UsedEntries(product)) {
    if (entry->description == nullptr) continue;  // TEV201 names the fault
    checked.Check(entry->id, PlaceOfID(*entry), "reads " + Escaped(entry->descriptionFile->name));
  }
  for (const PluginEntry* entry : UsedDescriptions(product)) {
    const Description& description = *entry->description;
    const std::string listed =
        description.id == entry->id ? "" : "; the plugin is listed as " + Quoted(entry->id);
    checked.Check(description.id, PlaceAt(*description.file, "ID"), Use(product, *entry) + listed);
  }
  const CheckedFile& file = product.File(FileKind::kProduct);
  for (const SubPlatform& subPlatform : product.subPlatforms) {
    if (subPlatform.node == nullptr) continue;
    checked.Check(subPlatform.id, PlaceOf(file, *subPlatform.node, "ID"),
                  Loads(product, subPlatform.id));
  }
}

}  // namespace

TEV_RULE(IDNoFileName) = {
    "TEV205",
    Severity::kWarning,
    "An ID that is no plain file name on every system",
    "An ID becomes the name of a folder, of a description and of a library, byte by byte. With "
    "\"/\" or \"\\\" in it the frame looks in other folders; blanks at its ends are part of the "
    "name, so that no dependency without them finds the plugin. Windows refuses some characters, "
    "removes a \".\" at the end of a folder's name, and opens a device instead of a file whose "
    "name is con, aux, nul, prn, com1 to com9 or lpt1 to lpt9, even when \".\" and more follow.",
    "<SubPlatform ID=\"aux.platform\"/>",
    R"(Use letters, digits, ".", "-" and "_", and begin and end with a letter or digit.)",
    &Check};
