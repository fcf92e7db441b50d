#include <algorithm>
#include <map>
#include <set>
#include <string>
#include <vector>

#include "workbench/check/PortalItems.h"
#include "workbench/check/Rule.h"
#include "workbench/check/Suggestions.h"
#include "workbench/check/Words.h"

namespace {

using Items = std::vector<const XmlNode*>;

std::string WithoutDigits(std::string text) {
  text.erase(std::remove_if(text.begin(), text.end(), [](char c) { return c >= '0' && c <= '9'; }),
             text.end());
  return text;
}

/// What the name of an item was probably meant to be; empty for none, and for one that differs in
/// its digits alone: those are names of a series.
std::string Meant(Suggestions& suggestions, const std::string& name) {
  const std::string& meant = suggestions.For(name);
  return WithoutDigits(meant) == WithoutDigits(name) ? std::string() : meant;
}

std::set<std::string> Values(const Items& items, const char* attribute) {
  std::set<std::string> values;
  for (const XmlNode* item : items) values.insert(item->Value(attribute));
  values.erase(std::string());
  return values;
}

bool HaveCommon(const std::set<std::string>& a, const std::set<std::string>& b) {
  return std::any_of(a.begin(), a.end(), [&](const std::string& one) { return b.count(one) != 0; });
}

void Report(const CheckedFile& file, const XmlNode& item, const char* attribute,
            std::string message, RuleFindings& findings) {
  RuleFinding finding;
  finding.place = PlaceOf(file, item, attribute);
  finding.message = std::move(message);
  finding.subject = item.Value(attribute);
  findings.push_back(std::move(finding));
}

/// Items whose RefID is nearly the ID of an item that a plugin brings. The platform has items too:
/// a RefID that occurs as often as the one that it resembles is probably one of those.
void CheckReferences(const CheckedFile& file, const Items& items,
                     const std::set<std::string>& brought, RuleFindings& findings) {
  if (!HaveCommon(Values(items, "RefID"), brought)) return;
  std::map<std::string, int> counts;
  for (const XmlNode* item : items) ++counts[item->Value("RefID")];
  Suggestions suggestions({brought.begin(), brought.end()});
  for (const XmlNode* item : items) {
    const std::string& reference = item->Value("RefID");
    if (reference.empty() || brought.count(reference) != 0) continue;
    const std::string meant = Meant(suggestions, reference);
    if (meant.empty()) continue;
    const auto right = counts.find(meant);
    if (right != counts.end() && right->second <= counts[reference]) continue;
    Report(file, *item, "RefID",
           "RefID " + Quoted(reference) +
               " is the ID of no menu item that a plugin brings; did you mean " + Quoted(meant) +
               "?",
           findings);
  }
}

/// Items of scenes that are neither in the full scene menu nor stand for a plugin's item, with an
/// ID that is nearly one of that menu. All others may be the platform's.
void CheckScenes(const CheckedFile& file, const Items& items, const std::set<std::string>& full,
                 const std::set<std::string>& brought, RuleFindings& findings) {
  if (!HaveCommon(Values(items, "ID"), full)) return;
  Suggestions suggestions({full.begin(), full.end()});
  for (const XmlNode* item : items) {
    const std::string& id = item->Value("ID");
    const bool isKnown = full.count(id) != 0 || brought.count(item->Value("RefID")) != 0;
    if (id.empty() || isKnown) continue;
    const std::string meant = Meant(suggestions, id);
    if (meant.empty()) continue;
    Report(file, *item, "ID",
           "the scene shows the item " + Quoted(id) +
               ", which <FullSceneMenuList> does not have; did you mean " + Quoted(meant) + "?",
           findings);
  }
}

void Check(const CheckedProduct& product, RuleFindings& findings) {
  const CheckedFile& file = product.File(FileKind::kPortal);
  const PortalItems portal = ReadPortalItems(file);
  const std::set<std::string> brought = BroughtItems(product);
  const Items full = WithNested(portal.fullScene);
  Items scenes;
  for (const PortalModeNode& mode : portal.modes) {
    for (const PortalScene& scene : mode.scenes) {
      scenes.insert(scenes.end(), scene.items.begin(), scene.items.end());
    }
  }
  CheckScenes(file, scenes, Values(full, "ID"), brought, findings);
  Items all = WithNested(portal.navigation);
  all.insert(all.end(), full.begin(), full.end());
  all.insert(all.end(), scenes.begin(), scenes.end());
  CheckReferences(file, all, brought, findings);
}

}  // namespace

TEV_RULE(UnknownMenuItem) = {
    "TEV601",
    Severity::kWarning,
    "A menu of the portal refers to an item that does not exist",
    "The RefID of a menu item in Portal.xml is the ID of the item that it stands for, one of those "
    "that plugins bring in their <MenuList>, or one of the platform. A <SceneMode> usually shows "
    "items of the full scene menu, but may have others of the platform. The frame resolves none of "
    "these names. The rule reports a RefID that is nearly, but not quite, the ID of a plugin's "
    "item, if other items of the portal stand for items of plugins and it does not occur as often "
    "as that ID; and an item of a scene whose ID is nearly, but not quite, one in "
    "<FullSceneMenuList>, if others of the scenes are there and the item does not stand for one of "
    "a plugin.",
    R"(RefID="alram.page", and a plugin's menu item alarm.page)",
    "Correct the RefID or the ID.",
    &Check};
