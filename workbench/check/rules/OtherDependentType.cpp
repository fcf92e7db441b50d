#include <string>

#include "workbench/check/DependentTypes.h"
#include "workbench/check/NumberText.h"
#include "workbench/check/Rule.h"
#include "workbench/check/Words.h"

namespace {

void Check(const CheckedProduct& product, RuleFindings& findings) {
  for (const JudgedDependency& dependency : TypesThatOrderNothing(product)) {
    if (!IsPlainNumber(dependency.on->node->Value("DependentType"))) continue;  // TEV304, TEV116
    findings.push_back(FindingOn(dependency, "DependentType",
                                 DependsOn(dependency) + " with DependentType " +
                                     std::to_string(dependency.on->dependentType) +
                                     ": only 1 orders the start, and " +
                                     Quoted(dependency.plugin->id) + " does not wait for it"));
  }
}

}  // namespace

TEV_RULE(OtherDependentType) = {
    "TEV313",
    Severity::kNote,
    "A dependency has a DependentType other than 1 and orders nothing",
    "The frame orders the start by the dependencies whose DependentType is 1 or absent. Others are "
    "only handed to the platform, which may give them a meaning.",
    R"(<Plugin ID="storage.server" DependentType="2"/>)",
    "Nothing, if the plugin can start before the other one; otherwise write DependentType=\"1\".",
    &Check};
