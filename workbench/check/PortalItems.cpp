#include "workbench/check/PortalItems.h"

#include <utility>

namespace {

std::vector<const XmlNode*> Entries(const XmlNode& node, const char* path) {
  std::vector<const XmlNode*> entries;
  for (const ListEntry& listed : SelectList(node, path)) {
    if (listed.node != nullptr) entries.push_back(listed.node);
  }
  return entries;
}

void AddNested(const XmlNode& item, std::vector<const XmlNode*>& found) {
  found.push_back(&item);
  for (const XmlNode* child : Select(item, "MenuItem")) AddNested(*child, found);
}

}  // namespace

PortalItems ReadPortalItems(const CheckedFile& portal) {
  PortalItems items;
  if (!portal.HasContent()) return items;
  const XmlNode& root = portal.tree.root;
  items.navigation = Entries(root, "FullNavigationMenuList/MenuItem");
  items.fullScene = Entries(root, "FullSceneMenuList/MenuItem");
  for (const XmlNode* mode : Entries(root, "PortalModeList/PortalMode")) {
    PortalModeNode one;
    one.node = mode;
    for (const XmlNode* scene : Entries(*mode, "SceneModeList/SceneMode")) {
      one.scenes.push_back({scene, Entries(*scene, "SceneMenuList/MenuItem")});
    }
    items.modes.push_back(std::move(one));
  }
  return items;
}

std::vector<const XmlNode*> WithNested(const std::vector<const XmlNode*>& items) {
  std::vector<const XmlNode*> found;
  for (const XmlNode* item : items) AddNested(*item, found);
  return found;
}

std::string ItemTag(const XmlNode& item) {
  const std::string& id = item.Value("ID");
  return id.empty() ? "<MenuItem>" : "<MenuItem ID=\"" + id + "\">";
}

std::set<std::string> BroughtItems(const CheckedProduct& product) {
  std::set<std::string> ids;
  for (const Description& description : product.descriptions) {
    if (!description.file->HasContent()) continue;
    for (const XmlNode* item : Entries(description.file->tree.root, "MenuList/MenuItem")) {
      const std::string& id = TextAt(*item, "ID");
      if (!id.empty()) ids.insert(id);
    }
  }
  return ids;
}
