#include <stdexcept>

#include "src/PluginFrame/PluginManager.h"
#include "tests/support/FrameTest.h"

using PluginFrame::CPluginManager;
using testing::_;
using testing::DoAll;
using testing::ElementsAre;
using testing::Return;
using testing::SaveArg;
using testing::SetArgReferee;
using testing::Throw;

namespace {

class ManagerInit : public FrameTest {
 protected:
  CPluginManager manager;
};

TEST_F(ManagerInit, LogsEveryStepAndToleratesMissingAddonsAndTools) {
  tree.Product("b: a:");
  EXPECT_TRUE(manager.Init());
  EXPECT_THAT(
      log.Brief("Init"),
      ElementsAre(
          "3 Init: [PluginManager Init]----PluginManager Init start----",
          "4 Init: [PluginManager Init]----ReadServerAddonsModel failed.Get product addons model "
          "param failed----",
          "4 Init: [PluginManager Init]----ReadServerToolsModel failed.Get product tools model "
          "param failed----",
          "3 Init: [PluginManager Init]Set Addons and Tools Model to platform.",
          "3 Init: [PluginManager Init]Get signed & compatibled verify and installed addons size "
          "[0].",
          "3 Init: [PluginManager Init]Set product model param to platform success.",
          "3 Init: [PluginManager Init]Plugins' version: [a:1.0;b:1.0;]",
          "3 Init: [PluginManager Init]Drivers' version: []",
          "3 Init: [PluginManager Init]Switch Product Model to LPC frame info.",
          "3 Init: [PluginManager Init]TevLPCFrameInit success.",
          "3 Init: [PluginManager Init]Set plugin info to platform success.",
          "3 Init: [PluginManager Init]----PluginManager Init success----"));
  EXPECT_THAT(seam.Calls(), ElementsAre("KPX_SetAddonAndToolModel", "KPX_GetInstalledAddonModel",
                                        "KPX_GetRunningModule", "KPX_SetProductModel",
                                        "TevLPCFrameInit", "AddPluginsInfo"));
}

TEST_F(ManagerInit, ThatThrowsInItsLastStepLeavesNothingToStart) {
  tree.Product("a:");
  EXPECT_CALL(seam.platform, AddPluginsInfo).WillOnce(Throw(std::runtime_error("no")));
  EXPECT_THROW(manager.Init(), std::runtime_error);
  Log::Instance().Clear();
  StartedPluginMap started;
  EXPECT_TRUE(manager.Start(&started));
  EXPECT_THAT(log.Brief(), ElementsAre());
}

TEST_F(ManagerInit, WithoutAProductFailsAndHandsNothingOver) {
  EXPECT_FALSE(manager.Init());
  EXPECT_THAT(log.BriefFrom(6),
              ElementsAre("6 Init: [PluginManager Init]----ReadServerModel failed.Get product "
                          "model param failed----"));
  EXPECT_THAT(seam.Calls(), ElementsAre());
}

TEST_F(ManagerInit, FailsWhenThePlatformRefusesTheModel) {
  tree.Product("a:");
  EXPECT_CALL(seam.platform, SetProductModel).WillOnce(Return(0));
  EXPECT_CALL(seam.lpc, Init).Times(0);
  EXPECT_FALSE(manager.Init());
  EXPECT_THAT(log.BriefFrom(6),
              ElementsAre("6 Init: [PluginManager Init]----KPX_SetProductModel failed.Set product "
                          "model param to platform failed----"));
}

TEST_F(ManagerInit, SucceedsWhenThePlatformReturnsAnyNumberButZero) {
  tree.Product("a:");
  EXPECT_CALL(seam.platform, SetProductModel).WillOnce(Return(-1));
  EXPECT_TRUE(manager.Init());
}

TEST_F(ManagerInit, FailsWithTheFrameworksCode) {
  tree.Product("a:");
  EXPECT_CALL(seam.lpc, Init("lpc_server_framework", _)).WillOnce(Return(17));
  EXPECT_CALL(seam.platform, AddPluginsInfo).Times(0);
  EXPECT_FALSE(manager.Init());
  EXPECT_THAT(log.BriefFrom(6),
              ElementsAre("6 Init: [PluginManager Init]----TevLPCFrameInit failed, "
                          "errorcode[17]----"));
  EXPECT_TRUE(manager.Start(nullptr));
  EXPECT_THAT(log.Brief("Start"), ElementsAre());
}

TEST_F(ManagerInit, FailsWithTheFrameworksNegativeCode) {
  tree.Product("a:");
  EXPECT_CALL(seam.lpc, Init).WillOnce(Return(-3));
  EXPECT_FALSE(manager.Init());
  EXPECT_THAT(log.BriefFrom(6),
              ElementsAre("6 Init: [PluginManager Init]----TevLPCFrameInit failed, "
                          "errorcode[-3]----"));
}

TEST_F(ManagerInit, FailedFrameworkLeavesTheRecordsForTheStop) {
  tree.Product("a: b:a");
  EXPECT_CALL(seam.lpc, Init).WillOnce(Return(17));
  EXPECT_FALSE(manager.Init());
  EXPECT_CALL(seam.lpc, UnInit).WillOnce(Return(0));
  EXPECT_CALL(seam.threads, Grant("platform.PluginFrame", 1, 2, 0)).WillOnce(Return(1U));
  manager.Uninit();
}

TEST_F(ManagerInit, OnlyTheDistributedModuleDropsPlugins) {
  ON_CALL(seam.lpc, Init).WillByDefault(Return(0));  // each time anew
  for (const std::int32_t module : {0, 1, 3}) {
    CPluginManager another;
    tree.Product("a:");
    EXPECT_CALL(seam.platform, GetRunningModule).WillOnce(Return(module));
    ProductModel model;
    EXPECT_CALL(seam.platform, SetProductModel).WillOnce(DoAll(SaveArg<0>(&model), Return(1)));
    EXPECT_TRUE(another.Init());
    EXPECT_EQ(1U, model.ServerPluginDescriptions.size()) << module;
  }
}

TEST_F(ManagerInit, HandsTheCataloguesAddonsAndToolsToThePlatform) {
  tree.Product("a:");
  tree.Write("ProductAddons.xml", "<AddonList><Addon><ID>Extra</ID></Addon></AddonList>");
  tree.Write("ProductTools.xml", "<ToolList><Tool><ID>Viewer</ID></Tool></ToolList>");
  std::vector<AddonModel> addons;
  std::vector<ToolModel> tools;
  EXPECT_CALL(seam.platform, SetAddonAndToolModel)
      .WillOnce(DoAll(SaveArg<0>(&addons), SaveArg<1>(&tools)));
  EXPECT_TRUE(manager.Init());
  ASSERT_EQ(1U, addons.size());
  EXPECT_EQ("Extra", addons[0].ID);
  ASSERT_EQ(1U, tools.size());
  EXPECT_EQ("Viewer", tools[0].ID);
}

TEST_F(ManagerInit, AddonsPluginWithAHigherVersionReplacesTheProducts) {
  tree.Product("a:");
  AddonModel addon;
  addon.ID = "Extra";
  PluginDescription newer;
  newer.ID = "a";
  newer.Version = "1.1";
  newer.OwnerAddon = "Extra";
  addon.ServerPluginDescriptions = {newer};
  addon.Services = {{"pay", "1"}};
  EXPECT_CALL(seam.platform, GetInstalledAddonModel)
      .WillOnce(SetArgReferee<0>(std::vector<AddonModel>{addon}));
  ProductModel model;
  EXPECT_CALL(seam.platform, SetProductModel).WillOnce(DoAll(SaveArg<0>(&model), Return(1)));
  EXPECT_TRUE(manager.Init());
  ASSERT_EQ(1U, model.ServerPluginDescriptions.size());
  EXPECT_EQ("Extra", model.ServerPluginDescriptions[0].OwnerAddon);
  EXPECT_EQ("pay", model.AddonServices.at(0).ID);
  EXPECT_THAT(log.Brief("Init")[4],
              "3 Init: [PluginManager Init]Get signed & compatibled verify and installed addons "
              "size [1].");
  EXPECT_THAT(log.Brief("Init")[5], "3 Init: [PluginManager Init]Installed addon name [Extra].");
}

TEST_F(ManagerInit, DistributedModuleDropsPluginsThatAreNotDistributed) {
  tree.Product("a: b:");
  tree.Write("bin/META_INFO/b/b.xml", PluginXml("b", "<IsDistributed>1</IsDistributed>"));
  EXPECT_CALL(seam.platform, GetRunningModule).WillOnce(Return(2));
  ProductModel model;
  EXPECT_CALL(seam.platform, SetProductModel).WillOnce(DoAll(SaveArg<0>(&model), Return(1)));
  EXPECT_TRUE(manager.Init());
  ASSERT_EQ(1U, model.ServerPluginDescriptions.size());
  EXPECT_EQ("b", model.ServerPluginDescriptions[0].ID);
  EXPECT_EQ(2U, model.Plugins.size());
}

TEST_F(ManagerInit, RegistersEveryPluginWithThePlatform) {
  tree.Product("a: b:a");
  PluginInfoMap infos;
  EXPECT_CALL(seam.platform, AddPluginsInfo).WillOnce(SaveArg<0>(&infos));
  manager.Init();
  ASSERT_EQ(2U, infos.size());
  EXPECT_EQ("b", infos.at("b")->plugin_name());
}

TEST_F(ManagerInit, HandsExecutablesToTheFramework) {
  tree.Product("a: exe:a.b");
  tree.Write("bin/META_INFO/exe/exe.xml",
             "<Plugin><Type>1</Type><ID>exe</ID><DependencyList><Plugin ID='a.b'/>"
             "</DependencyList></Plugin>");
  PlatformInfo info;
  EXPECT_CALL(seam.lpc, Init).WillOnce(DoAll(SaveArg<1>(&info), Return(0)));
  EXPECT_TRUE(manager.Init());
  EXPECT_EQ(tree.ExeDirectory() + "KPX_Exe.exe", info.PlatformExePath);
  EXPECT_EQ(tree.ExeDirectory() + "exe.exe", info.Executables.at("exe").Path);
  EXPECT_THAT(info.Executables.at("exe").GroupNames, ElementsAre("a"));
}

TEST_F(ManagerInit, CalledTwiceDoublesTheListsButTrimsThePlugins) {
  tree.Product("a: b:a sub");
  tree.Write("ProductAddons.xml", "<AddonList><Addon><ID>Extra</ID></Addon></AddonList>");
  tree.Write("ProductTools.xml", "<ToolList><Tool><ID>Viewer</ID></Tool></ToolList>");
  ON_CALL(seam.lpc, Init).WillByDefault(Return(0));  // the second time as well
  EXPECT_TRUE(manager.Init());
  EXPECT_CALL(seam.platform, SetAddonAndToolModel(testing::SizeIs(2), testing::SizeIs(2)));
  ProductModel model;
  EXPECT_CALL(seam.platform, SetProductModel).WillOnce(DoAll(SaveArg<0>(&model), Return(1)));
  EXPECT_TRUE(manager.Init());
  EXPECT_EQ(2U, model.SubPlatforms.size());
  EXPECT_EQ(2U, model.ServerPluginDescriptions.size());
  EXPECT_EQ(2U, model.Plugins.size());
  EXPECT_CALL(seam.threads, Grant("platform.PluginFrame", 1, 3, 0)).WillOnce(Return(1U));
  EXPECT_TRUE(manager.Start(nullptr));
}

TEST_F(ManagerInit, InstanceIsTheSameInEachCall) {
  EXPECT_EQ(&CPluginManager::Instance(), &CPluginManager::Instance());
}

}  // namespace
