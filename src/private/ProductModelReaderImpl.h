#pragma once

#include <memory>
#include <string>
#include <vector>

#include "src/model/AddonModel.h"
#include "src/model/ProductModel.h"
#include "src/private/XmlProto.h"

namespace TevModelParse {

/// Reads the installed product, its addons and its tools from the model files.
///
/// Has no state; results go into the records given, whose lists are appended to and never cleared.
/// The reader of a file returns false only when the file cannot be read; one that is not
/// well-formed reads as empty. Called on the thread that initialises the frame.
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

  // The sections of Portal.xml. Without a document they log that and return false. A menu item at
  // the top without items inside is dropped; below the top all are kept. The recursions return
  // false for a parent without items inside.
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

  /// Reads the addons: those of the catalogue, then the installed ones, in the catalogue or not.
  /// Needs g_productVersion.
  bool ReadServerAddonsModel(std::vector<AddonModel>& addons) const;

  /// Reads the tools the same way.
  bool ReadServerToolsModel(std::vector<ToolModel>& tools) const;

  // The catalogues, in a directory that ends in "/".
  bool ReadAllAddonsXml(std::vector<AddonModel>& addons, const std::string& directory) const;
  bool ReadAllToolsXml(std::vector<ToolModel>& tools, const std::string& directory) const;

  // What is installed, in a directory that ends in "/". An entry that cannot be read is skipped;
  // each other replaces the first entry with its ID or is appended.
  bool ReadInstalledAddonsXml(std::vector<AddonModel>& addons, const std::string& directory) const;
  bool ReadInstalledToolsXml(std::vector<ToolModel>& tools, const std::string& directory) const;

  // The description of one installed addon or tool. False when it cannot be read, or when its ID is
  // not that of the record, which must be set; the record may then be partly filled.
  bool ReadSingleInstalledAddonModel(AddonModel& addon, const std::string& path) const;
  bool ReadSingleInstalledToolModel(ToolModel& tool, const std::string& path) const;

  /// Reads the client package of InstalledProducts.xml into the product.
  bool ReadClientInfoFromInstalledAddonsXml(ProductModel& model) const;
};

}  // namespace TevModelParse
