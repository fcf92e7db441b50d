#include <set>
#include <string>

#include "workbench/check/PluginLists.h"
#include "workbench/check/Rule.h"
#include "workbench/check/Words.h"

namespace {

std::string WhatItReads(const Description& description) {
  const std::string number = std::to_string(description.type);
  const std::string& text = TextAt(description.file->tree.root, "Type");
  if (!text.empty()) {
    return "<Type> is " + Quoted(text) + (text == number ? "" : ", which reads as " + number);
  }
  const bool isEmpty = !Select(description.file->tree.root, "Type").empty();
  return std::string(isEmpty ? "<Type> is empty" : "<Plugin> without <Type>") +
         ", which reads as " + number;
}

/// The type that was probably meant, by what lies on disk.
std::string Meant(const CheckedProduct& product, const PluginEntry& entry) {
  const bool isLibrary = product.Exists(product.bin + "/" + entry.description->id + ".dll");
  const bool isProgram = product.Exists(product.bin + "/" + entry.id + ".exe");
  if (isLibrary == isProgram) return "; a library has 2, a program 1";
  return isLibrary ? "; 2 was probably meant, a library" : "; 1 was probably meant, a program";
}

void Check(const CheckedProduct& product, RuleFindings& findings) {
  std::set<const Description*> reported;
  for (const PluginEntry* entry : UsedEntries(product)) {
    if (entry->description == nullptr || ListOf(*entry) != PluginList::kNone) continue;
    const Description& description = *entry->description;
    if (!description.file->HasContent() || !reported.insert(&description).second) continue;
    RuleFinding finding;
    finding.place = PlaceAt(*description.file, "Type");
    finding.message = WhatItReads(description) + ": the frame drops " + Quoted(entry->id) +
                      ", which never starts" + Meant(product, *entry);
    finding.plugin = entry->id;
    finding.subject = "Type";
    findings.push_back(std::move(finding));
  }
}

}  // namespace

TEV_RULE(WrongType) = {
    "TEV209",
    Severity::kError,
    "The type of a plugin is neither 1 nor 2",
    "<Type> is 1 for a program and 2 for a library. The frame reads the digits at its beginning: "
    "\"2.0\" is 2, a word is 0, and without <Type> it is -1. A plugin with any other type is "
    "dropped; only the log has a line. Drivers of an addon are kept, whatever their type.",
    "<Type>library</Type>",
    "Write <Type>2</Type> for a library, <Type>1</Type> for a program.",
    &Check};
