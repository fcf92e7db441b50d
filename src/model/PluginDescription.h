#pragma once

#include <cstdint>
#include <string>
#include <vector>

/// `PluginDescription::Type`.
namespace PluginType {
constexpr std::int32_t kExecutable = 1;  // a program of its own
constexpr std::int32_t kLibrary = 2;     // a library loaded into the host process
}  // namespace PluginType

/// `PluginDependency::Category`.
namespace DependencyCategory {
constexpr std::int32_t kPlugin = 1;
constexpr std::int32_t kPlatform = 2;
constexpr std::int32_t kOther = 4;
}  // namespace DependencyCategory

/// One thing that a plugin depends on.
struct PluginDependency {
  std::string ID;
  std::string Version;
  std::int32_t Category = DependencyCategory::kPlugin;
  std::int32_t DependentType = 1;
};

/// One entry that a plugin adds to the product's menus. The platform knows the meaning of the
/// numbers.
struct PluginMenuItem {
  std::string PluginName;  // ID of the plugin entry whose description holds the item
  std::string ID;
  std::int32_t MenuType = -1;
  std::int32_t Level = 1;
  std::int32_t SubMenuType = -1;
  std::string NameKey;  // this and the next three: keys into the product's language resources
  std::string TipsKey;
  std::string DescriptionKey;
  std::string TabNameKey;
  std::string Color;
  std::string SelColor;
  std::string Icon;
  std::string SelIcon;
  std::string TabIcon;
  std::string TabSelIcon;
  std::int32_t OpenType = 0;
  std::string Layout;
  std::int32_t ShowType = -1;
  std::int32_t MenuState = 0;
  std::string Url;
  std::string ResourcePermissionID;
  std::string ConfiguredPermissionID;
  std::string ControlPermissionID;
  std::string ControlItemID;
};

/// What a plugin's description file says of it, where the file lies, and who brings it.
struct PluginDescription {
  std::int32_t Type = PluginType::kLibrary;
  std::string ID;
  std::string Name;
  std::string Version;
  std::string Source;  // in no file: empty
  std::string Path;    // an executable: its full path; a library: the directory that holds it
  std::vector<PluginDependency> Dependencies;
  std::vector<PluginMenuItem> MenuItems;
  std::string OwnerAddon;  // ID of the addon that brings the plugin; empty for the product's own
  std::string EntryType;   // `Type` of its entry, for drivers and an addon's plugins; else empty
  bool IsDistributed = false;
};
