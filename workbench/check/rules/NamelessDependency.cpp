#include <algorithm>
#include <string>

#include "workbench/check/JudgedDependency.h"
#include "workbench/check/Rule.h"
#include "workbench/check/Words.h"

namespace {

/// Whether the element has an attribute "Id" or "id": the rule on unknown attributes reports that.
bool HasMisspeltID(const XmlNode& node) {
  const auto isID = [](const XmlAttribute& attribute) {
    const std::string& name = attribute.name;
    return name.size() == 2 && (name[0] == 'I' || name[0] == 'i') &&
           (name[1] == 'D' || name[1] == 'd');
  };
  return std::any_of(node.attributes.begin(), node.attributes.end(), isID);
}

std::string Effect(const CheckedProduct& product, const JudgedDependency& dependency) {
  const bool isID = product.Starts(std::string());  // a sub platform without an ID is started
  switch (dependency.role) {
    case PluginRole::kLibrary:
      return isID && dependency.OrdersTheStart() ? "waits for the sub platform without an ID"
                                                 : "orders nothing";
    case PluginRole::kExecutable:
      return dependency.IsOnPlatform() ? "names no platform"
                                       : "adds no group to those of the executable";
    default:
      return "names nothing";
  }
}

void Check(const CheckedProduct& product, RuleFindings& findings) {
  for (const JudgedDependency& dependency : JudgedDependencies(product)) {
    const XmlNode& node = *dependency.on->node;
    if (!dependency.on->id.empty()) continue;
    const XmlAttribute* id = node.Attribute("ID");
    if (id == nullptr && HasMisspeltID(node)) continue;
    findings.push_back(FindingOn(
        dependency, "ID",
        Tag(node.name) + " in the dependencies of " + Quoted(dependency.plugin->id) + " has " +
            (id == nullptr ? "no ID: it " : "an empty ID: it ") + Effect(product, dependency)));
  }
}

}  // namespace

TEV_RULE(NamelessDependency) = {
    "TEV308",
    Severity::kWarning,
    "A dependency has no ID",
    "The ID says what the plugin depends on. The frame ignores a dependency without one, "
    "without a message, unless the product has a sub platform without an ID.",
    R"(<Plugin Version="2.5.0"/> in <DependencyList>)",
    "Add the ID, or remove the element.",
    &Check};
