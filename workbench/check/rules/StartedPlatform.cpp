#include <string>

#include "workbench/check/JudgedDependency.h"
#include "workbench/check/Rule.h"
#include "workbench/check/Words.h"

namespace {

void Check(const CheckedProduct& product, RuleFindings& findings) {
  const ProductPlatform platform = PlatformOf(product);
  for (const JudgedDependency& dependency : JudgedDependencies(product)) {
    const std::string& id = dependency.on->id;
    const bool isJudged = dependency.role == PluginRole::kLibrary && dependency.IsOnPlatform() &&
                          !id.empty() && id != platform.id;
    if (!isJudged || !product.Starts(id) || WaitsFor(product, dependency.plugin->id, id)) continue;
    const bool isPlugin = product.Kept(id) != nullptr;
    findings.push_back(FindingOn(
        dependency, "ID",
        Quoted(dependency.plugin->id) + " depends on the platform " + Quoted(id) + ", which is a " +
            (isPlugin ? "plugin" : "sub platform") +
            " that the frame starts: " + Quoted(dependency.plugin->id) + " does not wait for it; " +
            (isPlugin ? "did you mean <Plugin>?" : "add Category=\"subplatform\"")));
  }
}

}  // namespace

TEV_RULE(StartedPlatform) = {
    "TEV310",
    Severity::kWarning,
    "A dependency on a platform names a plugin or sub platform and orders nothing",
    "A <Platform> dependency whose Category is \"platform\" or absent names the product's platform "
    "and never orders the start, even if a plugin or sub platform has its ID.",
    R"(<Platform ID="video.platform" Version="1.4.0"/>, and video.platform is a sub platform)",
    "Write <Plugin> for a plugin; add Category=\"subplatform\" for a sub platform.",
    &Check};
