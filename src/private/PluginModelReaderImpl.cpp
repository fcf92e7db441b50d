#include "src/private/PluginModelReaderImpl.h"

#include <utility>

#include "src/private/FrameLog.h"
#include "src/private/ModelPaths.h"
#include "src/private/PluginElements.h"
#include "src/private/ProductElements.h"
#include "src/private/XmlElement.h"
#include "src/private/XmlNames.h"

namespace TevModelParse {

namespace {

constexpr char kRoot[] = "/Plugin";

std::string ExecutablePath(const std::string& exeDirectory, const ProductPluginEntry& entry) {
  return exeDirectory + entry.ID + ".exe";
}

/// Moves `description` to the end of `list`, as a plugin that lies at `path`.
void Append(std::vector<PluginDescription>& list, PluginDescription& description,
            const std::string& path) {
  description.Path = path;
  list.push_back(std::move(description));
}

}  // namespace

bool CPluginXmlReader::ReadPluginXml(std::vector<PluginDescription>& serverPlugins,
                                     std::vector<PluginDescription>& exePlugins,
                                     std::vector<PluginDescription>& driverPlugins,
                                     const std::string& exeDirectory,
                                     const std::string& descriptionDirectory,
                                     const std::vector<ProductPluginEntry>& entries) const {
  FRAME_LOG_AS("TevModelParse::CPluginXmlReader::ReadPluginXml");
  bool allRead = true;
  for (const ProductPluginEntry& entry : entries) {
    const std::string path = DescriptionPath(descriptionDirectory, entry.ID);
    const std::shared_ptr<CXmlProto> document = ReadDocument(path);
    if (!document) {
      FRAME_LOG(kProgress, "ReadFile  failed path[%s]", path.c_str());
      allRead = false;
      continue;
    }
    PluginDescription description;
    ReadDescription(description, entry, document);
    if (description.Type == PluginType::kExecutable) {
      Append(exePlugins, description, ExecutablePath(exeDirectory, entry));
    } else if (description.Type != PluginType::kLibrary) {
      FRAME_LOG(kProgress, "wrror type [%s]", path.c_str());
    } else if (entry.Type == kServerEntry) {
      Append(serverPlugins, description, exeDirectory);
    } else {
      description.EntryType = entry.Type;
      Append(driverPlugins, description, exeDirectory);
    }
  }
  return allRead;
}

bool CPluginXmlReader::ReadAddonPluginXml(AddonModel& addon) const {
  FRAME_LOG_AS("TevModelParse::CPluginXmlReader::ReadAddonPluginXml");
  const std::string exeDirectory = GetExeDirectory();
  bool allRead = true;
  for (const ProductPluginEntry& entry : addon.Plugins) {
    const std::string path = DescriptionPath(exeDirectory + kMetaFolder, entry.ID);
    const std::shared_ptr<CXmlProto> document = ReadDocument(path);
    if (!document) {
      FRAME_LOG(kFailure, "ReadFile plugin[%s] desc path file [%s] failed.", entry.ID.c_str(),
                path.c_str());
      allRead = false;
      continue;
    }
    PluginDescription description;
    description.OwnerAddon = addon.ID;
    description.EntryType = entry.Type;
    ReadDescription(description, entry, document);
    // Unlike a product's plugin, an addon's is a driver whatever type its description has.
    if (entry.Type != kServerEntry) {
      Append(addon.DriverPluginDescriptions, description, exeDirectory);
    } else if (description.Type == PluginType::kExecutable) {
      Append(addon.ExePluginDescriptions, description, ExecutablePath(exeDirectory, entry));
    } else if (description.Type == PluginType::kLibrary) {
      Append(addon.ServerPluginDescriptions, description, exeDirectory);
    } else {
      FRAME_LOG(kFailure, "wrror plugin type [%s]", path.c_str());
    }
  }
  return allRead;
}

void CPluginXmlReader::ReadDescription(PluginDescription& description,
                                       const ProductPluginEntry& entry,
                                       const std::shared_ptr<CXmlProto>& document) const {
  ReadPluginFields(description, XmlElement(*document, kRoot));
  ReadDependencyList(description.Dependencies, document);
  ReadMenuList(description.MenuItems, entry, document);
}

void CPluginXmlReader::ReadDependencyList(std::vector<PluginDependency>& dependencies,
                                          std::shared_ptr<CXmlProto> document) const {
  const XmlElement list = XmlElement(*document, kRoot).Child("DependencyList");
  for (const XmlElement& element : list.Children(XmlName::kPlugin)) {
    dependencies.push_back(ReadPluginDependency(element));
  }
  for (const XmlElement& element : list.Children(XmlName::kPlatform)) {
    dependencies.push_back(ReadPlatformDependency(element));
  }
}

void CPluginXmlReader::ReadMenuList(std::vector<PluginMenuItem>& menuItems,
                                    const ProductPluginEntry& entry,
                                    std::shared_ptr<CXmlProto> document) const {
  const XmlElement list = XmlElement(*document, kRoot).Child("MenuList");
  for (const XmlElement& element : list.Children(XmlName::kMenuItem)) {
    PluginMenuItem item = ReadPluginMenuItem(element);
    item.PluginName = entry.ID;
    menuItems.push_back(std::move(item));
  }
}

}  // namespace TevModelParse
