#include <map>
#include <string>

#include "workbench/check/PluginLists.h"
#include "workbench/check/Rule.h"
#include "workbench/check/Words.h"
#include "workbench/output/LetterCase.h"

namespace {

RuleFinding Finding(Place place, const std::string& id, const std::string& other,
                    std::string message) {
  RuleFinding finding;
  finding.place = std::move(place);
  finding.message = std::move(message);
  finding.plugin = id;
  finding.subject = other;
  return finding;
}

/// A description that is found although its folder or file is written otherwise.
void CheckFiles(const CheckedProduct& product, RuleFindings& findings) {
  std::map<std::string, std::string> names;
  for (const std::string& name : product.names) names.emplace(Lowered(name), name);
  for (const PluginEntry* entry : UsedDescriptions(product)) {
    const std::string& read = entry->description->file->readName;
    const auto there = names.find(Lowered(read));
    if (product.Exists(read) || there == names.end()) continue;
    findings.push_back(Finding(PlaceOfID(*entry), entry->id, there->second,
                               "the description of " + Quoted(entry->id) + " is " + there->second +
                                   ", with other letter case: the frame finds it on this system, "
                                   "but not where letter case counts"));
  }
}

/// What follows from an <ID> that differs from that of the entry in letter case only.
std::string Consequence(const CheckedProduct& product, const PluginEntry& entry) {
  if (ListOf(entry) == PluginList::kExecutables) {
    return "everything but the name of the program uses " + Quoted(entry.description->id);
  }
  return "no dependency on " + Quoted(entry.id) + " finds it, and where letter case counts " +
         product.bin + "/" + entry.id + ".dll is not its library";
}

void CheckDescriptions(const CheckedProduct& product, RuleFindings& findings) {
  for (const PluginEntry* entry : UsedDescriptions(product)) {
    const Description& description = *entry->description;
    const std::string& id = description.id;
    if (id == entry->id || !SameButCase(id, entry->id)) continue;
    RuleFinding finding = Finding(PlaceAt(*description.file, "ID"), id, entry->id,
                                  "<ID> is " + Quoted(id) + ", but the plugin is listed as " +
                                      Quoted(entry->id) + ": " + Consequence(product, *entry));
    finding.related.push_back({PlaceOfID(*entry), "listed here"});
    findings.push_back(std::move(finding));
  }
}

/// Two entries whose IDs differ in letter case only.
void CheckEntries(const CheckedProduct& product, RuleFindings& findings) {
  std::map<std::string, const PluginEntry*> first;
  for (const PluginEntry* entry : UsedEntries(product)) {
    if (entry->description == nullptr) continue;
    const PluginEntry& other = *first.emplace(Lowered(entry->id), entry).first->second;
    if (other.id == entry->id) continue;
    RuleFinding finding = Finding(
        PlaceOfID(*entry), entry->id, other.id,
        Quoted(entry->id) + " and " + Quoted(other.id) +
            " differ in letter case only: for the frame they are two plugins, but on Windows they "
            "have one description and one library");
    finding.related.push_back({PlaceOfID(other), Quoted(other.id) + " is listed here"});
    findings.push_back(std::move(finding));
  }
}

void Check(const CheckedProduct& product, RuleFindings& findings) {
  CheckFiles(product, findings);
  CheckDescriptions(product, findings);
  CheckEntries(product, findings);
}

}  // namespace

TEV_RULE(OtherLetterCase) = {
    "TEV206",
    Severity::kWarning,
    "Entry, folder, file or ID differ in letter case",
    "The frame compares IDs byte by byte on every system, but Windows ignores the letter case of "
    "files. So a product can run on Windows and not on Linux, and a plugin can be started under "
    "an ID that no dependency has. A description that is not found because of letter case is a "
    "finding of TEV201.",
    "<ID>Alarm.server</ID> in META_INFO/alarm.server/alarm.server.xml",
    "Write the ID in the same way everywhere.",
    &Check};
