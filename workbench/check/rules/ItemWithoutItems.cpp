#include <string>
#include <vector>

#include "workbench/check/PortalItems.h"
#include "workbench/check/Rule.h"
#include "workbench/check/Words.h"

namespace {

void CheckMenu(const CheckedFile& file, const std::vector<const XmlNode*>& items,
               const std::string& list, RuleFindings& findings) {
  for (const XmlNode* item : items) {
    if (!Select(*item, "MenuItem").empty()) continue;
    RuleFinding finding;
    finding.place = PlaceOf(file, *item);
    finding.message = ItemTag(*item) +
                      " has no <MenuItem> in it: the frame drops an item without "
                      "items at the top of " +
                      Tag(list);
    finding.subject = list + " " + item->Value("ID");
    findings.push_back(std::move(finding));
  }
}

void Check(const CheckedProduct& product, RuleFindings& findings) {
  const CheckedFile& file = product.File(FileKind::kPortal);
  const PortalItems portal = ReadPortalItems(file);
  CheckMenu(file, portal.navigation, "FullNavigationMenuList", findings);
  CheckMenu(file, portal.fullScene, "FullSceneMenuList", findings);
}

}  // namespace

TEV_RULE(ItemWithoutItems) = {
    "TEV602",
    Severity::kWarning,
    "A top-level menu item without items in it is dropped",
    "At the top of <FullNavigationMenuList> and <FullSceneMenuList> the frame keeps only items "
    "that contain at least one <MenuItem>; it drops the others without a message. Below the top "
    "level every item is kept.",
    R"(<FullNavigationMenuList><MenuItem ID="help" RefID="help.page"/></FullNavigationMenuList>)",
    "Put the item into a top-level item, or put an item into it.",
    &Check};
