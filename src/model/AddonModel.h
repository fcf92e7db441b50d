#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "src/model/PluginDescription.h"
#include "src/model/ProductModel.h"

/// What the catalogue and the description say of an addon or a tool.
struct AddonBaseModel {
  std::string ID;  // the same in catalogue, installed list and description
  std::string NameKey;
  std::string Icon;
  std::string FunctionalOverviewKey;
  std::string Version;
  std::string CompatibleVersion;
  std::string Source;
  std::string MinVersion;  // lowest product version supported
  std::string MaxVersion;  // highest; logged, never compared
  std::int32_t PackageSize = 0;
  bool HaveClientPackage = false;
  std::int32_t PublishingType = 0;  // 3: replaces the addon named by the next three
  std::string ReplaceAddonID;
  std::string ReplaceAddonMinVersion;
  std::string ReplaceAddonMaxVersion;
  bool IsIndependent = false;
  bool IsDistributed = false;
  bool Compatible = false;  // may run with the running product
};

/// What the installation says of an addon or a tool.
struct AddonInstallInfo {
  bool PathFlag = false;  // never set here; the platform knows its meaning
  std::string InstallPath;
  bool Installed = false;
  std::string InstalledVersion;
  std::string InstalledCompatibleVersion;
  bool InstalledCompatible = false;
  std::string AddonPackageName;
  std::string ClientPackageName;
  std::string LastModifyTime;
  std::string ClientPackageMD5;
};

/// One application that an addon adds to the client. The Aux fields are never set here; the
/// platform knows their meaning.
struct AddonApplication {
  std::string ID;
  std::string Icon;
  std::string NameKey;
  std::string FunctionalOverviewKey;
  std::string AuxText1;
  bool AuxFlag1 = true;
  std::string AuxText2;
  std::string InstallUDF;
  std::string FunctionUDF;
  std::string RelatedApplicationID;
  bool AuxFlag2 = true;
};

/// One addon: an optional extension of the product.
struct AddonModel : AddonBaseModel, AddonInstallInfo {
  std::vector<AddonApplication> Applications;
  std::vector<ProductPluginEntry> Plugins;
  std::vector<AddonService> Services;
  std::vector<PluginDescription> ServerPluginDescriptions;
  std::vector<PluginDescription> ExePluginDescriptions;
  std::vector<PluginDescription> DriverPluginDescriptions;
};

/// One tool: a separate utility.
struct ToolModel : AddonBaseModel, AddonInstallInfo {
  bool ServerSide = false;
};
