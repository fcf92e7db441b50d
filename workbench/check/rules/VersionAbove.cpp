#include <map>
#include <optional>
#include <string>

#include "workbench/check/JudgedDependency.h"
#include "workbench/check/Rule.h"
#include "workbench/check/VersionNumbers.h"
#include "workbench/check/Words.h"

namespace {

/// A version that the product has of something, and where it stands.
struct Available {
  std::string version;
  Place place;
};

/// What the product has, by ID.
class Versions {
 public:
  explicit Versions(const CheckedProduct& product)
      : m_product(product), m_platform(PlatformOf(product)) {
    for (const SubPlatform& one : product.subPlatforms) {
      if (one.node != nullptr) m_subPlatforms.emplace(one.id, &one);
    }
  }

  std::optional<Available> Of(const Dependency& dependency) const {
    const CheckedFile& product = m_product.File(FileKind::kProduct);
    if (dependency.category == DependencyCategory::kPlatform) {
      if (dependency.id != m_platform.id) return std::nullopt;
      return Available{m_platform.version, PlaceOf(product, *m_platform.node, "Version")};
    }
    const Description* kept = m_product.Kept(dependency.id);
    if (kept != nullptr) return Available{kept->version, PlaceAt(*kept->file, "Version")};
    const auto found = m_subPlatforms.find(dependency.id);
    if (found == m_subPlatforms.end()) return std::nullopt;
    const SubPlatform& one = *found->second;
    return Available{one.version, PlaceOf(product, *one.node, "Version")};
  }

  /// The version of another description of the plugin that would be enough; empty for none.
  std::string Dropped(const Dependency& dependency) {
    const Description* kept = m_product.Kept(dependency.id);
    if (kept == nullptr || dependency.category == DependencyCategory::kPlatform) return {};
    if (m_descriptions.empty()) {
      for (const Description& description : m_product.descriptions) {
        m_descriptions.emplace(description.id, &description);
      }
    }
    const auto [first, last] = m_descriptions.equal_range(dependency.id);
    for (auto at = first; at != last; ++at) {
      const Description& other = *at->second;
      const auto order = CompareVersions(other.version, dependency.version);
      // Texts are compared, so that this one lost.
      const bool lost = other.type == kept->type && other.version < kept->version;
      if (order && *order >= 0 && lost) return other.version;
    }
    return {};
  }

 private:
  const CheckedProduct& m_product;
  const ProductPlatform m_platform;
  std::map<std::string, const SubPlatform*> m_subPlatforms;
  std::multimap<std::string, const Description*> m_descriptions;  // filled when first needed
};

void Check(const CheckedProduct& product, RuleFindings& findings) {
  Versions versions(product);
  for (const JudgedDependency& dependency : JudgedDependencies(product)) {
    const Dependency& on = *dependency.on;
    if (on.version.empty() || on.id.empty() || on.id == dependency.plugin->id) continue;
    const std::optional<Available> available = versions.Of(on);
    if (!available) continue;
    const auto order = CompareVersions(on.version, available->version);
    if (!order || *order <= 0) continue;
    const std::string dropped = versions.Dropped(on);
    std::string message =
        Quoted(dependency.plugin->id) + " requires version " + on.version + " of " + Quoted(on.id) +
        ", available is " + available->version + ": " +
        (dependency.role == PluginRole::kLibrary ? "it starts all the same, and may fail later"
                                                 : "it is used all the same, and may fail");
    if (!dropped.empty()) {
      message += "; " + dropped + " is there too, but is dropped: as a text it is less than " +
                 available->version;
    }
    RuleFinding finding = FindingOn(dependency, "Version", message);
    finding.related.push_back(
        {available->place, Quoted(on.id) + " has version " + available->version});
    findings.push_back(std::move(finding));
  }
}

}  // namespace

TEV_RULE(VersionAbove) = {
    "TEV303",
    Severity::kWarning,
    "A plugin requires a higher version of something than the product has",
    "The frame never compares the version in a dependency with the one that is there: the plugin "
    "starts with the lower version and may fail, or work wrongly, only later. The rule compares "
    "versions of plugins, sub platforms and the product's platform as numbers, part by part, and "
    "does not judge versions that have other parts than numbers.",
    R"(<Plugin ID="storage.server" Version="2.8.0"/>, and the version of storage.server is 2.7.1)",
    "Upgrade what the plugin depends on, or lower the version if the plugin works with that.",
    &Check};
