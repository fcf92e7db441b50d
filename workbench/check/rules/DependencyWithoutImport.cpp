#include <algorithm>
#include <string>
#include <vector>

#include "workbench/check/LibraryWords.h"
#include "workbench/check/Rule.h"
#include "workbench/check/Words.h"

namespace {

bool IsGoodLibrary(const CheckedProduct& product, const std::string& id) {
  const auto found = product.libraries.find(id);
  return found != product.libraries.end() && product.Starts(id) && !found->second->isProgram &&
         found->second->state == PluginLibrary::State::kGood;
}

bool ImportsFrom(const PluginLibrary& library, const std::string& id) {
  return std::any_of(library.imports.begin(), library.imports.end(),
                     [&](const PluginImport& import) { return import.plugin == id; });
}

/// The dependencies on plugins with a library, that order the start.
std::vector<const Dependency*> JudgedDependencies(const CheckedProduct& product,
                                                  const Description& description) {
  std::vector<const Dependency*> judged;
  for (const Dependency& dependency : description.dependencies) {
    const bool isOnPlugin = dependency.node != nullptr && dependency.category == 1 &&
                            dependency.OrdersTheStart() && dependency.id != description.id;
    if (isOnPlugin && IsGoodLibrary(product, dependency.id)) judged.push_back(&dependency);
  }
  return judged;
}

void Check(const CheckedProduct& product, RuleFindings& findings) {
  for (const auto& [id, library] : product.libraries) {
    const Description* description = product.Kept(id);
    if (library->imports.empty() || description == nullptr || !product.Starts(id)) continue;
    std::vector<std::string> backed;
    std::vector<const Dependency*> others;
    for (const Dependency* dependency : JudgedDependencies(product, *description)) {
      if (ImportsFrom(*library, dependency->id)) {
        backed.push_back(dependency->id);
      } else {
        others.push_back(dependency);
      }
    }
    if (backed.empty()) continue;
    for (const Dependency* dependency : others) {
      RuleFinding finding;
      finding.place = PlaceOf(*description->file, *dependency->node, "ID");
      finding.plugin = id;
      finding.subject = dependency->id;
      finding.message = Quoted(id) + " waits for " + Quoted(dependency->id) +
                        " but imports nothing from its library, as it does from " +
                        QuotedList(backed) + "; if it does not use it at run time either, it " +
                        "could start earlier without this dependency";
      findings.push_back(std::move(finding));
    }
  }
}

}  // namespace

TEV_RULE(DependencyWithoutImport) = {
    "TEV415",
    Severity::kNote,
    "A dependency on a plugin from whose library nothing is imported",
    "A plugin may use another one without importing from its library: by a registry, by files, by "
    "messages. But when a plugin imports from some of the plugins on which it depends and from one "
    "not, that dependency may be left over. It only delays the start. A plugin that imports from "
    "none of those on which it depends is not judged.",
    R"(<Plugin ID="config.server"/> in the description of a plugin that no longer uses it)",
    "Remove the dependency if it is left over; otherwise ignore the note.",
    &Check};
