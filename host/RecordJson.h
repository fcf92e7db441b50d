#pragma once

#include <nlohmann/json.hpp>

#include "sdk/kpx/platform.h"
#include "sdk/lpc/lpc.h"

// Converts every record that the frame hands over to JSON: each field under its own name, in the
// record's order.

using Json = nlohmann::ordered_json;

#define TEV_FIELD(name) \
  { #name, record.name }

inline void to_json(Json& json, const LanguageEntry& record) {
  json = Json{TEV_FIELD(ID), TEV_FIELD(Flag)};
}

inline void to_json(Json& json, const ProductPluginEntry& record) {
  json = Json{TEV_FIELD(ID),        TEV_FIELD(Version), TEV_FIELD(Lazystart),
              TEV_FIELD(GroupName), TEV_FIELD(Type),    TEV_FIELD(Flag)};
}

inline void to_json(Json& json, const SubPlatformEntry& record) {
  json = Json{TEV_FIELD(ID), TEV_FIELD(Version)};
}

inline void to_json(Json& json, const PlatformModel& record) {
  json = Json{TEV_FIELD(Version), TEV_FIELD(PlatformDBType), TEV_FIELD(OneChannelForOneCamera)};
}

inline void to_json(Json& json, const NavigationMenuItem& record) {
  json =
      Json{TEV_FIELD(Type), TEV_FIELD(RefID), TEV_FIELD(ID), TEV_FIELD(Name), TEV_FIELD(SubItems)};
}

inline void to_json(Json& json, const SceneMenuItem& record) {
  json = Json{TEV_FIELD(Type), TEV_FIELD(RefID), TEV_FIELD(ID), TEV_FIELD(SubItems)};
}

inline void to_json(Json& json, const SceneModeMenuItem& record) {
  json = Json{TEV_FIELD(Type), TEV_FIELD(RefID), TEV_FIELD(ID)};
}

inline void to_json(Json& json, const SceneMode& record) {
  json = Json{TEV_FIELD(Type), TEV_FIELD(MenuItems)};
}

inline void to_json(Json& json, const PortalMode& record) {
  json = Json{TEV_FIELD(Type), TEV_FIELD(SceneModes)};
}

inline void to_json(Json& json, const PortalModel& record) {
  json = Json{TEV_FIELD(NavigationMenu), TEV_FIELD(FullSceneMenu), TEV_FIELD(PortalModes)};
}

inline void to_json(Json& json, const PluginDependency& record) {
  json = Json{TEV_FIELD(ID), TEV_FIELD(Version), TEV_FIELD(Category), TEV_FIELD(DependentType)};
}

inline void to_json(Json& json, const PluginMenuItem& record) {
  json = Json{TEV_FIELD(PluginName),
              TEV_FIELD(ID),
              TEV_FIELD(MenuType),
              TEV_FIELD(Level),
              TEV_FIELD(SubMenuType),
              TEV_FIELD(NameKey),
              TEV_FIELD(TipsKey),
              TEV_FIELD(DescriptionKey),
              TEV_FIELD(TabNameKey),
              TEV_FIELD(Color),
              TEV_FIELD(SelColor),
              TEV_FIELD(Icon),
              TEV_FIELD(SelIcon),
              TEV_FIELD(TabIcon),
              TEV_FIELD(TabSelIcon),
              TEV_FIELD(OpenType),
              TEV_FIELD(Layout),
              TEV_FIELD(ShowType),
              TEV_FIELD(MenuState),
              TEV_FIELD(Url),
              TEV_FIELD(ResourcePermissionID),
              TEV_FIELD(ConfiguredPermissionID),
              TEV_FIELD(ControlPermissionID),
              TEV_FIELD(ControlItemID)};
}

inline void to_json(Json& json, const PluginDescription& record) {
  json = Json{TEV_FIELD(Type),         TEV_FIELD(ID),           TEV_FIELD(Name),
              TEV_FIELD(Version),      TEV_FIELD(Source),       TEV_FIELD(Path),
              TEV_FIELD(Dependencies), TEV_FIELD(MenuItems),    TEV_FIELD(OwnerAddon),
              TEV_FIELD(EntryType),    TEV_FIELD(IsDistributed)};
}

inline void to_json(Json& json, const AddonService& record) {
  json = Json{TEV_FIELD(ID), TEV_FIELD(Version)};
}

inline void to_json(Json& json, const ProductModel& record) {
  json = Json{TEV_FIELD(Product),
              TEV_FIELD(ProductLogo),
              TEV_FIELD(EditionConfig),
              TEV_FIELD(Version),
              TEV_FIELD(FnoodPath),
              TEV_FIELD(PlatformID),
              TEV_FIELD(PlatformVersion),
              TEV_FIELD(ClientPackagePath),
              TEV_FIELD(ClientPackageMD5),
              TEV_FIELD(Languages),
              TEV_FIELD(Plugins),
              TEV_FIELD(SubPlatforms),
              TEV_FIELD(Platform),
              TEV_FIELD(Portal),
              TEV_FIELD(ServerPluginDescriptions),
              TEV_FIELD(ExePluginDescriptions),
              TEV_FIELD(DriverPluginDescriptions),
              TEV_FIELD(AddonServices)};
}

inline void to_json(Json& json, const AddonApplication& record) {
  json = Json{TEV_FIELD(ID),          TEV_FIELD(Icon),
              TEV_FIELD(NameKey),     TEV_FIELD(FunctionalOverviewKey),
              TEV_FIELD(AuxText1),    TEV_FIELD(AuxFlag1),
              TEV_FIELD(AuxText2),    TEV_FIELD(InstallUDF),
              TEV_FIELD(FunctionUDF), TEV_FIELD(RelatedApplicationID),
              TEV_FIELD(AuxFlag2)};
}

/// The fields that an addon and a tool have in common.
template <typename Record>
Json SharedFields(const Record& record) {
  return Json{TEV_FIELD(ID),
              TEV_FIELD(NameKey),
              TEV_FIELD(Icon),
              TEV_FIELD(FunctionalOverviewKey),
              TEV_FIELD(Version),
              TEV_FIELD(CompatibleVersion),
              TEV_FIELD(Source),
              TEV_FIELD(MinVersion),
              TEV_FIELD(MaxVersion),
              TEV_FIELD(PackageSize),
              TEV_FIELD(HaveClientPackage),
              TEV_FIELD(PublishingType),
              TEV_FIELD(ReplaceAddonID),
              TEV_FIELD(ReplaceAddonMinVersion),
              TEV_FIELD(ReplaceAddonMaxVersion),
              TEV_FIELD(IsIndependent),
              TEV_FIELD(IsDistributed),
              TEV_FIELD(Compatible),
              TEV_FIELD(PathFlag),
              TEV_FIELD(InstallPath),
              TEV_FIELD(Installed),
              TEV_FIELD(InstalledVersion),
              TEV_FIELD(InstalledCompatibleVersion),
              TEV_FIELD(InstalledCompatible),
              TEV_FIELD(AddonPackageName),
              TEV_FIELD(ClientPackageName),
              TEV_FIELD(LastModifyTime),
              TEV_FIELD(ClientPackageMD5)};
}

inline void to_json(Json& json, const AddonModel& record) {
  json = SharedFields(record);
  json.update(Json{TEV_FIELD(Applications), TEV_FIELD(Plugins), TEV_FIELD(Services),
                   TEV_FIELD(ServerPluginDescriptions), TEV_FIELD(ExePluginDescriptions),
                   TEV_FIELD(DriverPluginDescriptions)});
}

inline void to_json(Json& json, const ToolModel& record) {
  json = SharedFields(record);
  json["ServerSide"] = record.ServerSide;
}

inline void to_json(Json& json, const ExecutableInfo& record) {
  json = Json{TEV_FIELD(ID),
              TEV_FIELD(Name),
              TEV_FIELD(Path),
              TEV_FIELD(Version),
              TEV_FIELD(PlatformVersion),
              TEV_FIELD(GroupNames),
              TEV_FIELD(Number),
              TEV_FIELD(Flag)};
}

inline void to_json(Json& json, const PlatformInfo& record) {
  json =
      Json{TEV_FIELD(Mode), TEV_FIELD(Edition), TEV_FIELD(PlatformExePath), TEV_FIELD(Executables)};
}

#undef TEV_FIELD

inline void to_json(Json& json, const CPluginInfo& info) {
  json = Json{{"plugin_id", info.plugin_id()}, {"plugin_name", info.plugin_name()},
              {"source", info.source()},       {"version", info.version()},
              {"type", info.type()},           {"is_load", info.is_load()}};
}
