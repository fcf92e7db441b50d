#include <set>
#include <string>
#include <vector>

#include "workbench/check/LibraryWords.h"
#include "workbench/check/Rule.h"
#include "workbench/check/Words.h"

namespace {

/// Whether `id` waits for `other`, directly or not.
bool WaitsFor(const CheckedProduct& product, const std::string& id, const std::string& other) {
  std::vector<std::string> queue = {id};
  std::set<std::string> known = {id};
  for (std::size_t i = 0; i < queue.size(); ++i) {
    const auto found = product.graph.dependsOn.find(queue[i]);
    if (found == product.graph.dependsOn.end()) continue;
    for (const std::string& next : found->second) {
      if (next == other) return true;
      if (known.insert(next).second) queue.push_back(next);
    }
  }
  return false;
}

/// What to do: a dependency that would close a cycle is no remedy.
std::string Remedy(const CheckedProduct& product, const std::string& id, const std::string& other) {
  if (WaitsFor(product, other, id)) {
    return "; " + Quoted(other) + " waits for " + Quoted(id) +
           ", so a dependency would close a cycle: move what both use into a library of its own";
  }
  return "; add <Plugin ID=" + Quoted(other) + "/> to <DependencyList>";
}

void Check(const CheckedProduct& product, RuleFindings& findings) {
  for (const auto& [id, library] : product.libraries) {
    if (!product.Starts(id)) continue;
    for (const PluginImport& import : library->imports) {
      const std::string& other = import.plugin;
      if (!product.Starts(other) || WaitsFor(product, id, other)) continue;
      const std::string& file = product.libraries.at(other)->name;
      RuleFinding finding = LibraryFinding(id, *library, other);
      const Description* description = product.Kept(id);
      if (description != nullptr) finding.place = PlaceAt(*description->file, "DependencyList");
      finding.message =
          Quoted(id) +
          (import.symbols.empty() ? " is linked with "
                                  : " imports " + QuotedList(import.symbols) + " from ") +
          file + " but does not wait for " + Quoted(other) +
          ": the loader maps that library without calling its Init, and " + Quoted(id) +
          " may call it too early" + Remedy(product, id, other);
      finding.related = {{{library->name, 0, 0}, "needs " + file}};
      findings.push_back(std::move(finding));
    }
  }
}

}  // namespace

TEV_RULE(ImportWithoutDependency) = {
    "TEV414",
    Severity::kWarning,
    "A library imports from another plugin's library, and no dependency orders their start",
    "When a plugin's library is linked with another plugin's, the loader maps both, but only the "
    "frame calls Init, in the order of the dependencies. Without a dependency the two are started "
    "at "
    "the same time, and the first may call into the second before its Init has run. At the stop "
    "the second may be stopped first. That it works today is a matter of time.",
    R"(report.server.dll is linked with storage.server.dll, and its <DependencyList> is empty)",
    R"(Declare the dependency: <Plugin ID="storage.server"/> in <DependencyList>.)",
    &Check};
