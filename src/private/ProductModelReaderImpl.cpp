#include "src/private/ProductModelReaderImpl.h"

#include <utility>

#include "src/private/AddonCompatibility.h"
#include "src/private/AddonElements.h"
#include "src/private/DottedText.h"
#include "src/private/FrameLog.h"
#include "src/private/ModelPaths.h"
#include "src/private/PluginModelReaderImpl.h"
#include "src/private/PortalMenus.h"
#include "src/private/ProductElements.h"
#include "src/private/RunningProduct.h"
#include "src/private/XmlElement.h"
#include "src/private/XmlNames.h"

namespace TevModelParse {

using namespace XmlName;

namespace {

constexpr char kAddon[] = "Addon";
constexpr char kTool[] = "Tool";

constexpr char kInstalledProducts[] = "InstalledProducts.xml";
constexpr char kInstalledProductsRoot[] = "/InstalledProductsDescription";
constexpr char kPortalDescription[] = "/PortalDescription";

/// Opens Product.xml, DeviceDrivers.xml or Platform.xml. Logs as `kLogFunction` when it cannot be
/// read.
std::shared_ptr<CXmlProto> OpenProductFile(const char* kLogFunction, const std::string& path) {
  std::shared_ptr<CXmlProto> document = ReadDocument(path);
  if (!document) FRAME_LOG(kProgress, "ReadFile  failed str_xml_path[%s]", path.c_str());
  return document;
}

/// The same for the files of addons and tools.
std::shared_ptr<CXmlProto> OpenAddonFile(const char* kLogFunction, const std::string& path) {
  if (path.empty()) {
    FRAME_LOG(kProgress, "Xml path is empty.");
    return nullptr;
  }
  std::shared_ptr<CXmlProto> document = ReadDocument(path);
  if (!document) FRAME_LOG(kProgress, "ReadFile failed. xml path [%s]", path.c_str());
  return document;
}

/// Sets the versions of the running product that the addon supports, from the first entry for that
/// product. Logs as `kLogFunction` which entries name none.
void FindSupportedVersions(const char* kLogFunction, AddonModel& addon, const XmlElement& root) {
  for (const XmlElement& element : SupportedProducts(root)) {
    const std::string logo = element.Text(kProductLogo);
    const std::string product = ProductCodeOfLogo(logo);
    if (product.empty()) {
      FRAME_LOG(kFailure, "Addon[%s]'s supported product[%s] is error.", addon.ID.c_str(),
                logo.c_str());
    } else if (product == g_productName) {
      ReadSupportedVersions(addon, element);
      return;
    }
  }
}

/// Sets whether the addon, which is installed, can run in the running product. Logs as
/// `kLogFunction` when it cannot.
void DecideCompatibility(const char* kLogFunction, AddonModel& addon) {
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

}  // namespace

bool CProductXmlReader::ReadServerModel(ProductModel& model) const {
  FRAME_LOG_AS("TevModelParse::CProductXmlReader::ReadServerModel");
  const std::string base = GetExeDirectory();
  const std::string meta = base + kMetaFolder;
  FRAME_LOG(kProgress, "ReadServerModel exe path[%s]", meta.c_str());

  const std::string product = base + kProductFolder + "Product.xml";
  if (!ReadBaseProductXml(model, product)) {
    FRAME_LOG(kProgress, "ReadBaseProductXml  failed path[%s]", product.c_str());
    return false;
  }
  const std::string drivers = meta + "DeviceDrivers.xml";
  if (!ReadDriverModel(model, drivers)) {
    FRAME_LOG(kProgress, "ReadDriverModel file failed path[%s]", drivers.c_str());
    return false;
  }
  // The next message and that of the plugin descriptions name another function than the one that
  // failed: service logs are searched by these texts.
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
  const std::shared_ptr<CXmlProto> document = OpenProductFile(kLogFunction, path);
  if (!document) return false;
  const XmlElement root(*document, "/ProductDescription");
  ReadProductFields(model, root);
  const XmlElements plugins = root.Child(kPlugins).Children(kPlugin);
  for (const XmlElement& element : plugins) {
    ProductPluginEntry entry = ReadServerPlugin(element);
    FRAME_LOG(kProgress, "Product.xml Will Start plugin[%s]", entry.ID.c_str());
    model.Plugins.push_back(std::move(entry));
  }
  const XmlElements subPlatforms = root.Child("SubPlatforms").Children("SubPlatform");
  for (const XmlElement& element : subPlatforms) {
    SubPlatformEntry entry = ReadSubPlatform(element);
    FRAME_LOG(kProgress, "Product.xml Will Start subplatform[%s]", entry.ID.c_str());
    model.SubPlatforms.push_back(std::move(entry));
  }
  FRAME_LOG(kProgress, "End Read Product.xml[%s], plugin size[%d], sub platform size[%d]",
            path.c_str(), plugins.Count(), subPlatforms.Count());
  return true;
}

bool CProductXmlReader::ReadDriverModel(ProductModel& model, std::string path) const {
  FRAME_LOG_AS("TevModelParse::CProductXmlReader::ReadDriverModel");
  FRAME_LOG(kProgress, "Begin Read DeviceDrivers.xml[%s]", path.c_str());
  const std::shared_ptr<CXmlProto> document = OpenProductFile(kLogFunction, path);
  if (!document) return false;
  const XmlElements drivers = XmlElement(*document, "/DAMDrivers").Children("Driver");
  for (const XmlElement& element : drivers) {
    ProductPluginEntry entry = ReadDriver(element);
    FRAME_LOG(kProgress, "DeviceDrivers.xml Will Start driver[%s]", entry.ID.c_str());
    model.Plugins.push_back(std::move(entry));
  }
  FRAME_LOG(kProgress, "End Read DeviceDrivers.xml[%s], driver_size[%d]", path.c_str(),
            drivers.Count());
  return true;
}

bool CProductXmlReader::ReadPlatformModel(PlatformModel& platform, std::string path) const {
  FRAME_LOG_AS("TevModelParse::CProductXmlReader::ReadPlatformModel");
  const std::shared_ptr<CXmlProto> document = OpenProductFile(kLogFunction, path);
  if (!document) return false;
  ReadPlatformFields(platform, XmlElement(*document, "/Platform"));
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
  const XmlElement list = XmlElement(*document, kPortalDescription).Child("FullNavigationMenuList");
  for (const XmlElement& element : list.Children(kMenuItem)) {
    NavigationMenuItem item = ReadNavigationItem(element);
    if (ReadNavigationMenuRecursion(item.SubItems, document, element.Path())) {
      items.push_back(std::move(item));
    }
  }
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
  return ReadSubItems(children, XmlElement(*document, parentPath));
}

bool CProductXmlReader::ReadFullSceneMenu(std::vector<SceneMenuItem>& items,
                                          std::shared_ptr<CXmlProto> document) const {
  FRAME_LOG_AS("TevModelParse::CProductXmlReader::ReadFullSceneMenu");
  if (!document) {
    FRAME_LOG(kProgress, "ReadFullSceneMenu  failed nullptr == ptr_xml_proto");
    return false;
  }
  const XmlElement list = XmlElement(*document, kPortalDescription).Child("FullSceneMenuList");
  for (const XmlElement& element : list.Children(kMenuItem)) {
    SceneMenuItem item = ReadSceneItem(element);
    if (ReadFullSceneMenuRecursion(item.SubItems, document, element.Path())) {
      items.push_back(std::move(item));
    }
  }
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
  return ReadSubItems(children, XmlElement(*document, parentPath));
}

bool CProductXmlReader::ReadPortalSceneMode(std::vector<PortalMode>& modes,
                                            std::shared_ptr<CXmlProto> document) const {
  FRAME_LOG_AS("TevModelParse::CProductXmlReader::ReadPortalSceneMode");
  if (!document) {
    FRAME_LOG(kProgress, "ReadPortalMode  failed nullptr == ptr_xml_proto");
    return false;
  }
  const XmlElement list = XmlElement(*document, kPortalDescription).Child("PortalModeList");
  for (const XmlElement& element : list.Children("PortalMode")) {
    modes.push_back(ReadPortalMode(element));
  }
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
  if (!ReadAllAddonsXml(addons, base + kProductFolder)) {
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
  if (!ReadAllToolsXml(tools, base + kProductFolder)) {
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
  const std::shared_ptr<CXmlProto> document = OpenAddonFile(kLogFunction, path);
  if (!document) return false;
  const XmlElements elements = XmlElement(*document, "/AddonList").Children(kAddon);
  for (const XmlElement& element : elements) addons.push_back(ReadCatalogueAddon(element));
  FRAME_LOG(kProgress, "End Read AddonAplication.xml[%s], all addon size[%d]", path.c_str(),
            elements.Count());
  return true;
}

bool CProductXmlReader::ReadAllToolsXml(std::vector<ToolModel>& tools,
                                        const std::string& directory) const {
  FRAME_LOG_AS("TevModelParse::CProductXmlReader::ReadAllToolsXml");
  const std::string path = directory + "ProductTools.xml";
  FRAME_LOG(kProgress, "Begin Read ProductTools.xml[%s]", path.c_str());
  const std::shared_ptr<CXmlProto> document = OpenAddonFile(kLogFunction, path);
  if (!document) return false;
  const XmlElements elements = XmlElement(*document, "/ToolList").Children(kTool);
  for (const XmlElement& element : elements) tools.push_back(ReadCatalogueTool(element));
  FRAME_LOG(kProgress, "End Read ProductTools.xml[%s], all addon size[%d]", path.c_str(),
            elements.Count());
  return true;
}

bool CProductXmlReader::ReadInstalledAddonsXml(std::vector<AddonModel>& addons,
                                               const std::string& directory) const {
  FRAME_LOG_AS("TevModelParse::CProductXmlReader::ReadInstalledAddonsXml");
  const std::string path = directory + kInstalledProducts;
  FRAME_LOG(kProgress, "Begin Read InstalledProducts.xml[%s]", path.c_str());
  const std::shared_ptr<CXmlProto> document = OpenAddonFile(kLogFunction, path);
  if (!document) return false;

  const XmlElement root(*document, kInstalledProductsRoot);
  const std::string offlinePackage = root.Child("OfflineInstallPackage").Text(kPath);
  if (!offlinePackage.empty()) {
    for (AddonModel& addon : addons) addon.AddonPackageName = offlinePackage;
  }
  const XmlElements elements = root.Child("Addons").Children(kAddon);
  for (const XmlElement& element : elements) {
    AddonModel installed = ReadInstalledAddon(element, directory);
    const std::string description = DescriptionPath(directory, installed.ID);
    if (!ReadSingleInstalledAddonModel(installed, description)) {
      FRAME_LOG(kFailure, "parse single addon xml failed. xml path [%s]", description.c_str());
    } else if (!CPluginXmlReader().ReadAddonPluginXml(installed)) {
      FRAME_LOG(kFailure, "Addon[%s] parse plugins failed.", installed.ID.c_str());
    } else {
      MergeInstalled(addons, std::move(installed), offlinePackage);
    }
  }
  FRAME_LOG(kProgress, "End Read InstalledProductsDescription.xml[%s], addon size[%d]",
            path.c_str(), elements.Count());
  return true;
}

bool CProductXmlReader::ReadInstalledToolsXml(std::vector<ToolModel>& tools,
                                              const std::string& directory) const {
  FRAME_LOG_AS("TevModelParse::CProductXmlReader::ReadInstalledToolsXml");
  const std::string path = directory + kInstalledProducts;
  FRAME_LOG(kProgress, "Begin Read InstalledProducts.xml[%s]", path.c_str());
  const std::shared_ptr<CXmlProto> document = OpenAddonFile(kLogFunction, path);
  if (!document) return false;

  const XmlElement list = XmlElement(*document, kInstalledProductsRoot).Child("Tools");
  const XmlElements elements = list.Children(kTool);
  for (const XmlElement& element : elements) {
    ToolModel installed = ReadInstalledTool(element, directory);
    const std::string description = DescriptionPath(directory, installed.ID);
    if (ReadSingleInstalledToolModel(installed, description)) {
      MergeInstalled(tools, std::move(installed));
    } else {
      FRAME_LOG(kFailure, "parse single tool xml failed. xml path [%s]", description.c_str());
    }
  }
  FRAME_LOG(kProgress, "End Read InstalledProductsDescription.xml[%s], tool size[%d]", path.c_str(),
            elements.Count());
  return true;
}

bool CProductXmlReader::ReadSingleInstalledAddonModel(AddonModel& addon,
                                                      const std::string& path) const {
  FRAME_LOG_AS("TevModelParse::CProductXmlReader::ReadSingleInstalledAddonModel");
  FRAME_LOG(kProgress, "Begin parse single addon model.path[%s]", path.c_str());
  const std::shared_ptr<CXmlProto> document = OpenAddonFile(kLogFunction, path);
  if (!document) return false;
  const XmlElement root(*document, kAddonDescription);
  const std::string id = root.Text(kID);
  if (id != addon.ID) {
    FRAME_LOG(kProgress, "Addon's ID is not match.[%s] != [%s]", addon.ID.c_str(), id.c_str());
    return false;
  }
  ReadAddonFields(addon, root);
  FindSupportedVersions(kLogFunction, addon, root);
  DecideCompatibility(kLogFunction, addon);
  ReadAddonLists(addon, root);
  FRAME_LOG(kProgress, "End parse single addon model.");
  return true;
}

bool CProductXmlReader::ReadSingleInstalledToolModel(ToolModel& tool,
                                                     const std::string& path) const {
  FRAME_LOG_AS("TevModelParse::CProductXmlReader::ReadSingleInstalledToolModel");
  FRAME_LOG(kProgress, "Begin parse single tool model.path[%s]", path.c_str());
  const std::shared_ptr<CXmlProto> document = OpenAddonFile(kLogFunction, path);
  if (!document) return false;
  const XmlElement root(*document, "/ToolDescription");
  const std::string id = root.Text(kID);
  if (id != tool.ID) {
    FRAME_LOG(kProgress, "Tool's ID is not match.[%s] != [%s]", tool.ID.c_str(), id.c_str());
    return false;
  }
  ReadToolFields(tool, root);
  FRAME_LOG(kProgress, "End parse single tool model.");
  return true;
}

bool CProductXmlReader::ReadClientInfoFromInstalledAddonsXml(ProductModel& model) const {
  FRAME_LOG_AS("TevModelParse::CProductXmlReader::ReadClientInfoFromInstalledAddonsXml");
  const std::string path = GetExeDirectory() + kInstallFolder + kInstalledProducts;
  FRAME_LOG(kProgress, "Begin Read InstalledProducts.xml[%s]", path.c_str());
  const std::shared_ptr<CXmlProto> document = OpenAddonFile(kLogFunction, path);
  if (!document) return false;
  const XmlElement package = XmlElement(*document, kInstalledProductsRoot).Child("ClientPackage");
  model.ClientPackagePath = package.Text(kPath);
  model.ClientPackageMD5 = package.Text("MD5");
  return true;
}

}  // namespace TevModelParse
