#pragma once

#include <string>
#include <vector>

#include "src/model/AddonModel.h"
#include "src/private/XmlElement.h"

// The files of addons and tools, from elements to records: ProductAddons.xml and ProductTools.xml
// (the catalogues), InstalledProducts.xml, and the description of each addon and tool.

namespace TevModelParse {

/// The root element of an addon's description.
inline constexpr char kAddonDescription[] = "/AddonDescription";

/// An entry of a catalogue.
AddonModel ReadCatalogueAddon(const XmlElement& element);
ToolModel ReadCatalogueTool(const XmlElement& element);

/// What InstalledProducts.xml says of one addon or tool; `directory` ends in "/".
AddonModel ReadInstalledAddon(const XmlElement& element, const std::string& directory);
ToolModel ReadInstalledTool(const XmlElement& element, const std::string& directory);

/// Reads the values of an addon's description: all but the supported products and the lists.
void ReadAddonFields(AddonModel& addon, const XmlElement& root);

/// Replaces the applications by those of the description, and appends its plugins and services.
void ReadAddonLists(AddonModel& addon, const XmlElement& root);

/// The elements of an addon's description that name the products it runs with.
XmlElements SupportedProducts(const XmlElement& root);

/// Reads the lowest and the highest version of a supported product.
void ReadSupportedVersions(AddonBaseModel& entry, const XmlElement& product);

/// Reads the values of a tool's description.
void ReadToolFields(ToolModel& tool, const XmlElement& root);

/// Puts `installed` in the place of the first entry with its ID, or appends it. An addon that takes
/// another's place keeps the package size of that one and takes `offlinePackage` if it has no
/// package name; a tool keeps and takes nothing.
void MergeInstalled(std::vector<AddonModel>& addons, AddonModel installed,
                    const std::string& offlinePackage);
void MergeInstalled(std::vector<ToolModel>& tools, ToolModel installed);

}  // namespace TevModelParse
