#include <gtest/gtest.h>

#include <cstddef>

#include "src/model/AddonModel.h"
#include "src/model/PluginDescription.h"
#include "src/model/ProductModel.h"
#include "tests/support/FieldCount.h"

namespace {

TEST(Records, ANewProductIsEmpty) {
  const ProductModel model;
  EXPECT_EQ("", model.Product + model.ProductLogo + model.EditionConfig + model.Version +
                    model.FnoodPath + model.PlatformID + model.PlatformVersion +
                    model.ClientPackagePath + model.ClientPackageMD5);
  EXPECT_TRUE(model.Languages.empty() && model.Plugins.empty() && model.SubPlatforms.empty() &&
              model.ServerPluginDescriptions.empty() && model.ExePluginDescriptions.empty() &&
              model.DriverPluginDescriptions.empty() && model.AddonServices.empty());
}

TEST(Records, NewModesHaveTheTypeMinusOne) {
  EXPECT_EQ(-1, PortalMode().Type);
  EXPECT_EQ(-1, SceneMode().Type);
}

TEST(Records, ANewMenuItemHasEmptyTextsAndItsOwnNumbers) {
  const PluginMenuItem item;
  EXPECT_EQ(-1, item.MenuType);
  EXPECT_EQ(1, item.Level);
  EXPECT_EQ(-1, item.SubMenuType);
  EXPECT_EQ(0, item.OpenType);
  EXPECT_EQ(-1, item.ShowType);
  EXPECT_EQ(0, item.MenuState);
  EXPECT_EQ("", item.ResourcePermissionID + item.ConfiguredPermissionID + item.ControlPermissionID +
                    item.ControlItemID + item.ID + item.PluginName);
}

TEST(Records, ANewDescriptionIsALibraryThatIsNotDistributed) {
  const PluginDescription plugin;
  EXPECT_EQ(2, plugin.Type);
  EXPECT_FALSE(plugin.IsDistributed);
  EXPECT_EQ("", plugin.Source);
}

TEST(Records, ANewApplicationHasItsTwoFlagsSet) {
  const AddonApplication application;
  EXPECT_TRUE(application.AuxFlag1 && application.AuxFlag2);
  EXPECT_EQ("", application.ID + application.AuxText1 + application.AuxText2);
}

TEST(Records, ANewAddonOrToolHasNoFlagAndNoNumber) {
  const AddonModel addon;
  EXPECT_FALSE(addon.HaveClientPackage || addon.IsIndependent || addon.IsDistributed ||
               addon.Compatible || addon.PathFlag || addon.Installed || addon.InstalledCompatible);
  EXPECT_EQ(0, addon.PackageSize + addon.PublishingType);
  const ToolModel tool;
  EXPECT_FALSE(tool.ServerSide || tool.Installed || tool.Compatible);
  EXPECT_EQ(0, tool.PackageSize + tool.PublishingType);
}

TEST(Records, ACopiedAddonSharesNothingWithItsSource) {
  AddonModel source;
  source.Applications.resize(1);
  source.Plugins.resize(1);
  source.Services.resize(1);
  source.ServerPluginDescriptions.resize(1);
  source.ExePluginDescriptions.resize(1);
  source.DriverPluginDescriptions.resize(1);
  const AddonModel copy = source;
  source.Applications[0].ID = "changed";
  source.Plugins.clear();
  source.Services[0].ID = "changed";
  source.ServerPluginDescriptions[0].ID = "changed";
  source.ExePluginDescriptions.clear();
  source.DriverPluginDescriptions[0].ID = "changed";
  EXPECT_EQ("", copy.Applications.at(0).ID + copy.Services.at(0).ID +
                    copy.ServerPluginDescriptions.at(0).ID +
                    copy.DriverPluginDescriptions.at(0).ID);
  EXPECT_EQ(2U, copy.Plugins.size() + copy.ExePluginDescriptions.size());
}

std::size_t RoundedUp(std::size_t size, std::size_t alignment) {
  return (size + alignment - 1) / alignment * alignment;
}

/// Whether `record` consists of these fields in this order, with nothing else in it. The number
/// counts too: a further field may fit into the bytes that alignment leaves free.
template <typename Record, typename... Fields>
bool ConsistsOf(const Record& record, const Fields&... fields) {
  std::size_t size = 0;
  bool isInOrder = true;
  const auto add = [&](const void* field, std::size_t fieldSize, std::size_t alignment) {
    const std::ptrdiff_t offset =
        static_cast<const char*>(field) - reinterpret_cast<const char*>(&record);
    size = RoundedUp(size, alignment);
    if (static_cast<std::size_t>(offset) != size) isInOrder = false;
    size += fieldSize;
  };
  (add(&fields, sizeof(fields), alignof(Fields)), ...);
  return isInOrder && sizeof...(fields) == FieldCount<Record>() &&
         RoundedUp(size, alignof(Record)) == sizeof(Record);
}

// Libraries compiled earlier with these records rely on where each field lies.

TEST(Layout, OfAProductIsFixed) {
  const ProductModel p;
  EXPECT_TRUE(ConsistsOf(p, p.Product, p.ProductLogo, p.EditionConfig, p.Version, p.FnoodPath,
                         p.PlatformID, p.PlatformVersion, p.ClientPackagePath, p.ClientPackageMD5,
                         p.Languages, p.Plugins, p.SubPlatforms, p.Platform, p.Portal,
                         p.ServerPluginDescriptions, p.ExePluginDescriptions,
                         p.DriverPluginDescriptions, p.AddonServices));
  const LanguageEntry language;
  EXPECT_TRUE(ConsistsOf(language, language.ID, language.Flag));
  const ProductPluginEntry e;
  EXPECT_TRUE(ConsistsOf(e, e.ID, e.Version, e.Lazystart, e.GroupName, e.Type, e.Flag));
  const SubPlatformEntry sub;
  EXPECT_TRUE(ConsistsOf(sub, sub.ID, sub.Version));
  const PlatformModel platform;
  EXPECT_TRUE(ConsistsOf(platform, platform.Version, platform.PlatformDBType,
                         platform.OneChannelForOneCamera));
}

TEST(Layout, OfAPortalIsFixed) {
  const PortalModel portal;
  EXPECT_TRUE(ConsistsOf(portal, portal.NavigationMenu, portal.FullSceneMenu, portal.PortalModes));
  const NavigationMenuItem n;
  EXPECT_TRUE(ConsistsOf(n, n.Type, n.RefID, n.ID, n.Name, n.SubItems));
  const SceneMenuItem scene;
  EXPECT_TRUE(ConsistsOf(scene, scene.Type, scene.RefID, scene.ID, scene.SubItems));
  const SceneModeMenuItem item;
  EXPECT_TRUE(ConsistsOf(item, item.Type, item.RefID, item.ID));
  const SceneMode sceneMode;
  EXPECT_TRUE(ConsistsOf(sceneMode, sceneMode.Type, sceneMode.MenuItems));
  const PortalMode mode;
  EXPECT_TRUE(ConsistsOf(mode, mode.Type, mode.SceneModes));
}

TEST(Layout, OfAPluginDescriptionIsFixed) {
  const PluginDescription p;
  EXPECT_TRUE(ConsistsOf(p, p.Type, p.ID, p.Name, p.Version, p.Source, p.Path, p.Dependencies,
                         p.MenuItems, p.OwnerAddon, p.EntryType, p.IsDistributed));
  const PluginDependency d;
  EXPECT_TRUE(ConsistsOf(d, d.ID, d.Version, d.Category, d.DependentType));
  const PluginMenuItem m;
  EXPECT_TRUE(ConsistsOf(m, m.PluginName, m.ID, m.MenuType, m.Level, m.SubMenuType, m.NameKey,
                         m.TipsKey, m.DescriptionKey, m.TabNameKey, m.Color, m.SelColor, m.Icon,
                         m.SelIcon, m.TabIcon, m.TabSelIcon, m.OpenType, m.Layout, m.ShowType,
                         m.MenuState, m.Url, m.ResourcePermissionID, m.ConfiguredPermissionID,
                         m.ControlPermissionID, m.ControlItemID));
}

TEST(Layout, OfAnAddonAndAToolIsFixed) {
  const AddonBaseModel b;
  EXPECT_TRUE(ConsistsOf(b, b.ID, b.NameKey, b.Icon, b.FunctionalOverviewKey, b.Version,
                         b.CompatibleVersion, b.Source, b.MinVersion, b.MaxVersion, b.PackageSize,
                         b.HaveClientPackage, b.PublishingType, b.ReplaceAddonID,
                         b.ReplaceAddonMinVersion, b.ReplaceAddonMaxVersion, b.IsIndependent,
                         b.IsDistributed, b.Compatible));
  const AddonInstallInfo i;
  EXPECT_TRUE(ConsistsOf(i, i.PathFlag, i.InstallPath, i.Installed, i.InstalledVersion,
                         i.InstalledCompatibleVersion, i.InstalledCompatible, i.AddonPackageName,
                         i.ClientPackageName, i.LastModifyTime, i.ClientPackageMD5));
  const AddonModel addon;
  EXPECT_TRUE(ConsistsOf(addon, static_cast<const AddonBaseModel&>(addon),
                         static_cast<const AddonInstallInfo&>(addon), addon.Applications,
                         addon.Plugins, addon.Services, addon.ServerPluginDescriptions,
                         addon.ExePluginDescriptions, addon.DriverPluginDescriptions));
  const ToolModel tool;
  EXPECT_TRUE(ConsistsOf(tool, static_cast<const AddonBaseModel&>(tool),
                         static_cast<const AddonInstallInfo&>(tool), tool.ServerSide));
  const AddonApplication a;
  EXPECT_TRUE(ConsistsOf(a, a.ID, a.Icon, a.NameKey, a.FunctionalOverviewKey, a.AuxText1,
                         a.AuxFlag1, a.AuxText2, a.InstallUDF, a.FunctionUDF,
                         a.RelatedApplicationID, a.AuxFlag2));
  const AddonService service;
  EXPECT_TRUE(ConsistsOf(service, service.ID, service.Version));
}

}  // namespace
