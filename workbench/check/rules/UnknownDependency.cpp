#include <map>
#include <string>
#include <vector>

#include "workbench/check/DependencyTarget.h"
#include "workbench/check/JudgedDependency.h"
#include "workbench/check/Rule.h"
#include "workbench/check/Words.h"
#include "workbench/output/Nearest.h"

namespace {

/// Suggests IDs that are started, as long as that is not too much work.
class Suggestions {
 public:
  explicit Suggestions(const CheckedProduct& product) : m_ids(product.graph.ids) {}

  std::string For(const std::string& id) {
    const auto [known, isNew] = m_known.emplace(id, std::string());
    if (isNew && m_compared < kMostCompared) {
      m_compared += m_ids.size();
      known->second = DidYouMean(id, m_ids);
    }
    return known->second;
  }

 private:
  static constexpr std::size_t kMostCompared = 2'000'000;

  const std::vector<std::string>& m_ids;
  std::map<std::string, std::string> m_known;
  std::size_t m_compared = 0;
};

std::string PluginsOf(const InstalledEntry* addon) {
  if (addon == nullptr || addon->plugins.empty()) return std::string();
  std::vector<std::string> ids;
  for (const PluginEntry* entry : addon->plugins) ids.push_back(entry->id);
  return "; it brings " + QuotedList(ids);
}

/// What the ID is, as "which ...", and what was probably meant; nothing when no plugin is missing
/// or another rule reports it.
struct Answer {
  std::string what;
  std::string meant;
  bool once = false;  // one finding for all that depend on it: the fault is there
};

Answer AnswerFor(const DependencyTarget& target, const Dependency& on,
                 const CheckedProduct& product, Suggestions& suggestions) {
  switch (target.kind) {
    case TargetKind::kUnknown:
      return {"which the product does not have", suggestions.For(on.id), false};
    case TargetKind::kPlatform:
      return {"which is the product's platform, not a plugin", "; did you mean <Platform>?", false};
    case TargetKind::kAddon:
      return {"which is an addon, not a plugin", PluginsOf(target.addon), false};
    case TargetKind::kTool:
      return {"which is a tool, not a plugin", std::string(), false};
    case TargetKind::kDescribedOnly:
      return {"which has a description in " + product.bin + "/META_INFO/" + on.id +
                  " but is listed nowhere, so that it is not started",
              "; to start it, list it in Product.xml", true};
    case TargetKind::kOfAddon:
      return {"a plugin of the addon " + Quoted(target.addon->id) +
                  ", which is installed but not added to the product",
              std::string(), true};
    default:
      return {};
  }
}

void Check(const CheckedProduct& product, RuleFindings& findings) {
  DependencyTargets targets(product);
  Suggestions suggestions(product);
  FindingsByTarget byTarget(findings);
  for (const JudgedDependency& dependency : DependenciesOnPlugins(product)) {
    const Dependency& on = *dependency.on;
    const Answer answer = AnswerFor(targets.Find(on.id), on, product, suggestions);
    if (answer.what.empty()) continue;
    const std::string message = DependsOn(dependency) + ", " + answer.what + ": " +
                                Quoted(dependency.plugin->id) + " does not wait for it" +
                                answer.meant;
    if (answer.once) {
      byTarget.Add(dependency, message);
    } else {
      findings.push_back(FindingOn(dependency, "ID", message));
    }
  }
}

}  // namespace

TEV_RULE(UnknownDependency) = {
    "TEV301",
    Severity::kError,
    "A plugin depends on an ID that the product does not have",
    "The frame ignores a dependency on an ID that it does not start, without a message. The plugin "
    "starts without waiting, perhaps before the plugin that was meant. IDs of addons, of tools and "
    "of the platform are no plugins. A plugin that is described in META_INFO but listed nowhere, "
    "and one of an addon that is not added to the product, is not started either.",
    R"(<Plugin ID="stroage.server"/> in <DependencyList>)",
    "Correct the ID, list the plugin, or remove the dependency.",
    &Check};
