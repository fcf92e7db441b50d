#include "src/private/ProductModelReaderImpl.h"

#include "tests/support/FrameTest.h"

using testing::ElementsAre;
using TevModelParse::CProductXmlReader;

namespace {

class ProductReader : public FrameTest {
 protected:
  std::string Write(const std::string& content) { return tree.Write("f.xml", content); }

  const CProductXmlReader reader{};
  ProductModel model;
};

TEST_F(ProductReader, ReadsEveryFieldOfTheProduct) {
  const std::string path = Write(
      "<ProductDescription><Product>NVX</Product><ProductLogo>Logo</ProductLogo>"
      "<Version>2.6.1.15</Version><EditionConfig>Ed</EditionConfig><FnoodPath>fn</FnoodPath>"
      "<Platform ID='pl' Version='3'/><Languages><Language ID='en'/><Language ID='true'/>"
      "<Language ID='TRUE'/></Languages><Plugins><Plugin ID='a.b.c' Version='1' "
      "Lazystart='true'/><Plugin Lazystart='TRUE'/><Plugin ID='abc' Lazystart='1'/></Plugins>"
      "<SubPlatforms><SubPlatform ID='s' Version='4'/></SubPlatforms></ProductDescription>");
  EXPECT_TRUE(reader.ReadBaseProductXml(model, path));
  EXPECT_EQ("NVX|Logo|2.6.1.15|Ed|fn|pl|3", model.Product + "|" + model.ProductLogo + "|" +
                                                model.Version + "|" + model.EditionConfig + "|" +
                                                model.FnoodPath + "|" + model.PlatformID + "|" +
                                                model.PlatformVersion);
  std::string languages;
  for (const auto& one : model.Languages) languages += one.ID + (one.Flag ? "! " : " ");
  EXPECT_EQ("en true! TRUE ", languages);
  std::string plugins;
  for (const auto& one : model.Plugins) {
    plugins += one.ID + "," + one.Version + "," + (one.Lazystart ? "lazy," : "") + one.GroupName +
               "," + one.Type + (one.Flag ? "!" : "") + " ";
  }
  EXPECT_EQ("a.b.c,1,lazy,a,server ,,,server abc,,,server ", plugins);
  ASSERT_EQ(1U, model.SubPlatforms.size());
  EXPECT_EQ("s4", model.SubPlatforms[0].ID + model.SubPlatforms[0].Version);
  EXPECT_THAT(log.Brief(),
              ElementsAre("3 ReadBaseProductXml: Begin Read Product.xml[" + path + "]",
                          "3 ReadBaseProductXml: Product.xml Will Start plugin[a.b.c]",
                          "3 ReadBaseProductXml: Product.xml Will Start plugin[]",
                          "3 ReadBaseProductXml: Product.xml Will Start plugin[abc]",
                          "3 ReadBaseProductXml: Product.xml Will Start subplatform[s]",
                          "3 ReadBaseProductXml: End Read Product.xml[" + path +
                              "], plugin size[3], sub platform size[1]"));
}

TEST_F(ProductReader, AbsentFieldsAreOverwrittenAndListsGrow) {
  model.Product = "old";
  model.Plugins.resize(2);
  EXPECT_TRUE(reader.ReadBaseProductXml(model, Write("<ProductDescription/>")));
  EXPECT_EQ("", model.Product);
  EXPECT_EQ(2U, model.Plugins.size());
  EXPECT_THAT(log.Brief().back(), testing::HasSubstr("plugin size[0], sub platform size[0]"));
}

TEST_F(ProductReader, PluginWithoutLazystartIsNotLazy) {
  reader.ReadBaseProductXml(model, Write("<ProductDescription><Plugins><Plugin ID='a'/></Plugins>"
                                         "</ProductDescription>"));
  ASSERT_EQ(1U, model.Plugins.size());
  EXPECT_FALSE(model.Plugins[0].Lazystart);
}

TEST_F(ProductReader, ReadTwiceTheListsAreThereTwice) {
  const std::string path = Write(
      "<ProductDescription><Languages><Language ID='en'/></Languages><Plugins><Plugin ID='a'/>"
      "</Plugins><SubPlatforms><SubPlatform ID='s'/></SubPlatforms></ProductDescription>");
  reader.ReadBaseProductXml(model, path);
  reader.ReadBaseProductXml(model, path);
  EXPECT_EQ(2U, model.Languages.size());
  EXPECT_EQ(2U, model.Plugins.size());
  EXPECT_EQ(2U, model.SubPlatforms.size());
}

TEST_F(ProductReader, AFileThatIsNoXmlReadsAsEmpty) {
  EXPECT_TRUE(reader.ReadBaseProductXml(model, Write("not xml")));
  EXPECT_TRUE(reader.ReadDriverModel(model, Write("not xml")));
  model.Platform.Version = "old";
  EXPECT_TRUE(reader.ReadPlatformModel(model.Platform, Write("not xml")));
  EXPECT_EQ("", model.Platform.Version);
  EXPECT_TRUE(reader.ReadServerPotalModel(model.Portal, Write("not xml")));
  EXPECT_TRUE(model.Plugins.empty() && model.Portal.NavigationMenu.empty());
}

TEST_F(ProductReader, PositionsCountInsideEachSectionSoTwoSectionsRepeatTheFirst) {
  EXPECT_TRUE(reader.ReadBaseProductXml(
      model, Write("<ProductDescription><Plugins><Plugin ID='a'/><Plugin ID='b'/></Plugins>"
                   "<Plugins><Plugin ID='c'/></Plugins></ProductDescription>")));
  ASSERT_EQ(3U, model.Plugins.size());
  EXPECT_EQ("a,b,", model.Plugins[0].ID + "," + model.Plugins[1].ID + "," + model.Plugins[2].ID);
}

TEST_F(ProductReader, UnreadableFilesFailWithTheirPath) {
  EXPECT_FALSE(reader.ReadBaseProductXml(model, "none"));
  EXPECT_FALSE(reader.ReadDriverModel(model, "none"));
  EXPECT_FALSE(reader.ReadPlatformModel(model.Platform, "none"));
  EXPECT_FALSE(reader.ReadPlatformModel(model.Platform, ""));
  EXPECT_FALSE(reader.ReadServerPotalModel(model.Portal, "none"));
  EXPECT_FALSE(reader.ReadBaseProductXml(model, ""));
  EXPECT_THAT(log.Brief(), ElementsAre("3 ReadBaseProductXml: Begin Read Product.xml[none]",
                                       "3 ReadBaseProductXml: ReadFile  failed str_xml_path[none]",
                                       "3 ReadDriverModel: Begin Read DeviceDrivers.xml[none]",
                                       "3 ReadDriverModel: ReadFile  failed str_xml_path[none]",
                                       "3 ReadPlatformModel: ReadFile  failed str_xml_path[none]",
                                       "3 ReadPlatformModel: ReadFile  failed str_xml_path[]",
                                       "3 ReadServerPotalModel: Begin Read Portal.xml[none]",
                                       "3 ReadServerPotalModel: ReadFile  failed path[none]",
                                       "3 ReadBaseProductXml: Begin Read Product.xml[]",
                                       "3 ReadBaseProductXml: ReadFile  failed str_xml_path[]"));
}

TEST_F(ProductReader, DriversFollowThePluginsAndAreNeverLazy) {
  model.Plugins.resize(3);
  const std::string path =
      Write("<DAMDrivers><Driver ID='x.d' Version='1' Lazystart='true'/><Driver/></DAMDrivers>");
  EXPECT_TRUE(reader.ReadDriverModel(model, path));
  ASSERT_EQ(5U, model.Plugins.size());
  EXPECT_EQ("x.d,1,x,dam_driver", model.Plugins[3].ID + "," + model.Plugins[3].Version + "," +
                                      model.Plugins[3].GroupName + "," + model.Plugins[3].Type);
  EXPECT_FALSE(model.Plugins[3].Lazystart);
  EXPECT_EQ("dam_driver", model.Plugins[4].ID + model.Plugins[4].GroupName + model.Plugins[4].Type);
  EXPECT_THAT(
      log.Brief(),
      ElementsAre("3 ReadDriverModel: Begin Read DeviceDrivers.xml[" + path + "]",
                  "3 ReadDriverModel: DeviceDrivers.xml Will Start driver[x.d]",
                  "3 ReadDriverModel: DeviceDrivers.xml Will Start driver[]",
                  "3 ReadDriverModel: End Read DeviceDrivers.xml[" + path + "], driver_size[2]"));
}

TEST_F(ProductReader, PlatformSettingsAreTextsAndSilent) {
  EXPECT_TRUE(reader.ReadPlatformModel(
      model.Platform,
      Write("<Platform><Version>1</Version><PlatformDBType>db</PlatformDBType></Platform>")));
  EXPECT_EQ("1|db|", model.Platform.Version + "|" + model.Platform.PlatformDBType + "|" +
                         model.Platform.OneChannelForOneCamera);
  reader.ReadPlatformModel(
      model.Platform,
      Write("<Platform><OneChannelForOneCamera>yes</OneChannelForOneCamera></Platform>"));
  EXPECT_EQ("yes", model.Platform.OneChannelForOneCamera);
  EXPECT_THAT(log.Brief(), ElementsAre());
}

/// "Type/RefID/ID/Name(children)" of a menu.
std::string Text(const std::vector<NavigationMenuItem>& items) {
  std::string text;
  for (const auto& item : items) {
    text += item.Type + "/" + item.RefID + "/" + item.ID + "/" + item.Name + "(" +
            Text(item.SubItems) + ")";
  }
  return text;
}

std::string Text(const std::vector<SceneMenuItem>& items) {
  std::string text;
  for (const auto& item : items) {
    text += item.Type + "/" + item.RefID + "/" + item.ID + "(" + Text(item.SubItems) + ")";
  }
  return text;
}

TEST_F(ProductReader, NavigationItemsWithoutChildrenAreDroppedAtTheTopOnly) {
  const std::string path = Write(
      "<PortalDescription><FullNavigationMenuList><MenuItem ID='1'/>"
      "<MenuItem Type='t' ID='2' RefID='r' Name='n'><MenuItem ID='2a' Name='not read'/>"
      "<MenuItem ID='2b'><MenuItem ID='2b1'/></MenuItem></MenuItem><MenuItem ID='3'/>"
      "</FullNavigationMenuList></PortalDescription>");
  EXPECT_TRUE(reader.ReadServerPotalModel(model.Portal, path));
  EXPECT_EQ("t/r/2/n(//2a/()//2b/(//2b1/()))", Text(model.Portal.NavigationMenu));
  EXPECT_THAT(log.Brief(),
              ElementsAre("3 ReadServerPotalModel: Begin Read Portal.xml[" + path + "]",
                          "3 ReadServerPotalModel: End Read Portal.xml[" + path + "]"));
}

TEST_F(ProductReader, SceneItemsKeepAllLevelsBelowTheTop) {
  reader.ReadServerPotalModel(
      model.Portal,
      Write("<PortalDescription><FullSceneMenuList><MenuItem ID='gone'/><MenuItem Type='t' "
            "RefID='r' ID='1'><MenuItem ID='2'><MenuItem ID='3'/><MenuItem ID='4'/></MenuItem>"
            "</MenuItem></FullSceneMenuList></PortalDescription>"));
  EXPECT_EQ("t/r/1(//2(//3()//4()))", Text(model.Portal.FullSceneMenu));
}

TEST_F(ProductReader, PortalAndSceneModesAreAllKept) {
  reader.ReadServerPotalModel(
      model.Portal,
      Write("<PortalDescription><PortalModeList><PortalMode/><PortalMode><Type>12x</Type>"
            "<SceneModeList><SceneMode><Type>abc</Type><SceneMenuList><MenuItem Type='t' "
            "RefID='r' ID='1'><MenuItem ID='nested'/></MenuItem><MenuItem ID='2'/>"
            "</SceneMenuList></SceneMode><SceneMode/></SceneModeList></PortalMode>"
            "</PortalModeList></PortalDescription>"));
  const auto& modes = model.Portal.PortalModes;
  ASSERT_EQ(2U, modes.size());
  EXPECT_EQ(-1, modes[0].Type);
  EXPECT_TRUE(modes[0].SceneModes.empty());
  EXPECT_EQ(12, modes[1].Type);
  ASSERT_EQ(2U, modes[1].SceneModes.size());
  EXPECT_EQ(0, modes[1].SceneModes[0].Type);
  EXPECT_EQ(-1, modes[1].SceneModes[1].Type);
  const auto& items = modes[1].SceneModes[0].MenuItems;
  ASSERT_EQ(2U, items.size());
  EXPECT_EQ("t/r/1", items[0].Type + "/" + items[0].RefID + "/" + items[0].ID);
  EXPECT_EQ("2", items[1].ID);
}

TEST_F(ProductReader, AnEmptyPortalModeListIsNoFailure) {
  EXPECT_TRUE(reader.ReadServerPotalModel(
      model.Portal, Write("<PortalDescription><PortalModeList/></PortalDescription>")));
  EXPECT_TRUE(model.Portal.PortalModes.empty());
}

TEST_F(ProductReader, SectionsWithoutADocumentFailAndSaySo) {
  EXPECT_FALSE(reader.ReadNavigationMenu(model.Portal.NavigationMenu, nullptr));
  EXPECT_FALSE(reader.ReadNavigationMenuRecursion(model.Portal.NavigationMenu, nullptr, "/x"));
  EXPECT_FALSE(reader.ReadFullSceneMenu(model.Portal.FullSceneMenu, nullptr));
  EXPECT_FALSE(reader.ReadFullSceneMenuRecursion(model.Portal.FullSceneMenu, nullptr, "/x"));
  EXPECT_FALSE(reader.ReadPortalSceneMode(model.Portal.PortalModes, nullptr));
  EXPECT_THAT(
      log.Brief(),
      ElementsAre("3 ReadNavigationMenu: ReadNavigationMenu  failed nullptr == ptr_xml_proto",
                  "3 ReadNavigationMenuRecursion: ReadNavigationMenuRecursion  failed nullptr == "
                  "ptr_xml_proto",
                  "3 ReadFullSceneMenu: ReadFullSceneMenu  failed nullptr == ptr_xml_proto",
                  "3 ReadFullSceneMenuRecursion: ReadFullSceneMenuRecursion  failed nullptr == "
                  "ptr_xml_proto",
                  "3 ReadPortalSceneMode: ReadPortalMode  failed nullptr == ptr_xml_proto"));
}

TEST_F(ProductReader, ServerModelReadsItsFilesInOrderAndSetsTheProductValues) {
  tree.Product("a:");
  EXPECT_TRUE(reader.ReadServerModel(model));
  EXPECT_EQ("NVX 2.6.1", g_productName + " " + g_productVersion);
  const std::string exe = tree.ExeDirectory();
  const std::string meta = exe + "META_INFO/";
  EXPECT_THAT(
      log.Brief(),
      ElementsAre("3 ReadServerModel: ReadServerModel exe path[" + meta + "]",
                  "3 ReadBaseProductXml: Begin Read Product.xml[" + exe + "../Product.xml]",
                  "3 ReadBaseProductXml: Product.xml Will Start plugin[a]",
                  "3 ReadBaseProductXml: End Read Product.xml[" + exe +
                      "../Product.xml], plugin size[1], sub platform size[0]",
                  "3 ReadDriverModel: Begin Read DeviceDrivers.xml[" + meta + "DeviceDrivers.xml]",
                  "3 ReadDriverModel: End Read DeviceDrivers.xml[" + meta +
                      "DeviceDrivers.xml], driver_size[0]",
                  "3 ReadServerPotalModel: Begin Read Portal.xml[" + meta + "Portal.xml]",
                  "3 ReadServerPotalModel: End Read Portal.xml[" + meta + "Portal.xml]",
                  "3 ReadServerModel: Begin Read plugin.xml",
                  "3 ReadServerModel: End Read plugin.xml",
                  "3 ReadClientInfoFromInstalledAddonsXml: Begin Read InstalledProducts.xml[" +
                      exe + "TevAddons/InstalledProducts.xml]",
                  "3 ReadClientInfoFromInstalledAddonsXml: ReadFile failed. xml path [" + exe +
                      "TevAddons/InstalledProducts.xml]",
                  "5 ReadServerModel: ReadClientInfoFromInstalledAddonsXml failed."));
}

TEST_F(ProductReader, ServerModelStopsAtTheFirstFileThatCannotBeRead) {
  const std::string exe = tree.ExeDirectory();
  const std::string meta = exe + "META_INFO/";
  const std::pair<const char*, std::string> files[] = {
      {"Product.xml", "ReadBaseProductXml  failed path[" + exe + "../Product.xml]"},
      {"bin/META_INFO/DeviceDrivers.xml",
       "ReadDriverModel file failed path[" + meta + "DeviceDrivers.xml]"},
      {"bin/META_INFO/Portal.xml", "ReadUIModelXml  failed path[" + meta + "Portal.xml]"},
      {"bin/META_INFO/Platform.xml", "ReadPlatformModel  failed path[" + meta + "Platform.xml]"},
      {"bin/META_INFO/a/a.xml", "ReadServerPluginXml  failed path[" + exe + "]"}};
  for (const auto& file : files) {
    tree.Product("a:");
    tree.Remove(file.first);
    EXPECT_FALSE(reader.ReadServerModel(model)) << file.first;
    EXPECT_EQ("3 ReadServerModel: " + file.second, log.Brief().back());
    EXPECT_EQ("", g_productName);
  }
}

TEST_F(ProductReader, FirstUnreadableFileInTheFixedOrderEndsTheServerModel) {
  const std::string exe = tree.ExeDirectory();
  const std::string meta = exe + "META_INFO/";
  const std::string files[] = {"bin/META_INFO/a/a.xml", "bin/META_INFO/Platform.xml",
                               "bin/META_INFO/Portal.xml", "bin/META_INFO/DeviceDrivers.xml",
                               "Product.xml"};
  std::vector<std::string> failures;
  tree.Product("a:");
  for (const std::string& file : files) {
    Log::Instance().Clear();
    tree.Remove(file);
    EXPECT_FALSE(reader.ReadServerModel(model));
    failures.push_back(log.Brief().back());
  }
  EXPECT_THAT(
      failures,
      ElementsAre(
          "3 ReadServerModel: ReadServerPluginXml  failed path[" + exe + "]",
          "3 ReadServerModel: ReadPlatformModel  failed path[" + meta + "Platform.xml]",
          "3 ReadServerModel: ReadUIModelXml  failed path[" + meta + "Portal.xml]",
          "3 ReadServerModel: ReadDriverModel file failed path[" + meta + "DeviceDrivers.xml]",
          "3 ReadServerModel: ReadBaseProductXml  failed path[" + exe + "../Product.xml]"));
}

TEST_F(ProductReader, AVersionOfTwoPartsLeavesTheShortVersionAsItWas) {
  g_productVersion = "9.9.9";
  const std::pair<const char*, const char*> versions[] = {
      {"", "9.9.9"}, {"2.6", "9.9.9"}, {"3..1.2", "3.1.2"}, {"..4.5.6.7.", "4.5.6"}};
  for (const auto& version : versions) {
    tree.Product("");
    tree.Write("Product.xml", std::string("<ProductDescription><Version>") + version.first +
                                  "</Version></ProductDescription>");
    EXPECT_TRUE(reader.ReadServerModel(model));
    EXPECT_EQ(version.second, g_productVersion) << version.first;
  }
}

}  // namespace
