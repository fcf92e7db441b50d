#include <algorithm>
#include <set>
#include <string>

#include "workbench/check/PluginLists.h"
#include "workbench/check/Rule.h"
#include "workbench/check/Words.h"

namespace {

/// The one of two programs or libraries, named by the two IDs of a plugin, that is there.
std::string There(const CheckedProduct& product, const PluginEntry& entry, const char* extension) {
  for (const std::string& id : {entry.description->id, entry.id}) {
    std::string name = product.bin + "/" + id + extension;
    if (product.Exists(name)) return name;
  }
  return std::string();
}

/// Why the type does not fit the files; empty when it does.
std::string Conflict(const CheckedProduct& product, const PluginEntry& entry) {
  const PluginList list = ListOf(entry);
  const std::string library = There(product, entry, ".dll");
  const std::string program = There(product, entry, ".exe");
  if (list == PluginList::kExecutables && program.empty() && !library.empty()) {
    return "<Type> is 1, a program, but there is " + library + " and no " + product.bin + "/" +
           entry.id + ".exe: " + Quoted(entry.id) + " is not started; 2 was probably meant";
  }
  if (list == PluginList::kServers && library.empty() && !program.empty()) {
    return "<Type> is 2, a library, but there is " + program + " and no " + product.bin + "/" +
           entry.description->id + ".dll: " + Quoted(entry.id) +
           " is not started; 1 was probably meant";
  }
  return std::string();
}

void CheckFiles(const CheckedProduct& product, const PluginEntry& entry, RuleFindings& findings) {
  const std::string conflict = Conflict(product, entry);
  if (conflict.empty()) return;
  RuleFinding finding;
  finding.place = PlaceAt(*entry.description->file, "Type");
  finding.message = conflict;
  finding.related.push_back({PlaceOfID(entry), "listed here"});
  finding.plugin = entry.id;
  finding.subject = "Type";
  findings.push_back(std::move(finding));
}

/// A program among the product's drivers.
void AddProgram(const PluginEntry& driver, RuleFindings& findings) {
  const Description& description = *driver.description;
  const bool isPlugin =
      std::any_of(description.entries.begin(), description.entries.end(),
                  [](const PluginEntry* entry) { return entry->type == "server"; });
  RuleFinding finding;
  finding.place = PlaceOfID(driver);
  finding.message = Quoted(driver.id) +
                    " is listed as a driver, but its <Type> is 1, a program: the frame takes it "
                    "for an executable plugin, and the platform receives no driver; " +
                    (isPlugin ? "it is also listed as a plugin, so this entry is not needed"
                              : "2 was probably meant, a library");
  finding.related.push_back({PlaceAt(*description.file, "Type"), "the type"});
  finding.plugin = driver.id;
  finding.subject = "driver";
  findings.push_back(std::move(finding));
}

void Check(const CheckedProduct& product, RuleFindings& findings) {
  std::set<const Description*> programs;
  for (const PluginEntry* entry : UsedEntries(product)) {
    const bool isProgram = ListOf(*entry) == PluginList::kExecutables;
    if (!isProgram || entry->type == "server") continue;
    if (programs.insert(entry->description).second) AddProgram(*entry, findings);
  }
  for (const PluginEntry* entry : UsedDescriptions(product)) {
    if (programs.count(entry->description) == 0) CheckFiles(product, *entry, findings);
  }
}

}  // namespace

TEV_RULE(TypeAndFiles) = {
    "TEV210",
    Severity::kError,
    "The type of a plugin does not fit its files or its list",
    "By <Type> the frame decides what a plugin is: with 2 it loads the library ID.dll, with 1 "
    "the local-procedure-call framework runs the program ID.exe. A driver is a library: a driver "
    "of DeviceDrivers.xml with type 1 becomes an executable plugin.",
    "<Type>2</Type> in the description of bin/media.recorder.exe",
    "Correct <Type>, or put the library or program where the message says.",
    &Check};
