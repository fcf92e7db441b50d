#include "workbench/check/JudgedDependency.h"

#include <algorithm>
#include <set>
#include <utility>

#include "workbench/check/Words.h"
#include "workbench/output/Nearest.h"

namespace {

constexpr std::size_t kMostRelated = 20;

class Collector {
 public:
  explicit Collector(const CheckedProduct& product) : m_product(product) {}

  void Add(const std::vector<PluginDescription>& plugins, PluginRole role) {
    for (const PluginDescription& plugin : plugins) {
      const Description* description = m_product.Kept(plugin.ID);
      // An ID may be that of a library and of an executable; the library's description is kept.
      if (description == nullptr || !m_seen.insert(description).second) continue;
      for (const Dependency& dependency : description->dependencies) {
        if (dependency.node != nullptr) m_found.push_back({description, role, &dependency});
      }
    }
  }

  std::vector<JudgedDependency> Found() { return std::move(m_found); }

 private:
  const CheckedProduct& m_product;
  std::set<const Description*> m_seen;
  std::vector<JudgedDependency> m_found;
};

}  // namespace

std::vector<JudgedDependency> JudgedDependencies(const CheckedProduct& product) {
  if (!product.File(FileKind::kProduct).HasContent()) return {};
  Collector collector(product);
  collector.Add(product.model.ServerPluginDescriptions, PluginRole::kLibrary);
  collector.Add(product.model.ExePluginDescriptions, PluginRole::kExecutable);
  collector.Add(product.model.DriverPluginDescriptions, PluginRole::kDriver);
  return collector.Found();
}

bool WaitsFor(const CheckedProduct& product, const std::string& id, const std::string& other) {
  const auto found = product.graph.dependsOn.find(id);
  return found != product.graph.dependsOn.end() &&
         std::find(found->second.begin(), found->second.end(), other) != found->second.end();
}

ProductPlatform PlatformOf(const CheckedProduct& product) {
  const CheckedFile& file = product.File(FileKind::kProduct);
  if (!file.HasContent()) return {};
  const std::vector<const XmlNode*> found = Select(file.tree.root, "Platform");
  if (found.empty()) return {};
  return {found.front(), found.front()->Value("ID"), found.front()->Value("Version")};
}

bool MeansThePlatform(const CheckedProduct& product, const ProductPlatform& platform,
                      const Dependency& dependency) {
  if (dependency.node == nullptr || dependency.category != DependencyCategory::kOther) return false;
  const std::string& category = dependency.node->Value("Category");
  if (category.empty() || !Nearest(category, {"platform"}).empty()) return true;
  return !dependency.id.empty() && dependency.id == platform.id && !product.Starts(dependency.id);
}

std::vector<JudgedDependency> DependenciesOnPlugins(const CheckedProduct& product) {
  const ProductPlatform platform = PlatformOf(product);
  std::vector<JudgedDependency> found;
  for (const JudgedDependency& dependency : JudgedDependencies(product)) {
    const bool isMeant = dependency.OrdersTheStart() && !dependency.on->id.empty() &&
                         !MeansThePlatform(product, platform, *dependency.on);
    if (isMeant) found.push_back(dependency);
  }
  return found;
}

RuleFinding FindingOn(const JudgedDependency& dependency, const char* attribute,
                      std::string message) {
  RuleFinding finding;
  finding.place = PlaceOf(*dependency.plugin->file, *dependency.on->node, attribute);
  finding.message = std::move(message);
  finding.plugin = dependency.plugin->id;
  finding.subject = dependency.on->id;
  return finding;
}

std::string DependsOn(const JudgedDependency& dependency) {
  return Quoted(dependency.plugin->id) + " depends on " + Quoted(dependency.on->id);
}

void FindingsByTarget::Add(const JudgedDependency& dependency, const std::string& message) {
  RuleFinding finding = FindingOn(dependency, "ID", message);
  const auto [found, isNew] = m_known.emplace(dependency.on->id, Known{m_findings.size(), "", 0});
  if (isNew) {
    m_findings.push_back(std::move(finding));
    return;
  }
  Known& known = found->second;
  std::vector<RelatedPlace>& related = m_findings[known.position].related;
  if (related.size() < kMostRelated) {
    known.last = DependsOn(dependency) + " too";
    related.push_back({finding.place, known.last});
  } else {
    related.back().message = known.last + ", as " + std::to_string(++known.more) + " more do";
  }
}
