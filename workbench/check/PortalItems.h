#pragma once

#include <set>
#include <string>
#include <vector>

#include "workbench/check/CheckedProduct.h"

/// One <SceneMode> and the items that it shows.
struct PortalScene {
  const XmlNode* node = nullptr;
  std::vector<const XmlNode*> items;
};

/// One <PortalMode> and its scenes.
struct PortalModeNode {
  const XmlNode* node = nullptr;
  std::vector<PortalScene> scenes;
};

/// The elements of Portal.xml that the frame reads, without what a second section hides.
struct PortalItems {
  std::vector<const XmlNode*> navigation;  // top-level items of the full navigation menu
  std::vector<const XmlNode*> fullScene;   // of the full scene menu
  std::vector<PortalModeNode> modes;
};

PortalItems ReadPortalItems(const CheckedFile& portal);

/// `items` and all that lie in them, parents first.
std::vector<const XmlNode*> WithNested(const std::vector<const XmlNode*>& items);

/// "<MenuItem ID="alarm">"; without an ID "<MenuItem>".
std::string ItemTag(const XmlNode& item);

/// The IDs of the menu items that plugins bring, also those that this module or product drops.
std::set<std::string> BroughtItems(const CheckedProduct& product);
