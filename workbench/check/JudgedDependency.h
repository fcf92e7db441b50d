#pragma once

#include <map>
#include <string>
#include <vector>

#include "workbench/check/CheckedProduct.h"
#include "workbench/check/RuleFinding.h"

// The dependencies that rules judge, and the findings on them.

/// What the frame does with a plugin, and so with its dependencies.
enum class PluginRole {
  kLibrary,     // starts it, by its dependencies
  kExecutable,  // gives it to the framework for executables, with the groups of its dependencies
  kDriver       // leaves it to the platform
};

/// A dependency of a description that the frame keeps. Its `node` is not null.
struct JudgedDependency {
  const Description* plugin = nullptr;
  PluginRole role = PluginRole::kLibrary;
  const Dependency* on = nullptr;

  /// Whether the frame would wait for the plugin of that ID.
  bool OrdersTheStart() const { return role == PluginRole::kLibrary && on->OrdersTheStart(); }

  bool IsOnPlatform() const { return on->category == DependencyCategory::kPlatform; }
};

/// All of them, by the IDs of the plugins; none when Product.xml has no content, since the rules on
/// files report that.
std::vector<JudgedDependency> JudgedDependencies(const CheckedProduct& product);

/// Whether the frame waits for the plugin `other` before it starts `id`, by whatever dependency.
bool WaitsFor(const CheckedProduct& product, const std::string& id, const std::string& other);

/// The platform that Product.xml names.
struct ProductPlatform {
  const XmlNode* node = nullptr;  // null for none
  std::string id;
  std::string version;
};
ProductPlatform PlatformOf(const CheckedProduct& product);

/// Whether the dependency is in a <Platform> whose Category is not "platform", although that was
/// probably meant: misspelt, empty, or with the ID of the product's platform.
bool MeansThePlatform(const CheckedProduct& product, const ProductPlatform& platform,
                      const Dependency& dependency);

/// Those that were meant to order the start by waiting for a plugin: they have an ID and do not
/// mean a platform.
std::vector<JudgedDependency> DependenciesOnPlugins(const CheckedProduct& product);

/// A finding at `attribute` of the dependency, or at the dependency when it has none.
RuleFinding FindingOn(const JudgedDependency& dependency, const char* attribute,
                      std::string message);

/// `"a.server" depends on "b.server"`
std::string DependsOn(const JudgedDependency& dependency);

/// Adds one finding for each ID that dependencies name; those on the same ID are related places.
class FindingsByTarget {
 public:
  explicit FindingsByTarget(RuleFindings& findings) : m_findings(findings) {}

  void Add(const JudgedDependency& dependency, const std::string& message);

 private:
  struct Known {
    std::size_t position = 0;  // in the findings
    std::string last;          // the last related place's message, without how many more there are
    std::size_t more = 0;
  };

  RuleFindings& m_findings;
  std::map<std::string, Known> m_known;
};
