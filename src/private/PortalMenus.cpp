#include "src/private/PortalMenus.h"

#include <utility>

#include "src/private/XmlNames.h"

namespace TevModelParse {

using namespace XmlName;

namespace {

template <typename Item>
Item ReadItem(const XmlElement& element) {
  Item item;
  item.Type = element.Attribute(kType);
  item.ID = element.Attribute(kID);
  item.RefID = element.Attribute("RefID");
  return item;
}

template <typename Item>
bool ReadItemsInside(std::vector<Item>& children, const XmlElement& parent) {
  const XmlElements elements = parent.Children(kMenuItem);
  for (const XmlElement& element : elements) {
    Item item = ReadItem<Item>(element);
    ReadItemsInside(item.SubItems, element);
    children.push_back(std::move(item));
  }
  return elements.Count() > 0;
}

SceneMode ReadSceneMode(const XmlElement& element) {
  SceneMode mode;
  mode.Type = element.Int(kType, -1);
  for (const XmlElement& item : element.Child("SceneMenuList").Children(kMenuItem)) {
    mode.MenuItems.push_back(ReadItem<SceneModeMenuItem>(item));
  }
  return mode;
}

}  // namespace

NavigationMenuItem ReadNavigationItem(const XmlElement& element) {
  auto item = ReadItem<NavigationMenuItem>(element);
  item.Name = element.Attribute(kName);
  return item;
}

SceneMenuItem ReadSceneItem(const XmlElement& element) {
  return ReadItem<SceneMenuItem>(element);
}

bool ReadSubItems(std::vector<NavigationMenuItem>& children, const XmlElement& parent) {
  return ReadItemsInside(children, parent);
}

bool ReadSubItems(std::vector<SceneMenuItem>& children, const XmlElement& parent) {
  return ReadItemsInside(children, parent);
}

PortalMode ReadPortalMode(const XmlElement& element) {
  PortalMode mode;
  mode.Type = element.Int(kType, -1);
  for (const XmlElement& scene : element.Child("SceneModeList").Children("SceneMode")) {
    mode.SceneModes.push_back(ReadSceneMode(scene));
  }
  return mode;
}

}  // namespace TevModelParse
