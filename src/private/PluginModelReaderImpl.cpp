#include "src/private/PluginModelReaderImpl.h"

#include <cstdlib>
#include <utility>

#include "src/private/FrameLog.h"
#include "src/private/XmlList.h"

namespace TevModelParse {

namespace {

constexpr char kServerEntry[] = "server";

std::string DescriptionPath(const std::string& directory, const ProductPluginEntry& entry) {
  return directory + entry.ID + "/" + entry.ID + ".xml";
}

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
    const std::string path = DescriptionPath(descriptionDirectory, entry);
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
    const std::string path = DescriptionPath(exeDirectory + "META_INFO/", entry);
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
    // Unlike a product's plugin, an addon's is a driver by its entry alone, whatever its own type.
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
  description.Type = document->GetNodeInt("/Plugin/Type", -1);
  description.ID = document->GetNodeText("/Plugin/ID", "");
  description.Name = document->GetNodeText("/Plugin/Name", "");
  description.Version = document->GetNodeText("/Plugin/Version", "");
  description.IsDistributed = document->GetNodeInt("/Plugin/IsDistributed", 0) == 1;
  ReadDependencyList(description.Dependencies, document);
  ReadMenuList(description.MenuItems, entry, document);
}

void CPluginXmlReader::ReadDependencyList(std::vector<PluginDependency>& dependencies,
                                          std::shared_ptr<CXmlProto> document) const {
  ReadList(*document, "/Plugin/DependencyList/Plugin", [&](const std::string& path) {
    PluginDependency dependency;
    dependency.ID = document->GetNodeProp(path, "ID", "");
    dependency.Version = document->GetNodeProp(path, "Version", "");
    const std::string dependentType = document->GetNodeProp(path, "DependentType", "");
    if (!dependentType.empty()) dependency.DependentType = std::atoi(dependentType.c_str());
    dependencies.push_back(std::move(dependency));
  });
  ReadList(*document, "/Plugin/DependencyList/Platform", [&](const std::string& path) {
    PluginDependency dependency;
    dependency.ID = document->GetNodeProp(path, "ID", "");
    dependency.Version = document->GetNodeProp(path, "Version", "");
    const bool isPlatform = document->GetNodeProp(path, "Category", "platform") == "platform";
    dependency.Category = isPlatform ? DependencyCategory::kPlatform : DependencyCategory::kOther;
    dependencies.push_back(std::move(dependency));
  });
}

void CPluginXmlReader::ReadMenuList(std::vector<PluginMenuItem>& menuItems,
                                    const ProductPluginEntry& entry,
                                    std::shared_ptr<CXmlProto> document) const {
  ReadList(*document, "/Plugin/MenuList/MenuItem", [&](const std::string& path) {
    const auto text = [&](const char* field) {
      return document->GetNodeText(path + "/" + field, "");
    };
    const auto number = [&](const char* field) {
      return document->GetNodeInt(path + "/" + field, -1);
    };
    const auto permission = [&](const char* field) {
      return document->GetNodeText(path + "/" + field, "-1");
    };
    PluginMenuItem item;
    item.PluginName = entry.ID;
    item.ID = text("ID");
    item.MenuType = number("MenuType");
    item.Level = number("Level");
    item.SubMenuType = number("SubMenuType");
    item.NameKey = text("NameKey");
    item.TipsKey = text("TipsKey");
    item.DescriptionKey = text("DescriptionKey");
    item.TabNameKey = text("TabNameKey");
    item.Color = text("Color");
    item.SelColor = text("SelColor");
    item.Icon = text("Icon");
    item.SelIcon = text("SelIcon");
    item.TabIcon = text("TabIcon");
    item.TabSelIcon = text("TabSelIcon");
    item.OpenType = number("OpenType");
    item.Layout = text("Layout");
    item.Url = text("Url");
    item.ShowType = number("ShowType");
    item.MenuState = number("MenuState");
    item.ResourcePermissionID = permission("ResourcePermissionID");
    item.ConfiguredPermissionID = permission("ConfiguredPermissionID");
    item.ControlPermissionID = permission("ControlPermissionID");
    item.ControlItemID = permission("ControlItemID");
    menuItems.push_back(std::move(item));
  });
}

}  // namespace TevModelParse
