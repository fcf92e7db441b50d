#pragma once

#include <string>
#include <utility>
#include <vector>

#include "src/model/ProductModel.h"
#include "src/private/XmlList.h"

// The menu items and modes of Portal.xml, from elements to records.

namespace TevModelParse {

/// The menu item at `path`, without what nests in it.
template <typename Item>
Item ReadMenuItem(const CXmlProto& document, const std::string& path) {
  Item item;
  item.Type = document.GetNodeProp(path, "Type", "");
  item.ID = document.GetNodeProp(path, "ID", "");
  item.RefID = document.GetNodeProp(path, "RefID", "");
  return item;
}

/// Appends the items that nest in the one at `parentPath`, each with all that nests in it; leaves
/// are kept. False when there are none. As deep as the file, which the parser limits to 256 levels.
template <typename Item>
bool ReadSubItems(std::vector<Item>& children, const CXmlProto& document,
                  const std::string& parentPath) {
  return ReadList(document, parentPath + "/MenuItem", [&](const std::string& path) {
           Item item = ReadMenuItem<Item>(document, path);
           ReadSubItems(item.SubItems, document, path);
           children.push_back(std::move(item));
         }) > 0;
}

inline SceneMode ReadSceneMode(const CXmlProto& document, const std::string& path) {
  SceneMode mode;
  mode.Type = document.GetNodeInt(path + "/Type", -1);
  ReadList(document, path + "/SceneMenuList/MenuItem", [&](const std::string& item) {
    mode.MenuItems.push_back(ReadMenuItem<SceneModeMenuItem>(document, item));
  });
  return mode;
}

inline PortalMode ReadPortalMode(const CXmlProto& document, const std::string& path) {
  PortalMode mode;
  mode.Type = document.GetNodeInt(path + "/Type", -1);
  ReadList(document, path + "/SceneModeList/SceneMode", [&](const std::string& scene) {
    mode.SceneModes.push_back(ReadSceneMode(document, scene));
  });
  return mode;
}

}  // namespace TevModelParse
