#include <algorithm>
#include <string>
#include <utility>
#include <vector>

#include "workbench/check/JudgedDependency.h"
#include "workbench/check/Rule.h"
#include "workbench/check/Words.h"

namespace {

/// The dependencies of each plugin on platforms, one list for each plugin.
std::vector<std::vector<JudgedDependency>> PlatformDependencies(const CheckedProduct& product) {
  std::vector<std::vector<JudgedDependency>> found;
  const Description* last = nullptr;
  for (const JudgedDependency& dependency : JudgedDependencies(product)) {
    if (!dependency.IsOnPlatform()) continue;
    if (dependency.plugin != last) found.emplace_back();
    last = dependency.plugin;
    found.back().push_back(dependency);
  }
  return found;
}

bool Names(const std::vector<JudgedDependency>& dependencies, const std::string& platform) {
  return std::any_of(dependencies.begin(), dependencies.end(),
                     [&](const JudgedDependency& one) { return one.on->id == platform; });
}

void Check(const CheckedProduct& product, RuleFindings& findings) {
  const ProductPlatform platform = PlatformOf(product);
  if (platform.id.empty()) return;
  for (const std::vector<JudgedDependency>& all : PlatformDependencies(product)) {
    // A plugin for several platforms names each; of an executable's, only the last one counts.
    const bool isExecutable = all.front().role == PluginRole::kExecutable;
    if (!isExecutable && Names(all, platform.id)) continue;
    for (const JudgedDependency& one : all) {
      const std::string& id = one.on->id;
      const bool isLast = &one == &all.back();
      if (id.empty() || id == platform.id || (isExecutable && !isLast)) continue;
      if (!isExecutable && product.Starts(id)) continue;  // TEV310 reports these
      std::string message = Quoted(one.plugin->id) + " depends on the platform " + Quoted(id) +
                            ", but the product's platform is " + Quoted(platform.id);
      if (isExecutable) {
        message += ": the framework for executables is given the version " +
                   Quoted(one.on->version) + " as that of the platform";
        if (product.Starts(id)) {
          message += "; add Category=\"subplatform\"";
        } else if (Names(all, platform.id)) {
          message += "; put the dependency on " + Quoted(platform.id) + " last";
        }
      } else {
        message += ": the frame does not compare them";
      }
      findings.push_back(FindingOn(one, "ID", std::move(message)));
    }
  }
}

}  // namespace

TEV_RULE(OtherPlatform) = {
    "TEV312",
    Severity::kWarning,
    "A plugin depends on another platform than the product's",
    "A product has one platform, the <Platform> of Product.xml. The frame does not compare the "
    "platform that a plugin depends on with it. For an executable, the version of its last "
    "dependency on a platform is given to the framework for executables, whatever its ID. A plugin "
    "that names the product's platform beside others is not reported, nor is an executable that "
    "names it last.",
    R"(<Platform ID="sight.platform" Version="3.2.0"/>, and Product.xml has site.platform)",
    "Correct the ID; put the product's platform last in the description of an executable.",
    &Check};
