#include <optional>
#include <set>
#include <string>

#include "workbench/check/JudgedDependency.h"
#include "workbench/check/Rule.h"
#include "workbench/check/WaitingPlugins.h"
#include "workbench/check/Words.h"

namespace {

void Check(const CheckedProduct& product, RuleFindings& findings) {
  std::optional<WaitingPlugins> waiting;
  std::set<std::string> known;
  for (const JudgedDependency& dependency : JudgedDependencies(product)) {
    const std::string& id = dependency.plugin->id;
    if (!dependency.OrdersTheStart() || dependency.on->id != id) continue;
    if (!known.insert(id).second) continue;  // TEV305 reports the second time
    if (!waiting) waiting.emplace(product.graph);
    findings.push_back(FindingOn(dependency, "ID",
                                 Quoted(id) +
                                     " depends on itself: it waits for ever, and the start "
                                     "never ends" +
                                     waiting->Clause({id})));
  }
}

}  // namespace

TEV_RULE(DependencyOnItself) = {
    "TEV306",
    Severity::kError,
    "A plugin depends on itself and is never started",
    "The frame starts a plugin when all that it depends on have finished. One that depends on "
    "itself never does, nor do those that depend on it, and the start never ends by itself.",
    R"(<Plugin ID="alarm.server"/> in the <DependencyList> of alarm.server)",
    "Remove the dependency, or correct its ID.",
    &Check};
