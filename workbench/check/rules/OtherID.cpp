#include <map>
#include <string>

#include "workbench/check/FileNameFault.h"
#include "workbench/check/PluginLists.h"
#include "workbench/check/Rule.h"
#include "workbench/check/Words.h"
#include "workbench/output/LetterCase.h"

namespace {

bool HasLibrary(const CheckedProduct& product, const std::string& id) {
  return product.Exists(product.bin + "/" + id + ".dll");
}

/// Which of the two IDs the frame uses for what.
std::string Uses(const CheckedProduct& product, const PluginEntry& entry) {
  const std::string& id = entry.description->id;
  switch (ListOf(entry)) {
    case PluginList::kExecutables:
      return "the program is " + product.bin + "/" + entry.id + ".exe, but everything else uses " +
             Quoted(id);
    case PluginList::kDrivers:
      return "the platform receives the driver as " + Quoted(id);
    default:
      return "the frame loads " + product.bin + "/" + id + ".dll, and only a dependency on " +
             Quoted(id) + " waits for it";
  }
}

/// Which of the two was probably meant, by the library that is there.
std::string Meant(const CheckedProduct& product, const PluginEntry& entry) {
  const bool byListing = HasLibrary(product, entry.id);
  if (byListing == HasLibrary(product, entry.description->id)) return std::string();
  const std::string& there = byListing ? entry.id : entry.description->id;
  return "; " + product.bin + "/" + there + ".dll is there: " + Quoted(there) +
         " was probably meant";
}

/// An addon that can replace a plugin has its description in a folder of another name.
bool IsOnPurpose(const CheckedProduct& product, const PluginEntry& entry) {
  return entry.addon != nullptr && HasLibrary(product, entry.description->id) &&
         !HasLibrary(product, entry.id);
}

void Check(const CheckedProduct& product, RuleFindings& findings) {
  std::map<std::string, int> owners;
  const std::vector<const PluginEntry*> used = UsedDescriptions(product);
  for (const PluginEntry* entry : used) ++owners[entry->description->id];
  for (const PluginEntry* entry : used) {
    const Description& description = *entry->description;
    const std::string& id = description.id;
    // TEV204 reports none, TEV205 one that is no file name, TEV206 other letter case, and TEV207
    // that another plugin has it.
    if (id.empty() || SameButCase(id, entry->id) || owners[id] > 1) continue;
    if (!FileNameFault(id).empty() || ListOf(*entry) == PluginList::kNone) continue;
    if (IsOnPurpose(product, *entry)) continue;
    RuleFinding finding;
    finding.place = PlaceAt(*description.file, "ID");
    finding.message = "<ID> is " + Quoted(id) + ", but the plugin is listed as " +
                      Quoted(entry->id) + ": " + Uses(product, *entry) + Meant(product, *entry);
    finding.related.push_back({PlaceOfID(*entry), "listed here"});
    finding.plugin = id;
    finding.subject = entry->id;
    findings.push_back(std::move(finding));
  }
}

}  // namespace

TEV_RULE(OtherID) = {
    "TEV203",
    Severity::kWarning,
    "The ID in a description is not the ID by which the plugin is listed",
    "The ID of the entry in a list only leads to the description, META_INFO/ID/ID.xml, and to "
    "the program of an executable plugin, ID.exe. For everything else the frame uses the <ID> of "
    "the description: the name of the library, the start and the stop, the dependencies of other "
    "plugins and the tables that the platform receives. A dependency on the ID of the entry "
    "orders nothing. When the <ID> is that of another plugin too, it is a finding of TEV207. The "
    "folder of an addon's plugin may have another name than its library, so that the addon can "
    "replace a plugin of the product.",
    "META_INFO/alarm.server/alarm.server.xml with <ID>alarms.server</ID>",
    "Give the entry, the folder, the file and <ID> the same ID.",
    &Check};
