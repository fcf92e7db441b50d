#pragma once

#include <vector>

#include "src/model/ProductModel.h"
#include "src/private/XmlElement.h"

// Portal.xml's menu items and modes, from elements to records.

namespace TevModelParse {

/// The menu item `element`, without the items inside it.
NavigationMenuItem ReadNavigationItem(const XmlElement& element);
SceneMenuItem ReadSceneItem(const XmlElement& element);

/// Appends the items inside `parent`, each with all items inside it. False when there are none. The
/// recursion ends with the file, whose depth the parser limits to 256 levels.
bool ReadSubItems(std::vector<NavigationMenuItem>& children, const XmlElement& parent);
bool ReadSubItems(std::vector<SceneMenuItem>& children, const XmlElement& parent);

PortalMode ReadPortalMode(const XmlElement& element);

}  // namespace TevModelParse
