#include <gtest/gtest.h>

#include "src/model/AddonModel.h"
#include "src/model/ProductModel.h"

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

}  // namespace
