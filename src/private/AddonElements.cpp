#include "src/private/AddonElements.h"

#include <algorithm>
#include <cstdint>
#include <utility>

#include "src/model/ProductModel.h"
#include "src/private/XmlNames.h"

namespace TevModelParse {

using namespace XmlName;

namespace {

constexpr char kFunctionalOverviewKey[] = "FunctionalOverviewKey";
constexpr char kMinVersion[] = "MinVersion";
constexpr char kMaxVersion[] = "MaxVersion";
constexpr char kServerSide[] = "ServerSide";
constexpr char kSource[] = "Source";
constexpr char kSupportProducts[] = "SupportProducts";

constexpr std::int32_t kReplacesAnother = 3;  // a publishing type

AddonApplication ReadApplication(const XmlElement& element) {
  AddonApplication application;
  application.ID = element.Text(kID);
  application.Icon = element.Text(kIcon);
  application.NameKey = element.Text(kNameKey);
  application.FunctionalOverviewKey = element.Text(kFunctionalOverviewKey);
  application.InstallUDF = element.Text("InstallUDF");
  application.FunctionUDF = element.Text("FunctionUDF");
  application.RelatedApplicationID = element.Text("RelatedApplicationID");
  return application;
}

std::vector<AddonApplication> ReadApplications(const XmlElement& addon) {
  std::vector<AddonApplication> applications;
  for (const XmlElement& element : addon.Child("ApplicationList").Children("Application")) {
    applications.push_back(ReadApplication(element));
  }
  return applications;
}

ProductPluginEntry ReadAddonPlugin(const XmlElement& element) {
  ProductPluginEntry entry;
  entry.Type = element.Attribute(kCategory);
  entry.ID = element.Attribute(kID);
  entry.Version = element.Attribute(kVersion);
  return entry;
}

AddonService ReadService(const XmlElement& element) {
  AddonService service;
  service.ID = element.Attribute(kID);
  service.Version = element.Attribute(kVersion);
  return service;
}

/// What both catalogues say of an entry.
void ReadCatalogueFields(AddonBaseModel& entry, const XmlElement& element) {
  entry.ID = element.Text(kID);
  entry.Icon = element.Text(kIcon);
  entry.NameKey = element.Text(kNameKey);
  entry.FunctionalOverviewKey = element.Text(kFunctionalOverviewKey);
  entry.Version = element.Text(kVersion);
  entry.PackageSize = element.Int("PackageSize", 0);
}

/// What InstalledProducts.xml says of addons and tools alike.
template <typename Entry>
Entry ReadInstalled(const XmlElement& element, const std::string& directory) {
  Entry entry;
  entry.ID = element.Attribute(kID);
  entry.InstalledVersion = element.Attribute(kVersion);
  entry.ClientPackageName = element.Attribute("ClientPackageName");
  entry.LastModifyTime = element.Attribute("LastModifyTime");
  entry.ClientPackageMD5 = element.Attribute("ClientPackageMD5");
  entry.InstallPath = directory + entry.ID + "/";
  return entry;
}

/// The values that both kinds of description have.
void ReadDescriptionFields(AddonBaseModel& entry, const XmlElement& root) {
  entry.NameKey = root.Text(kNameKey);
  entry.Icon = root.Text(kIcon);
  entry.FunctionalOverviewKey = root.Text(kFunctionalOverviewKey);
  entry.Version = root.Text(kVersion);
  // A tool's too is read from an addon's root element. Its file has none, so it is 1.0.0.
  const XmlElement addon(root.Document(), kAddonDescription);
  entry.CompatibleVersion = addon.Text("CompatibleVersion", "1.0.0");
  entry.Source = root.Text(kSource);
  entry.HaveClientPackage = root.Flag("HaveClientPackage");
}

template <typename Entry>
typename std::vector<Entry>::iterator FindByID(std::vector<Entry>& entries, const std::string& id) {
  return std::find_if(entries.begin(), entries.end(),
                      [&](const Entry& entry) { return entry.ID == id; });
}

}  // namespace

AddonModel ReadCatalogueAddon(const XmlElement& element) {
  AddonModel addon;
  ReadCatalogueFields(addon, element);
  addon.Installed = addon.ID.empty();
  addon.Compatible = true;
  addon.Applications = ReadApplications(element);
  return addon;
}

ToolModel ReadCatalogueTool(const XmlElement& element) {
  ToolModel tool;
  ReadCatalogueFields(tool, element);
  tool.Source = element.Text(kSource);
  tool.ServerSide = element.Flag(kServerSide);
  return tool;
}

AddonModel ReadInstalledAddon(const XmlElement& element, const std::string& directory) {
  auto addon = ReadInstalled<AddonModel>(element, directory);
  addon.AddonPackageName = element.Attribute("AddonPackageName");
  return addon;
}

ToolModel ReadInstalledTool(const XmlElement& element, const std::string& directory) {
  return ReadInstalled<ToolModel>(element, directory);
}

void ReadAddonFields(AddonModel& addon, const XmlElement& root) {
  ReadDescriptionFields(addon, root);
  addon.PublishingType = root.Int("PublishingType", 0);
  addon.IsIndependent = root.Flag("IsIndependent");
  addon.IsDistributed = root.Flag(kIsDistributed);
  if (addon.PublishingType != kReplacesAnother) return;
  const XmlElement replaced = root.Child("ReplaceAddon");
  addon.ReplaceAddonID = replaced.Text(kID);
  addon.ReplaceAddonMinVersion = replaced.Text(kMinVersion);
  addon.ReplaceAddonMaxVersion = replaced.Text(kMaxVersion);
}

void ReadAddonLists(AddonModel& addon, const XmlElement& root) {
  addon.Applications = ReadApplications(root);
  for (const XmlElement& element : root.Child(kPlugins).Children(kPlugin)) {
    addon.Plugins.push_back(ReadAddonPlugin(element));
  }
  for (const XmlElement& element : root.Child("Services").Children("Service")) {
    addon.Services.push_back(ReadService(element));
  }
}

XmlElements SupportedProducts(const XmlElement& root) {
  return root.Child(kSupportProducts).Children(kProduct);
}

void ReadSupportedVersions(AddonBaseModel& entry, const XmlElement& product) {
  entry.MinVersion = product.Text(kMinVersion);
  entry.MaxVersion = product.Text(kMaxVersion);
}

void ReadToolFields(ToolModel& tool, const XmlElement& root) {
  ReadDescriptionFields(tool, root);
  tool.ServerSide = root.Flag(kServerSide);
  ReadSupportedVersions(tool, root.Child(kSupportProducts).Child(kProduct));
  tool.Installed = true;  // a tool runs with any product: its compatibility is not decided
}

void MergeInstalled(std::vector<AddonModel>& addons, AddonModel installed,
                    const std::string& offlinePackage) {
  const auto entry = FindByID(addons, installed.ID);
  if (entry == addons.end()) {
    addons.push_back(std::move(installed));
    return;
  }
  installed.PackageSize = entry->PackageSize;
  if (installed.AddonPackageName.empty()) installed.AddonPackageName = offlinePackage;
  *entry = std::move(installed);
}

void MergeInstalled(std::vector<ToolModel>& tools, ToolModel installed) {
  const auto entry = FindByID(tools, installed.ID);
  if (entry == tools.end()) {
    tools.push_back(std::move(installed));
  } else {
    *entry = std::move(installed);
  }
}

}  // namespace TevModelParse
