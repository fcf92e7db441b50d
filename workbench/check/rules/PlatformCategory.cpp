#include <string>

#include "workbench/check/JudgedDependency.h"
#include "workbench/check/Rule.h"
#include "workbench/check/Words.h"
#include "workbench/output/Nearest.h"

namespace {

/// What the frame makes of it instead.
std::string Effect(const CheckedProduct& product, const JudgedDependency& dependency) {
  const std::string id = Quoted(dependency.on->id);
  const std::string plugin = Quoted(dependency.plugin->id);
  if (dependency.role == PluginRole::kExecutable) {
    return "the framework for executables is not given its version as that of the platform";
  }
  return product.Starts(dependency.on->id) ? plugin + " waits for " + id : "orders nothing";
}

std::string Meant(const CheckedProduct& product, const ProductPlatform& platform,
                  const JudgedDependency& dependency) {
  const std::string& category = dependency.on->node->Value("Category");
  std::string meant = DidYouMean(category, {"platform"});
  if (meant.empty() && dependency.on->id == platform.id) {
    meant = "; " + Quoted(platform.id) + " is the product's platform: leave the attribute out";
  }
  if (meant.empty()) {
    meant = product.Starts(dependency.on->id) ? "; write \"subplatform\" if that is meant"
                                              : "; leave the attribute out if that is not meant";
  }
  return meant;
}

void Check(const CheckedProduct& product, RuleFindings& findings) {
  const ProductPlatform platform = PlatformOf(product);
  for (const JudgedDependency& dependency : JudgedDependencies(product)) {
    const bool isJudged = dependency.role != PluginRole::kDriver && !dependency.on->id.empty();
    if (!isJudged || !MeansThePlatform(product, platform, *dependency.on)) continue;
    findings.push_back(FindingOn(
        dependency, "Category",
        DependsOn(dependency) + " with Category " + Quoted(dependency.on->node->Value("Category")) +
            ", not \"platform\": it reads as a dependency on a plugin, and " +
            Effect(product, dependency) + Meant(product, platform, dependency)));
  }
}

}  // namespace

TEV_RULE(PlatformCategory) = {
    "TEV309",
    Severity::kWarning,
    "A Category other than \"platform\" makes a dependency on the platform one on a plugin",
    "A <Platform> dependency is one on the product's platform when its Category is exactly "
    "\"platform\", or when it has none. With any other Category, also an empty one, it orders the "
    "start like a dependency on a plugin, which is meant for sub platforms. The rule reports a "
    "Category that is nearly \"platform\" or empty, and any other on the product's platform.",
    R"(<Platform ID="site.platform" Version="3.2.0" Category="Platform"/>)",
    "Leave the attribute out for the product's platform; write \"subplatform\" for a sub platform.",
    &Check};
