#pragma once

#include <memory>
#include <string>
#include <vector>

#include "src/model/AddonModel.h"
#include "src/model/PluginDescription.h"
#include "src/model/ProductModel.h"
#include "src/private/XmlProto.h"

namespace TevModelParse {

/// Reads the description files of the plugins that a product or an addon lists.
///
/// Has no state; results are appended to the lists given. A description that cannot be read is
/// logged and skipped; the rest is read, and the call returns false. A description of an unknown
/// type is logged and dropped, which is no failure.
class CPluginXmlReader {
 public:
  /// Reads the descriptions of the product's `entries`, which lie in `descriptionDirectory` as
  /// ID/ID.xml, and sorts them by kind. Both directories end in a separator.
  bool ReadPluginXml(std::vector<PluginDescription>& serverPlugins,
                     std::vector<PluginDescription>& exePlugins,
                     std::vector<PluginDescription>& driverPlugins, const std::string& exeDirectory,
                     const std::string& descriptionDirectory,
                     const std::vector<ProductPluginEntry>& entries) const;

  /// Reads the descriptions of the plugins that `addon` lists into the addon's own three lists.
  bool ReadAddonPluginXml(AddonModel& addon) const;

  /// Appends what `document` says its plugin depends on: plugins first, then platforms.
  void ReadDependencyList(std::vector<PluginDependency>& dependencies,
                          std::shared_ptr<CXmlProto> document) const;

  /// Appends the menu items of `document`, in the name of the plugin that `entry` lists.
  void ReadMenuList(std::vector<PluginMenuItem>& menuItems, const ProductPluginEntry& entry,
                    std::shared_ptr<CXmlProto> document) const;

 private:
  void ReadDescription(PluginDescription& description, const ProductPluginEntry& entry,
                       const std::shared_ptr<CXmlProto>& document) const;
};

}  // namespace TevModelParse
