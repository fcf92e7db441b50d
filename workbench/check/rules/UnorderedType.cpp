#include <string>

#include "workbench/check/DependentTypes.h"
#include "workbench/check/NumberText.h"
#include "workbench/check/Rule.h"
#include "workbench/check/Words.h"

namespace {

void Check(const CheckedProduct& product, RuleFindings& findings) {
  for (const JudgedDependency& dependency : TypesThatOrderNothing(product)) {
    const std::string& text = dependency.on->node->Value("DependentType");
    if (IsPlainNumber(text) || ExceedsInt(text)) continue;  // TEV313, TEV116
    findings.push_back(
        FindingOn(dependency, "DependentType",
                  DependsOn(dependency) + " with DependentType " + Quoted(text) +
                      ", which reads as " + std::to_string(dependency.on->dependentType) +
                      ": only 1 orders the start, and " + Quoted(dependency.plugin->id) +
                      " does not wait for it; write 1, or leave the attribute out"));
  }
}

}  // namespace

TEV_RULE(UnorderedType) = {
    "TEV304",
    Severity::kWarning,
    "A DependentType is no number, so that the dependency orders nothing",
    "DependentType is read as a number: digits at its beginning count, and a word reads as 0. Only "
    "1, or no DependentType at all, makes the plugin wait for the other one.",
    R"(<Plugin ID="storage.server" DependentType="true"/>)",
    "Write DependentType=\"1\", or leave the attribute out.",
    &Check};
