#include <map>
#include <string>
#include <string_view>
#include <tuple>
#include <utility>

#include "workbench/check/JudgedDependency.h"
#include "workbench/check/Rule.h"
#include "workbench/check/Words.h"

namespace {

std::string WithVersion(const std::string& version) {
  return version.empty() ? "without a version" : "with version " + Quoted(version);
}

/// What the two dependencies differ in, and what the frame makes of that.
std::string Difference(const JudgedDependency& first, const JudgedDependency& again) {
  const std::string& before = first.on->version;
  const std::string& version = again.on->version;
  const bool ordersOnce = first.OrdersTheStart() != again.OrdersTheStart();
  if (ordersOnce) {
    const char* which = first.OrdersTheStart() ? "first" : "second";
    return "; only the " + std::string(which) + " orders the start, and that is enough for " +
           Quoted(again.plugin->id) + " to wait";
  }
  if (before == version) return "; once is enough";
  const std::string versions = "; once " + WithVersion(before) + ", here " + WithVersion(version);
  if (again.IsOnPlatform() && again.role == PluginRole::kExecutable) {
    return versions + ": the framework for executables is given the last one";
  }
  return versions + ": the frame compares neither with what is there";
}

void Check(const CheckedProduct& product, RuleFindings& findings) {
  using Key = std::tuple<const Description*, bool, std::string_view>;
  std::map<Key, JudgedDependency> known;
  for (const JudgedDependency& again : JudgedDependencies(product)) {
    if (again.on->id.empty()) continue;
    const auto [found, isNew] =
        known.emplace(Key(again.plugin, again.IsOnPlatform(), again.on->id), again);
    if (isNew) continue;
    const JudgedDependency& first = found->second;
    RuleFinding finding =
        FindingOn(again, "ID", DependsOn(again) + " a second time" + Difference(first, again));
    finding.related.push_back(
        {PlaceOf(*first.plugin->file, *first.on->node, "ID"), "the first time"});
    findings.push_back(std::move(finding));
  }
}

}  // namespace

TEV_RULE(RepeatedDependency) = {
    "TEV305",
    Severity::kNote,
    "A plugin lists the same dependency twice",
    "A plugin waits for another one when at least one of its dependencies on it orders the start; "
    "more of them change nothing. Of several dependencies of an executable on platforms, the "
    "version of the last one is given to the framework for executables.",
    R"(<Plugin ID="storage.server"/> twice in one <DependencyList>)",
    "Remove the one that is not meant.",
    &Check};
