#include <string>

#include "workbench/check/DependencyTarget.h"
#include "workbench/check/JudgedDependency.h"
#include "workbench/check/Rule.h"
#include "workbench/check/Words.h"

namespace {

/// What the target is, as "a driver: ..." or "which ..."; empty when it is started or not known.
std::string WhatItIs(const DependencyTarget& target) {
  switch (target.kind) {
    case TargetKind::kExecutable:
      return "an executable: the frame waits only for libraries that it starts itself";
    case TargetKind::kDriver:
      return "a driver: the frame leaves drivers to the platform and waits for none";
    case TargetKind::kTrimmed:
      return "which is dropped: module 2 starts only plugins whose IsDistributed is 1";
    case TargetKind::kWrongType:
      return "which is dropped: the Type in its description reads as " +
             std::to_string(target.description->type) + ", and only 1 and 2 are types";
    case TargetKind::kEmpty:
      return "which is dropped: its description, " + target.entry->descriptionFile->readName +
             ", reads as empty";
    case TargetKind::kWithoutID:
      return "which is dropped: its description, " + target.entry->descriptionFile->readName +
             ", has no ID";
    case TargetKind::kOtherID:
      return "which is listed by this ID but started by the one in its description, " +
             Quoted(target.description->id);
    default:
      return std::string();
  }
}

/// Whether the product would have it, and the fault is in its description, not in the dependency.
bool IsDropped(TargetKind kind) {
  return kind == TargetKind::kTrimmed || kind == TargetKind::kWrongType ||
         kind == TargetKind::kEmpty || kind == TargetKind::kWithoutID;
}

void Check(const CheckedProduct& product, RuleFindings& findings) {
  DependencyTargets targets(product);
  FindingsByTarget byTarget(findings);
  for (const JudgedDependency& dependency : DependenciesOnPlugins(product)) {
    const Dependency& on = *dependency.on;
    const DependencyTarget target = targets.Find(on.id);
    const std::string what = WhatItIs(target);
    if (what.empty()) continue;
    const bool isDropped = IsDropped(target.kind);
    const std::string message = DependsOn(dependency) + ", " + what + "; " +
                                Quoted(dependency.plugin->id) +
                                (isDropped ? " starts without it" : " does not wait for it");
    if (isDropped || target.kind == TargetKind::kOtherID) {
      byTarget.Add(dependency, message);
    } else {
      findings.push_back(FindingOn(dependency, "ID", message));
    }
  }
}

}  // namespace

TEV_RULE(UnstartedDependency) = {
    "TEV302",
    Severity::kWarning,
    "A plugin depends on something that the frame does not start",
    "Only plugins that are libraries and sub platforms are started by the frame, and only these "
    "are waited for. A dependency on an executable or a driver orders nothing, and neither does "
    "one on a plugin that is dropped: because its description reads as empty or has another Type "
    "or no ID, or because it is not distributed and the running module is 2. All that depend on "
    "one dropped plugin are in one finding.",
    R"(<Plugin ID="media.recorder"/> in the <DependencyList> of a library; it is an executable)",
    "Mend the description of a plugin that is dropped. Remove a dependency on an executable or a "
    "driver, or let the plugin itself wait for it.",
    &Check};
