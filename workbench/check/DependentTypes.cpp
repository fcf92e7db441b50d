#include "workbench/check/DependentTypes.h"

std::vector<JudgedDependency> TypesThatOrderNothing(const CheckedProduct& product) {
  std::vector<JudgedDependency> found;
  for (const JudgedDependency& dependency : JudgedDependencies(product)) {
    const Dependency& on = *dependency.on;
    const bool isJudged = dependency.role == PluginRole::kLibrary && on.dependentType != 1 &&
                          !on.id.empty() && on.id != dependency.plugin->id;
    if (isJudged && !WaitsFor(product, dependency.plugin->id, on.id)) found.push_back(dependency);
  }
  return found;
}
