#include <algorithm>
#include <set>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "workbench/check/DependencyTarget.h"
#include "workbench/check/JudgedDependency.h"
#include "workbench/check/Rule.h"
#include "workbench/check/Words.h"
#include "workbench/output/Nearest.h"

namespace {

/// The part of an ID before its first "."; empty without one.
std::string GroupOf(std::string_view id) {
  const std::size_t dot = id.find('.');
  return std::string(id.substr(0, dot == std::string_view::npos ? 0 : dot));
}

std::set<std::string> Groups(const CheckedProduct& product) {
  std::set<std::string> groups;
  for (const std::string& id : product.graph.ids) groups.insert(GroupOf(id));
  for (const auto& [id, description] : product.kept) groups.insert(GroupOf(id));
  return groups;
}

/// "; did you mean "storage.server"?", for "storage".
std::string OfGroup(const std::string& group, const std::vector<std::string>& ids) {
  const auto found = std::find_if(ids.begin(), ids.end(),
                                  [&](const std::string& id) { return GroupOf(id) == group; });
  return found == ids.end() ? std::string() : "; did you mean " + Quoted(*found) + "?";
}

void Check(const CheckedProduct& product, RuleFindings& findings) {
  DependencyTargets targets(product);
  const std::set<std::string> groups = Groups(product);
  const ProductPlatform platform = PlatformOf(product);
  for (const JudgedDependency& dependency : JudgedDependencies(product)) {
    const Dependency& on = *dependency.on;
    const bool isJudged = dependency.role == PluginRole::kExecutable &&
                          !dependency.IsOnPlatform() && !on.id.empty() &&
                          !MeansThePlatform(product, platform, on);
    if (!isJudged) continue;
    const std::string group = GroupOf(on.id);
    std::string loss;
    std::string meant;
    if (group.empty()) {
      loss =
          "an executable's dependency is passed on as the part of its ID before the first dot, "
          "and here that is empty";
      meant = OfGroup(on.id, product.graph.ids);
    } else if (groups.count(group) == 0 && targets.Find(on.id).kind == TargetKind::kUnknown) {
      loss = "the framework for executables is given the group " + Quoted(group) +
             ", and no plugin of the product is in it";
      meant = DidYouMean(on.id, product.graph.ids);
    }
    if (loss.empty()) continue;
    std::string message = DependsOn(dependency) + ": ";
    message += loss;
    message += meant;
    findings.push_back(FindingOn(dependency, "ID", std::move(message)));
  }
}

}  // namespace

TEV_RULE(LostGroup) = {
    "TEV311",
    Severity::kWarning,
    "A dependency of an executable gives the framework no group, or one without plugins",
    "The frame starts no executable. It gives the framework for executables the groups that each "
    "one depends on: the part of each dependency's ID before its first dot. An ID without a dot "
    "gives no group, and a misspelt one gives a group that no plugin is in.",
    R"(<Plugin ID="storage"/> in the <DependencyList> of an executable)",
    "Write the whole ID of the plugin.",
    &Check};
