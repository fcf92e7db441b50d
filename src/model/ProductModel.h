#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "src/model/PluginDescription.h"

struct LanguageEntry {
  std::string ID;
  bool Flag = false;  // the ID is the word "true"
};

/// One plugin or driver that the product, or an addon, lists.
struct ProductPluginEntry {
  std::string ID;
  std::string Version;
  bool Lazystart = false;
  std::string GroupName;
  std::string Type;  // "server" for a server plugin, "dam_driver" for a driver
  bool Flag = false;
};

struct SubPlatformEntry {
  std::string ID;
  std::string Version;
};

/// The platform's settings, as texts.
struct PlatformModel {
  std::string Version;
  std::string PlatformDBType;
  std::string OneChannelForOneCamera;
};

struct NavigationMenuItem {
  std::string Type;
  std::string RefID;
  std::string ID;
  std::string Name;  // top-level items only
  std::vector<NavigationMenuItem> SubItems;
};

struct SceneMenuItem {
  std::string Type;
  std::string RefID;
  std::string ID;
  std::vector<SceneMenuItem> SubItems;
};

struct SceneModeMenuItem {
  std::string Type;
  std::string RefID;
  std::string ID;
};

struct SceneMode {
  std::int32_t Type = -1;
  std::vector<SceneModeMenuItem> MenuItems;
};

struct PortalMode {
  std::int32_t Type = -1;
  std::vector<SceneMode> SceneModes;
};

struct PortalModel {
  std::vector<NavigationMenuItem> NavigationMenu;
  std::vector<SceneMenuItem> FullSceneMenu;
  std::vector<PortalMode> PortalModes;
};

/// One service that an addon brings.
struct AddonService {
  std::string ID;
  std::string Version;
};

/// The installed product. Plain value.
///
/// Readers append to its lists, in the order of the elements in the files, and overwrite its texts.
/// Before the frame hands it over it adds what installed addons bring and sorts the plugins by ID.
struct ProductModel {
  std::string Product;
  std::string ProductLogo;
  std::string EditionConfig;
  std::string Version;  // full dotted product version
  std::string FnoodPath;
  std::string PlatformID;
  std::string PlatformVersion;
  std::string ClientPackagePath;
  std::string ClientPackageMD5;
  std::vector<LanguageEntry> Languages;
  std::vector<ProductPluginEntry> Plugins;
  std::vector<SubPlatformEntry> SubPlatforms;
  PlatformModel Platform;
  PortalModel Portal;
  std::vector<PluginDescription> ServerPluginDescriptions;
  std::vector<PluginDescription> ExePluginDescriptions;
  std::vector<PluginDescription> DriverPluginDescriptions;
  std::vector<AddonService> AddonServices;
};
