#pragma once

#include <memory>
#include <string>
#include <vector>

#include "src/model/AddonModel.h"
#include "src/model/ProductModel.h"
#include "src/private/XmlElement.h"
#include "src/private/XmlProto.h"

namespace TevModelParse {

/// Reads the installed product, its addons and its tools from the model files.
///
/// Holds nothing between calls; results go into the records given, whose lists are appended to and
/// never cleared. A reader of a file returns false only when the file cannot be read at all; what
/// is not well-formed reads as empty. Called on the thread that initialises the frame.
class CProductXmlReader {
 public:
  /// Reads the whole product, stopping at the first file that cannot be read, and sets
  /// g_productName and g_productVersion.
  bool ReadServerModel(ProductModel& model) const;

  /// Reads Product.xml: the product's identity, languages, server plugins and sub platforms.
  bool ReadBaseProductXml(ProductModel& model, std::string path) const;

  /// Reads DeviceDrivers.xml: the drivers, appended to the product's plugins.
  bool ReadDriverModel(ProductModel& model, std::string path) const;

  /// Reads Platform.xml: the platform's settings.
  bool ReadPlatformModel(PlatformModel& platform, std::string path) const;

  /// Reads Portal.xml: the two menu trees and the portal modes.
  bool ReadServerPotalModel(PortalModel& portal, std::string path) const;

  // The sections of Portal.xml. All fail only without a document. A top-level menu item without
  // children is dropped; deeper ones are kept. The recursions return false for a parent that has
  // no child.
  bool ReadNavigationMenu(std::vector<NavigationMenuItem>& items,
                          std::shared_ptr<CXmlProto> document) const;
  bool ReadNavigationMenuRecursion(std::vector<NavigationMenuItem>& children,
                                   std::shared_ptr<CXmlProto> document,
                                   const std::string& parentPath) const;
  bool ReadFullSceneMenu(std::vector<SceneMenuItem>& items,
                         std::shared_ptr<CXmlProto> document) const;
  bool ReadFullSceneMenuRecursion(std::vector<SceneMenuItem>& children,
                                  std::shared_ptr<CXmlProto> document,
                                  const std::string& parentPath) const;
  bool ReadPortalSceneMode(std::vector<PortalMode>& modes,
                           std::shared_ptr<CXmlProto> document) const;

  /// Reads the addons: the catalogue, then what of it, and beside it, is installed.
  /// Needs g_productVersion.
  bool ReadServerAddonsModel(std::vector<AddonModel>& addons) const;

  /// Reads the tools the same way.
  bool ReadServerToolsModel(std::vector<ToolModel>& tools) const;

  // The catalogues, in a directory that ends in "/".
  bool ReadAllAddonsXml(std::vector<AddonModel>& addons, const std::string& directory) const;
  bool ReadAllToolsXml(std::vector<ToolModel>& tools, const std::string& directory) const;

  // What is installed, in a directory that ends in "/". An entry that cannot be read is skipped;
  // the others update the catalogue entry with their ID or are appended.
  bool ReadInstalledAddonsXml(std::vector<AddonModel>& addons, const std::string& directory) const;
  bool ReadInstalledToolsXml(std::vector<ToolModel>& tools, const std::string& directory) const;

  // One installed addon's or tool's own description. The record's ID must be set, and the file must
  // carry the same; otherwise false, and the record may be partly filled.
  bool ReadSingleInstalledAddonModel(AddonModel& addon, const std::string& path) const;
  bool ReadSingleInstalledToolModel(ToolModel& tool, const std::string& path) const;

  /// Reads the client package of InstalledProducts.xml into the product.
  bool ReadClientInfoFromInstalledAddonsXml(ProductModel& model) const;

 private:
  /// Reads the versions of the first supported product that is the running one.
  void FindSupportedVersions(AddonModel& addon, const XmlElement& root) const;

  /// Sets what an installed addon's record says of compatibility, and logs an addon that has none.
  void DecideCompatibility(AddonModel& addon) const;
};

}  // namespace TevModelParse
