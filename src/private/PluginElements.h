#pragma once

#include "src/model/PluginDescription.h"
#include "src/private/XmlElement.h"

// A plugin's description file, from elements to records.

namespace TevModelParse {

/// Reads the values of the description itself: all but its lists.
void ReadPluginFields(PluginDescription& description, const XmlElement& root);

PluginDependency ReadPluginDependency(const XmlElement& element);
PluginDependency ReadPlatformDependency(const XmlElement& element);

/// Without the name of the plugin that brings the item.
PluginMenuItem ReadPluginMenuItem(const XmlElement& element);

}  // namespace TevModelParse
