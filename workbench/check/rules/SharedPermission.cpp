#include <algorithm>
#include <array>
#include <cstddef>
#include <map>
#include <string>
#include <utility>
#include <vector>

#include "workbench/check/Rule.h"
#include "workbench/check/Words.h"

namespace {

constexpr std::array<const char*, 3> kPermissions = {
    "ResourcePermissionID", "ConfiguredPermissionID", "ControlPermissionID"};

constexpr char kNone[] = "-1";

constexpr std::size_t kMostPlaces = 6;

struct Use {
  const Description* description;
  const XmlNode* node;  // the element with the permission
};

/// The first use of each permission in each plugin, by the element's name and its text.
using Uses = std::map<std::pair<std::string, std::string>, std::vector<Use>>;

void AddUses(const Description& description, const XmlNode& item, Uses& uses) {
  for (const char* permission : kPermissions) {
    const auto found = Select(item, permission);
    if (found.empty() || found.front()->text.empty() || found.front()->text == kNone) continue;
    std::vector<Use>& known = uses[{permission, found.front()->text}];
    if (!known.empty() && known.back().description == &description) continue;
    known.push_back({&description, found.front()});
  }
}

void Report(const std::vector<Use>& uses, RuleFindings& findings) {
  const Use& first = uses.front();
  std::vector<std::string> plugins;
  plugins.reserve(uses.size());
  for (const Use& use : uses) plugins.push_back(use.description->id);
  RuleFinding finding;
  finding.place = PlaceOf(*first.description->file, *first.node);
  finding.message = "menu items of " + QuotedList(plugins) + " have one " + Tag(first.node->name) +
                    ", " + Quoted(first.node->text) +
                    ": who may use one of the items may use the others";
  for (std::size_t i = 1; i < std::min(uses.size(), kMostPlaces); ++i) {
    finding.related.push_back(
        {PlaceOf(*uses[i].description->file, *uses[i].node), "the same permission"});
  }
  finding.plugin = first.description->id;
  finding.subject = first.node->name + " " + first.node->text;
  findings.push_back(std::move(finding));
}

void Check(const CheckedProduct& product, RuleFindings& findings) {
  Uses uses;
  for (const auto& [id, description] : product.kept) {
    if (!description->file->HasContent()) continue;
    for (const ListEntry& listed : SelectList(description->file->tree.root, "MenuList/MenuItem")) {
      if (listed.node != nullptr) AddUses(*description, *listed.node, uses);
    }
  }
  for (const auto& [permission, plugins] : uses) {
    if (plugins.size() > 1) Report(plugins, findings);
  }
}

}  // namespace

TEV_RULE(SharedPermission) = {
    "TEV604",
    Severity::kWarning,
    "Menu items of different plugins have the same permission ID",
    "The menu items that plugins bring have IDs of permissions: <ResourcePermissionID>, "
    "<ConfiguredPermissionID>, <ControlPermissionID>. The frame hands them on. When items of two "
    "plugins have the same ID in the same element, granting it for one grants it for the other; "
    "this happens when a description was copied. \"-1\" and an empty text are no permission.",
    "<ResourcePermissionID>alarm.view</ResourcePermissionID> in two plugins",
    "Give each plugin permissions of its own, if that was not meant.",
    &Check};
