#include "src/private/ProductModelReaderImpl.h"

#include <utility>

#include "src/private/AddonCompatibility.h"
#include "src/private/AddonElements.h"
#include "src/private/DottedText.h"
#include "src/private/FrameLog.h"
#include "src/private/PluginModelReaderImpl.h"
#include "src/private/PortalMenus.h"
#include "src/private/RunningProduct.h"
#include "src/private/XmlList.h"

namespace TevModelParse {

namespace {

constexpr char kInstallFolder[] = "TevAddons/";
constexpr char kInstalledProducts[] = "InstalledProducts.xml";

constexpr std::int32_t kReplacesAnother = 3;  // a publishing type

/// ReadDocument for the files of addons and tools, logging in the name of `kLogFunction`.
std::shared_ptr<CXmlProto> OpenDocument(const char* kLogFunction, const std::string& path) {
  if (path.empty()) {
    FRAME_LOG(kProgress, "Xml path is empty.");
    return nullptr;
  }
  std::shared_ptr<CXmlProto> document = ReadDocument(path);
  if (!document) FRAME_LOG(kProgress, "ReadFile failed. xml path [%s]", path.c_str());
  return document;
}

}  // namespace

bool CProductXmlReader::ReadServerModel(ProductModel& model) const {
  FRAME_LOG_AS("TevModelParse::CProductXmlReader::ReadServerModel");
  const std::string base = GetExeDirectory();
  const std::string meta = base + "META_INFO/";
  FRAME_LOG(kProgress, "ReadServerModel exe path[%s]", meta.c_str());

  const std::string product = base + "../" + "Product.xml";
  if (!ReadBaseProductXml(model, product)) {
    FRAME_LOG(kProgress, "ReadBaseProductXml  failed path[%s]", product.c_str());
    return false;
  }
  const std::string drivers = meta + "DeviceDrivers.xml";
  if (!ReadDriverModel(model, drivers)) {
    FRAME_LOG(kProgress, "ReadDriverModel file failed path[%s]", drivers.c_str());
    return false;
  }
  // The next message and that of the plugin descriptions have names of their own, by which service
  // logs are searched.
  const std::string portal = meta + "Portal.xml";
  if (!ReadServerPotalModel(model.Portal, portal)) {
    FRAME_LOG(kProgress, "ReadUIModelXml  failed path[%s]", portal.c_str());
    return false;
  }
  const std::string platform = meta + "Platform.xml";
  if (!ReadPlatformModel(model.Platform, platform)) {
    FRAME_LOG(kProgress, "ReadPlatformModel  failed path[%s]", platform.c_str());
    return false;
  }
  FRAME_LOG(kProgress, "Begin Read plugin.xml");
  if (!CPluginXmlReader().ReadPluginXml(model.ServerPluginDescriptions, model.ExePluginDescriptions,
                                        model.DriverPluginDescriptions, base, meta,
                                        model.Plugins)) {
    FRAME_LOG(kProgress, "ReadServerPluginXml  failed path[%s]", base.c_str());
    return false;
  }
  FRAME_LOG(kProgress, "End Read plugin.xml");

  g_productName = model.Product;
  const std::string version = ShortVersionOf(model.Version);
  if (!version.empty()) g_productVersion = version;

  if (!ReadClientInfoFromInstalledAddonsXml(model)) {
    FRAME_LOG(kFailure, "ReadClientInfoFromInstalledAddonsXml failed.");
  }
  return true;
}

bool CProductXmlReader::ReadBaseProductXml(ProductModel& model, std::string path) const {
  FRAME_LOG_AS("TevModelParse::CProductXmlReader::ReadBaseProductXml");
  FRAME_LOG(kProgress, "Begin Read Product.xml[%s]", path.c_str());
  const std::shared_ptr<CXmlProto> document = ReadDocument(path);
  if (!document) {
    FRAME_LOG(kProgress, "ReadFile  failed str_xml_path[%s]", path.c_str());
    return false;
  }
  model.Product = document->GetNodeText("/ProductDescription/Product", "");
  model.ProductLogo = document->GetNodeText("/ProductDescription/ProductLogo", "");
  model.Version = document->GetNodeText("/ProductDescription/Version", "");
  model.EditionConfig = document->GetNodeText("/ProductDescription/EditionConfig", "");
  model.FnoodPath = document->GetNodeText("/ProductDescription/FnoodPath", "");
  model.PlatformID = document->GetNodeProp("/ProductDescription/Platform", "ID", "");
  model.PlatformVersion = document->GetNodeProp("/ProductDescription/Platform", "Version", "");

  ReadList(*document, "/ProductDescription/Languages/Language", [&](const std::string& element) {
    LanguageEntry language;
    language.ID = document->GetNodeProp(element, "ID", "");
    language.Flag = language.ID == "true";  // yes, the ID: consumers rely on it
    model.Languages.push_back(std::move(language));
  });
  const int plugins =
      ReadList(*document, "/ProductDescription/Plugins/Plugin", [&](const std::string& element) {
        ProductPluginEntry entry;
        entry.ID = document->GetNodeProp(element, "ID", "");
        entry.Version = document->GetNodeProp(element, "Version", "");
        entry.Lazystart = document->GetNodeProp(element, "Lazystart", "") == "true";
        entry.GroupName = GroupNameOf(entry.ID);
        entry.Type = "server";
        FRAME_LOG(kProgress, "Product.xml Will Start plugin[%s]", entry.ID.c_str());
        model.Plugins.push_back(std::move(entry));
      });
  const int subPlatforms = ReadList(
      *document, "/ProductDescription/SubPlatforms/SubPlatform", [&](const std::string& element) {
        SubPlatformEntry entry;
        entry.ID = document->GetNodeProp(element, "ID", "");
        entry.Version = document->GetNodeProp(element, "Version", "");
        FRAME_LOG(kProgress, "Product.xml Will Start subplatform[%s]", entry.ID.c_str());
        model.SubPlatforms.push_back(std::move(entry));
      });
  FRAME_LOG(kProgress, "End Read Product.xml[%s], plugin size[%d], sub platform size[%d]",
            path.c_str(), plugins, subPlatforms);
  return true;
}

bool CProductXmlReader::ReadDriverModel(ProductModel& model, std::string path) const {
  FRAME_LOG_AS("TevModelParse::CProductXmlReader::ReadDriverModel");
  FRAME_LOG(kProgress, "Begin Read DeviceDrivers.xml[%s]", path.c_str());
  const std::shared_ptr<CXmlProto> document = ReadDocument(path);
  if (!document) {
    FRAME_LOG(kProgress, "ReadFile  failed str_xml_path[%s]", path.c_str());
    return false;
  }
  const int drivers = ReadList(*document, "/DAMDrivers/Driver", [&](const std::string& element) {
    ProductPluginEntry entry;
    entry.ID = document->GetNodeProp(element, "ID", "");
    entry.Version = document->GetNodeProp(element, "Version", "");
    entry.GroupName = GroupNameOf(entry.ID);
    entry.Type = "dam_driver";
    FRAME_LOG(kProgress, "DeviceDrivers.xml Will Start driver[%s]", entry.ID.c_str());
    model.Plugins.push_back(std::move(entry));
  });
  FRAME_LOG(kProgress, "End Read DeviceDrivers.xml[%s], driver_size[%d]", path.c_str(), drivers);
  return true;
}

bool CProductXmlReader::ReadPlatformModel(PlatformModel& platform, std::string path) const {
  FRAME_LOG_AS("TevModelParse::CProductXmlReader::ReadPlatformModel");
  const std::shared_ptr<CXmlProto> document = ReadDocument(path);
  if (!document) {
    FRAME_LOG(kProgress, "ReadFile  failed str_xml_path[%s]", path.c_str());
    return false;
  }
  platform.Version = document->GetNodeText("/Platform/Version", "");
  platform.PlatformDBType = document->GetNodeText("/Platform/PlatformDBType", "");
  platform.OneChannelForOneCamera = document->GetNodeText("/Platform/OneChannelForOneCamera", "");
  return true;
}

bool CProductXmlReader::ReadServerPotalModel(PortalModel& portal, std::string path) const {
  FRAME_LOG_AS("TevModelParse::CProductXmlReader::ReadServerPotalModel");
  FRAME_LOG(kProgress, "Begin Read Portal.xml[%s]", path.c_str());
  const std::shared_ptr<CXmlProto> document = ReadDocument(path);
  if (!document) {
    FRAME_LOG(kProgress, "ReadFile  failed path[%s]", path.c_str());
    return false;
  }
  if (!ReadNavigationMenu(portal.NavigationMenu, document)) {
    FRAME_LOG(kProgress, "ReadNavigationMenu  failed path[%s]", path.c_str());
    return false;
  }
  if (!ReadFullSceneMenu(portal.FullSceneMenu, document)) {
    FRAME_LOG(kProgress, "ReadFullSceneMenu  failed path[%s]", path.c_str());
    return false;
  }
  if (!ReadPortalSceneMode(portal.PortalModes, document)) {
    FRAME_LOG(kProgress, "ReadPortalMode failed path[%s]", path.c_str());
    return false;
  }
  FRAME_LOG(kProgress, "End Read Portal.xml[%s]", path.c_str());
  return true;
}

bool CProductXmlReader::ReadNavigationMenu(std::vector<NavigationMenuItem>& items,
                                           std::shared_ptr<CXmlProto> document) const {
  FRAME_LOG_AS("TevModelParse::CProductXmlReader::ReadNavigationMenu");
  if (!document) {
    FRAME_LOG(kProgress, "ReadNavigationMenu  failed nullptr == ptr_xml_proto");
    return false;
  }
  ReadList(*document, "/PortalDescription/FullNavigationMenuList/MenuItem",
           [&](const std::string& path) {
             auto item = ReadMenuItem<NavigationMenuItem>(*document, path);
             item.Name = document->GetNodeProp(path, "Name", "");
             if (ReadNavigationMenuRecursion(item.SubItems, document, path)) {
               items.push_back(std::move(item));
             }
           });
  return true;
}

bool CProductXmlReader::ReadNavigationMenuRecursion(std::vector<NavigationMenuItem>& children,
                                                    std::shared_ptr<CXmlProto> document,
                                                    const std::string& parentPath) const {
  FRAME_LOG_AS("TevModelParse::CProductXmlReader::ReadNavigationMenuRecursion");
  if (!document) {
    FRAME_LOG(kProgress, "ReadNavigationMenuRecursion  failed nullptr == ptr_xml_proto");
    return false;
  }
  return ReadSubItems(children, *document, parentPath);
}

bool CProductXmlReader::ReadFullSceneMenu(std::vector<SceneMenuItem>& items,
                                          std::shared_ptr<CXmlProto> document) const {
  FRAME_LOG_AS("TevModelParse::CProductXmlReader::ReadFullSceneMenu");
  if (!document) {
    FRAME_LOG(kProgress, "ReadFullSceneMenu  failed nullptr == ptr_xml_proto");
    return false;
  }
  ReadList(*document, "/PortalDescription/FullSceneMenuList/MenuItem",
           [&](const std::string& path) {
             auto item = ReadMenuItem<SceneMenuItem>(*document, path);
             if (ReadFullSceneMenuRecursion(item.SubItems, document, path)) {
               items.push_back(std::move(item));
             }
           });
  return true;
}

bool CProductXmlReader::ReadFullSceneMenuRecursion(std::vector<SceneMenuItem>& children,
                                                   std::shared_ptr<CXmlProto> document,
                                                   const std::string& parentPath) const {
  FRAME_LOG_AS("TevModelParse::CProductXmlReader::ReadFullSceneMenuRecursion");
  if (!document) {
    FRAME_LOG(kProgress, "ReadFullSceneMenuRecursion  failed nullptr == ptr_xml_proto");
    return false;
  }
  return ReadSubItems(children, *document, parentPath);
}

bool CProductXmlReader::ReadPortalSceneMode(std::vector<PortalMode>& modes,
                                            std::shared_ptr<CXmlProto> document) const {
  FRAME_LOG_AS("TevModelParse::CProductXmlReader::ReadPortalSceneMode");
  if (!document) {
    FRAME_LOG(kProgress, "ReadPortalMode  failed nullptr == ptr_xml_proto");
    return false;
  }
  ReadList(*document, "/PortalDescription/PortalModeList/PortalMode",
           [&](const std::string& path) { modes.push_back(ReadPortalMode(*document, path)); });
  return true;
}

bool CProductXmlReader::ReadServerAddonsModel(std::vector<AddonModel>& addons) const {
  FRAME_LOG_AS("TevModelParse::CProductXmlReader::ReadServerAddonsModel");
  if (g_productVersion.empty()) {
    FRAME_LOG(kFailure, "Get product version is empty.");
    return false;
  }
  FRAME_LOG(kProgress, "parse addons model begin.");
  const std::string base = GetExeDirectory();
  if (!ReadAllAddonsXml(addons, base + "../")) {
    FRAME_LOG(kProgress, "parse all addons with apps failed.");
    return false;
  }
  if (!ReadInstalledAddonsXml(addons, base + kInstallFolder)) {
    FRAME_LOG(kProgress, "parse installed addons failed.");
    return false;
  }
  FRAME_LOG(kProgress, "parse addons model success.");
  return true;
}

bool CProductXmlReader::ReadServerToolsModel(std::vector<ToolModel>& tools) const {
  FRAME_LOG_AS("TevModelParse::CProductXmlReader::ReadServerToolsModel");
  FRAME_LOG(kProgress, "parse tools model begin.");
  const std::string base = GetExeDirectory();
  if (!ReadAllToolsXml(tools, base + "../")) {
    FRAME_LOG(kProgress, "parse all tools model failed.");
    return false;
  }
  if (!ReadInstalledToolsXml(tools, base + kInstallFolder)) {
    FRAME_LOG(kProgress, "parse installed tools failed.");
    return false;
  }
  FRAME_LOG(kProgress, "parse tools model success.");
  return true;
}

bool CProductXmlReader::ReadAllAddonsXml(std::vector<AddonModel>& addons,
                                         const std::string& directory) const {
  FRAME_LOG_AS("TevModelParse::CProductXmlReader::ReadAllAddonsXml");
  const std::string path = directory + "ProductAddons.xml";
  FRAME_LOG(kProgress, "Begin Read AddonAplication.xml[%s]", path.c_str());
  const std::shared_ptr<CXmlProto> document = OpenDocument(kLogFunction, path);
  if (!document) return false;
  const int count = ReadList(*document, "/AddonList/Addon", [&](const std::string& element) {
    AddonModel addon;
    ReadCatalogueEntry(addon, *document, element);
    addon.Installed = addon.ID.empty();
    addon.Compatible = true;
    addon.Applications = ReadApplications(*document, element + "/ApplicationList/Application");
    addons.push_back(std::move(addon));
  });
  FRAME_LOG(kProgress, "End Read AddonAplication.xml[%s], all addon size[%d]", path.c_str(), count);
  return true;
}

bool CProductXmlReader::ReadAllToolsXml(std::vector<ToolModel>& tools,
                                        const std::string& directory) const {
  FRAME_LOG_AS("TevModelParse::CProductXmlReader::ReadAllToolsXml");
  const std::string path = directory + "ProductTools.xml";
  FRAME_LOG(kProgress, "Begin Read ProductTools.xml[%s]", path.c_str());
  const std::shared_ptr<CXmlProto> document = OpenDocument(kLogFunction, path);
  if (!document) return false;
  const int count = ReadList(*document, "/ToolList/Tool", [&](const std::string& element) {
    ToolModel tool;
    ReadCatalogueEntry(tool, *document, element);
    tool.Source = document->GetNodeText(element + "/Source", "");
    tool.ServerSide = document->GetNodeInt(element + "/ServerSide", -1) == 1;
    tools.push_back(std::move(tool));
  });
  FRAME_LOG(kProgress, "End Read ProductTools.xml[%s], all addon size[%d]", path.c_str(), count);
  return true;
}

bool CProductXmlReader::ReadInstalledAddonsXml(std::vector<AddonModel>& addons,
                                               const std::string& directory) const {
  FRAME_LOG_AS("TevModelParse::CProductXmlReader::ReadInstalledAddonsXml");
  const std::string path = directory + kInstalledProducts;
  FRAME_LOG(kProgress, "Begin Read InstalledProducts.xml[%s]", path.c_str());
  const std::shared_ptr<CXmlProto> document = OpenDocument(kLogFunction, path);
  if (!document) return false;

  const std::string offlinePackage =
      document->GetNodeText("/InstalledProductsDescription/OfflineInstallPackage/Path", "");
  if (!offlinePackage.empty()) {
    for (AddonModel& addon : addons) addon.AddonPackageName = offlinePackage;
  }
  const char list[] = "/InstalledProductsDescription/Addons/Addon";
  const int count = ReadList(*document, list, [&](const std::string& element) {
    auto installed = ReadInstalledEntry<AddonModel>(*document, element, directory);
    installed.AddonPackageName = document->GetNodeProp(element, "AddonPackageName", "");
    const std::string description = installed.InstallPath + installed.ID + ".xml";
    if (!ReadSingleInstalledAddonModel(installed, description)) {
      FRAME_LOG(kFailure, "parse single addon xml failed. xml path [%s]", description.c_str());
      return;
    }
    if (!CPluginXmlReader().ReadAddonPluginXml(installed)) {
      FRAME_LOG(kFailure, "Addon[%s] parse plugins failed.", installed.ID.c_str());
      return;
    }
    const auto entry = FindByID(addons, installed.ID);
    if (entry == addons.end()) {
      addons.push_back(std::move(installed));
      return;
    }
    installed.PackageSize = entry->PackageSize;  // only the catalogue knows it
    if (installed.AddonPackageName.empty()) installed.AddonPackageName = offlinePackage;
    *entry = std::move(installed);
  });
  FRAME_LOG(kProgress, "End Read InstalledProductsDescription.xml[%s], addon size[%d]",
            path.c_str(), count);
  return true;
}

bool CProductXmlReader::ReadInstalledToolsXml(std::vector<ToolModel>& tools,
                                              const std::string& directory) const {
  FRAME_LOG_AS("TevModelParse::CProductXmlReader::ReadInstalledToolsXml");
  const std::string path = directory + kInstalledProducts;
  FRAME_LOG(kProgress, "Begin Read InstalledProducts.xml[%s]", path.c_str());
  const std::shared_ptr<CXmlProto> document = OpenDocument(kLogFunction, path);
  if (!document) return false;

  const char list[] = "/InstalledProductsDescription/Tools/Tool";
  const int count = ReadList(*document, list, [&](const std::string& element) {
    auto installed = ReadInstalledEntry<ToolModel>(*document, element, directory);
    const std::string description = installed.InstallPath + installed.ID + ".xml";
    if (!ReadSingleInstalledToolModel(installed, description)) {
      FRAME_LOG(kFailure, "parse single tool xml failed. xml path [%s]", description.c_str());
      return;
    }
    // Unlike an addon, an installed tool takes the catalogue's package size away with the rest.
    const auto entry = FindByID(tools, installed.ID);
    if (entry == tools.end()) {
      tools.push_back(std::move(installed));
    } else {
      *entry = std::move(installed);
    }
  });
  FRAME_LOG(kProgress, "End Read InstalledProductsDescription.xml[%s], tool size[%d]", path.c_str(),
            count);
  return true;
}

bool CProductXmlReader::ReadSingleInstalledAddonModel(AddonModel& addon,
                                                      const std::string& path) const {
  FRAME_LOG_AS("TevModelParse::CProductXmlReader::ReadSingleInstalledAddonModel");
  FRAME_LOG(kProgress, "Begin parse single addon model.path[%s]", path.c_str());
  const std::shared_ptr<CXmlProto> document = OpenDocument(kLogFunction, path);
  if (!document) return false;
  const std::string id = document->GetNodeText("/AddonDescription/ID", "");
  if (id != addon.ID) {
    FRAME_LOG(kProgress, "Addon's ID is not match.[%s] != [%s]", addon.ID.c_str(), id.c_str());
    return false;
  }
  ReadDescriptionHead(addon, *document, "/AddonDescription");
  addon.PublishingType = document->GetNodeInt("/AddonDescription/PublishingType", 0);
  addon.IsIndependent = document->GetNodeInt("/AddonDescription/IsIndependent", -1) == 1;
  addon.IsDistributed = document->GetNodeInt("/AddonDescription/IsDistributed", -1) == 1;
  if (addon.PublishingType == kReplacesAnother) {
    addon.ReplaceAddonID = document->GetNodeText("/AddonDescription/ReplaceAddon/ID", "");
    addon.ReplaceAddonMinVersion =
        document->GetNodeText("/AddonDescription/ReplaceAddon/MinVersion", "");
    addon.ReplaceAddonMaxVersion =
        document->GetNodeText("/AddonDescription/ReplaceAddon/MaxVersion", "");
  }
  ReadSupportedVersions(addon, *document);
  DecideCompatibility(addon);
  addon.Applications = ReadApplications(*document, "/AddonDescription/ApplicationList/Application");
  ReadPluginsAndServices(addon, *document);
  FRAME_LOG(kProgress, "End parse single addon model.");
  return true;
}

void CProductXmlReader::ReadSupportedVersions(AddonModel& addon, const CXmlProto& document) const {
  FRAME_LOG_AS("TevModelParse::CProductXmlReader::ReadSingleInstalledAddonModel");
  bool found = false;
  ReadList(document, "/AddonDescription/SupportProducts/Product", [&](const std::string& element) {
    if (found) return;
    const std::string logo = document.GetNodeText(element + "/ProductLogo", "");
    const std::string product = ProductCodeOfLogo(logo);
    if (product.empty()) {
      FRAME_LOG(kFailure, "Addon[%s]'s supported product[%s] is error.", addon.ID.c_str(),
                logo.c_str());
    } else if (product == g_productName) {
      addon.MinVersion = document.GetNodeText(element + "/MinVersion", "");
      addon.MaxVersion = document.GetNodeText(element + "/MaxVersion", "");
      found = true;
    }
  });
}

void CProductXmlReader::DecideCompatibility(AddonModel& addon) const {
  FRAME_LOG_AS("TevModelParse::CProductXmlReader::ReadSingleInstalledAddonModel");
  const Compatibility verdict =
      JudgeCompatibility(g_productName, g_productVersion, addon.MinVersion);
  if (verdict == Compatibility::kProductTooOld) {
    FRAME_LOG(kTolerated, "Addon[%s][%s] is not compatible in %s product[%s].", addon.ID.c_str(),
              addon.MinVersion.c_str(), g_productName.c_str(), g_productVersion.c_str());
  }
  addon.Compatible = verdict == Compatibility::kCompatible;
  addon.Installed = true;
  addon.InstalledCompatible = addon.Compatible;
  addon.InstalledCompatibleVersion = addon.CompatibleVersion;
  if (!addon.InstalledCompatible) {
    FRAME_LOG(kFailure,
              "Product[%s_v%s] installed addon[%s] is not compatible, support version[%s][%s].",
              g_productName.c_str(), g_productVersion.c_str(), addon.ID.c_str(),
              addon.MinVersion.c_str(), addon.MaxVersion.c_str());
  }
}

bool CProductXmlReader::ReadSingleInstalledToolModel(ToolModel& tool,
                                                     const std::string& path) const {
  FRAME_LOG_AS("TevModelParse::CProductXmlReader::ReadSingleInstalledToolModel");
  FRAME_LOG(kProgress, "Begin parse single tool model.path[%s]", path.c_str());
  const std::shared_ptr<CXmlProto> document = OpenDocument(kLogFunction, path);
  if (!document) return false;
  const std::string id = document->GetNodeText("/ToolDescription/ID", "");
  if (id != tool.ID) {
    FRAME_LOG(kProgress, "Tool's ID is not match.[%s] != [%s]", tool.ID.c_str(), id.c_str());
    return false;
  }
  ReadDescriptionHead(tool, *document, "/ToolDescription");
  tool.ServerSide = document->GetNodeInt("/ToolDescription/ServerSide", -1) == 1;
  tool.MinVersion =
      document->GetNodeText("/ToolDescription/SupportProducts/Product/MinVersion", "");
  tool.MaxVersion =
      document->GetNodeText("/ToolDescription/SupportProducts/Product/MaxVersion", "");
  tool.Installed = true;  // and nothing of compatibility: a tool runs beside any product
  FRAME_LOG(kProgress, "End parse single tool model.");
  return true;
}

bool CProductXmlReader::ReadClientInfoFromInstalledAddonsXml(ProductModel& model) const {
  FRAME_LOG_AS("TevModelParse::CProductXmlReader::ReadClientInfoFromInstalledAddonsXml");
  const std::string path = GetExeDirectory() + kInstallFolder + kInstalledProducts;
  FRAME_LOG(kProgress, "Begin Read InstalledProducts.xml[%s]", path.c_str());
  const std::shared_ptr<CXmlProto> document = OpenDocument(kLogFunction, path);
  if (!document) return false;
  model.ClientPackagePath =
      document->GetNodeText("/InstalledProductsDescription/ClientPackage/Path", "");
  model.ClientPackageMD5 =
      document->GetNodeText("/InstalledProductsDescription/ClientPackage/MD5", "");
  return true;
}

}  // namespace TevModelParse
