#include "src/private/PluginModelReaderImpl.h"

#include "tests/support/FrameTest.h"

using testing::ElementsAre;
using TevModelParse::CPluginXmlReader;

namespace {

class PluginReader : public FrameTest {
 protected:
  /// Reads this description as a plugin `a.b` of the product, listed with this type.
  bool Read(const std::string& xml, const std::string& entryType = "server") {
    tree.Write("bin/META_INFO/a.b/a.b.xml", xml);
    return ReadEntries({Entry("a.b", entryType)});
  }

  bool ReadEntries(const std::vector<ProductPluginEntry>& entries) {
    const std::string exe = tree.ExeDirectory();
    return reader.ReadPluginXml(servers, exes, drivers, exe, exe + "META_INFO/", entries);
  }

  static ProductPluginEntry Entry(const std::string& id, const std::string& type) {
    ProductPluginEntry entry;
    entry.ID = id;
    entry.Type = type;
    return entry;
  }

  std::string Path(const std::string& id) const {
    return tree.ExeDirectory() + "META_INFO/" + id + "/" + id + ".xml";
  }

  const CPluginXmlReader reader{};
  std::vector<PluginDescription> servers;
  std::vector<PluginDescription> exes;
  std::vector<PluginDescription> drivers;
};

TEST_F(PluginReader, ServerPluginLiesInTheExecutablesDirectory) {
  EXPECT_TRUE(
      Read("<Plugin><Type>2</Type><ID>i</ID><Name>n</Name><Version>v</Version>"
           "<IsDistributed>1</IsDistributed></Plugin>"));
  ASSERT_EQ(1U, servers.size());
  const PluginDescription& plugin = servers[0];
  EXPECT_EQ("i n v", plugin.ID + " " + plugin.Name + " " + plugin.Version);
  EXPECT_EQ(tree.ExeDirectory(), plugin.Path);
  EXPECT_EQ("", plugin.EntryType + plugin.OwnerAddon + plugin.Source);
  EXPECT_TRUE(plugin.IsDistributed);
  EXPECT_THAT(log.Brief(), ElementsAre());
}

TEST_F(PluginReader, LibraryOfAnotherEntryTypeIsADriver) {
  EXPECT_TRUE(Read("<Plugin><Type>2</Type></Plugin>", "dam_driver"));
  EXPECT_TRUE(Read("<Plugin><Type>2</Type></Plugin>", "Server"));
  ASSERT_EQ(2U, drivers.size());
  EXPECT_EQ("dam_driver Server", drivers[0].EntryType + " " + drivers[1].EntryType);
  EXPECT_EQ(tree.ExeDirectory(), drivers[0].Path);
}

TEST_F(PluginReader, ExecutablesPathIsMadeOfTheEntrysId) {
  EXPECT_TRUE(Read("<Plugin><Type>1</Type><ID>other</ID><Name>name</Name></Plugin>", "x"));
  ASSERT_EQ(1U, exes.size());
  EXPECT_EQ(tree.ExeDirectory() + "a.b.exe", exes[0].Path);
  EXPECT_EQ("", exes[0].EntryType);
}

TEST_F(PluginReader, WrongTypeIsLoggedAndDroppedButNoFailure) {
  for (const char* xml : {"<Plugin><Type>3</Type></Plugin>", "<Plugin/>", "no xml"}) {
    Log::Instance().Clear();
    EXPECT_TRUE(Read(xml));
    EXPECT_THAT(log.Brief(), ElementsAre("3 ReadPluginXml: wrror type [" + Path("a.b") + "]"));
  }
  EXPECT_TRUE(servers.empty() && exes.empty() && drivers.empty());
}

TEST_F(PluginReader, DistributedIsTheNumberOneOnly) {
  Read("<Plugin><Type>2</Type><IsDistributed>2</IsDistributed></Plugin>");
  Read("<Plugin><Type>2</Type></Plugin>");
  EXPECT_FALSE(servers.at(0).IsDistributed);
  EXPECT_FALSE(servers.at(1).IsDistributed);
}

TEST_F(PluginReader, OneUnreadableDescriptionOfFiveLeavesFour) {
  std::vector<ProductPluginEntry> entries;
  for (const char* id : {"a", "b", "c", "d", "e"}) {
    entries.push_back(Entry(id, "server"));
    if (std::string(id) != "c") {
      tree.Write("bin/META_INFO/" + std::string(id) + "/" + id + ".xml", PluginXml(id));
    }
  }
  EXPECT_FALSE(ReadEntries(entries));
  std::string read;
  for (const auto& plugin : servers) read += plugin.ID;
  EXPECT_EQ("abde", read);
  EXPECT_THAT(log.Brief(),
              ElementsAre("3 ReadPluginXml: ReadFile  failed path[" + Path("c") + "]"));
}

TEST_F(PluginReader, DependenciesArePluginsFirstWithTheirDefaults) {
  Read(
      "<Plugin><Type>2</Type><DependencyList><Platform ID='p' Version='1'/>"
      "<Platform Category='Platform'/><Platform Category=''/><Platform Category='platform'/>"
      "<Plugin ID='x' Version='2' DependentType='3'/>"
      "<Plugin DependentType=''/><Plugin DependentType='z'/></DependencyList></Plugin>");
  std::string text;
  for (const auto& one : servers.at(0).Dependencies) {
    text += one.ID + "," + one.Version + "," + std::to_string(one.Category) + "," +
            std::to_string(one.DependentType) + " ";
  }
  EXPECT_EQ("x,2,1,3 ,,1,1 ,,1,0 p,1,2,1 ,,4,1 ,,4,1 ,,2,1 ", text);
}

std::string Text(const PluginMenuItem& i) {
  std::string text;
  for (const std::string& field : {i.PluginName,
                                   i.ID,
                                   std::to_string(i.MenuType),
                                   std::to_string(i.Level),
                                   std::to_string(i.SubMenuType),
                                   i.NameKey,
                                   i.TipsKey,
                                   i.DescriptionKey,
                                   i.TabNameKey,
                                   i.Color,
                                   i.SelColor,
                                   i.Icon,
                                   i.SelIcon,
                                   i.TabIcon,
                                   i.TabSelIcon,
                                   std::to_string(i.OpenType),
                                   i.Layout,
                                   std::to_string(i.ShowType),
                                   std::to_string(i.MenuState),
                                   i.Url,
                                   i.ResourcePermissionID,
                                   i.ConfiguredPermissionID,
                                   i.ControlPermissionID,
                                   i.ControlItemID}) {
    text += field + "|";
  }
  return text;
}

TEST_F(PluginReader, MenuItemsReadEveryField) {
  std::string item;
  int number = 0;
  for (const char* field : {"ID",
                            "MenuType",
                            "Level",
                            "SubMenuType",
                            "NameKey",
                            "TipsKey",
                            "DescriptionKey",
                            "TabNameKey",
                            "Color",
                            "SelColor",
                            "Icon",
                            "SelIcon",
                            "TabIcon",
                            "TabSelIcon",
                            "OpenType",
                            "Layout",
                            "ShowType",
                            "MenuState",
                            "Url",
                            "ResourcePermissionID",
                            "ConfiguredPermissionID",
                            "ControlPermissionID",
                            "ControlItemID"}) {
    item += "<" + std::string(field) + ">" + std::to_string(++number) + "</" + field + ">";
  }
  Read("<Plugin><Type>2</Type><MenuList><MenuItem>" + item + "</MenuItem></MenuList></Plugin>");
  EXPECT_EQ("a.b|1|2|3|4|5|6|7|8|9|10|11|12|13|14|15|16|17|18|19|20|21|22|23|",
            Text(servers.at(0).MenuItems.at(0)));
}

TEST_F(PluginReader, AnEmptyMenuItemHasItsDefaults) {
  Read("<Plugin><Type>2</Type><MenuList><MenuItem/></MenuList></Plugin>");
  EXPECT_EQ("a.b||-1|-1|-1|||||||||||-1||-1|-1||-1|-1|-1|-1|", Text(servers.at(0).MenuItems.at(0)));
}

TEST_F(PluginReader, MenuItemsAreAppendedInTheirOrder) {
  auto document = std::make_shared<TevModelParse::CXmlProto>();
  document->ParseMemory(
      "<Plugin><MenuList><MenuItem><ID>1</ID></MenuItem><MenuItem><ID>2</ID></MenuItem>"
      "<MenuItem><ID>3</ID></MenuItem></MenuList></Plugin>");
  std::vector<PluginMenuItem> items(1);
  reader.ReadMenuList(items, Entry("p", ""), document);
  std::string ids;
  for (const auto& item : items) ids += item.ID + ",";
  EXPECT_EQ(",1,2,3,", ids);
}

class AddonPluginReader : public PluginReader {
 protected:
  bool ReadAddon(const std::string& xml, const std::string& entryType) {
    tree.Write("bin/META_INFO/a.b/a.b.xml", xml);
    addon.ID = "Extra";
    addon.Plugins = {Entry("a.b", entryType)};
    seam.exePath = tree.ExePath();
    return reader.ReadAddonPluginXml(addon);
  }

  AddonModel addon;
};

TEST_F(AddonPluginReader, SortsByTheEntrysTypeFirst) {
  EXPECT_TRUE(ReadAddon("<Plugin><Type>1</Type></Plugin>", "driver"));
  EXPECT_TRUE(ReadAddon("<Plugin><Type>77</Type></Plugin>", "driver"));
  EXPECT_TRUE(ReadAddon("no xml", "driver"));
  EXPECT_TRUE(ReadAddon("<Plugin><Type>1</Type></Plugin>", "server"));
  EXPECT_TRUE(ReadAddon("<Plugin><Type>2</Type></Plugin>", "server"));
  ASSERT_EQ(3U, addon.DriverPluginDescriptions.size());
  EXPECT_EQ(-1, addon.DriverPluginDescriptions[2].Type);
  ASSERT_EQ(1U, addon.ExePluginDescriptions.size());
  EXPECT_EQ(tree.ExeDirectory() + "a.b.exe", addon.ExePluginDescriptions[0].Path);
  ASSERT_EQ(1U, addon.ServerPluginDescriptions.size());
  EXPECT_EQ(tree.ExeDirectory(), addon.ServerPluginDescriptions[0].Path);
  EXPECT_EQ("Extra server", addon.ServerPluginDescriptions[0].OwnerAddon + " " +
                                addon.ServerPluginDescriptions[0].EntryType);
  EXPECT_THAT(log.Brief(), ElementsAre());
}

TEST_F(AddonPluginReader, EntryOfAnEmptyTypeIsADriver) {
  EXPECT_TRUE(ReadAddon("<Plugin><Type>2</Type></Plugin>", ""));
  ASSERT_EQ(1U, addon.DriverPluginDescriptions.size());
  EXPECT_EQ("", addon.DriverPluginDescriptions[0].EntryType);
  EXPECT_EQ("Extra", addon.DriverPluginDescriptions[0].OwnerAddon);
  EXPECT_EQ(tree.ExeDirectory(), addon.DriverPluginDescriptions[0].Path);
  EXPECT_TRUE(addon.ServerPluginDescriptions.empty());
}

TEST_F(AddonPluginReader, WrongTypeOfAServerEntryIsAFailureLineButNoFailure) {
  EXPECT_TRUE(ReadAddon("<Plugin><Type>3</Type></Plugin>", "server"));
  EXPECT_THAT(log.Brief(),
              ElementsAre("5 ReadAddonPluginXml: wrror plugin type [" + Path("a.b") + "]"));
}

TEST_F(AddonPluginReader, UnreadableDescriptionFailsAfterTheRest) {
  ReadAddon("<Plugin><Type>2</Type></Plugin>", "server");
  addon.ServerPluginDescriptions.clear();
  addon.Plugins = {Entry("gone", "server"), Entry("a.b", "server")};
  EXPECT_FALSE(reader.ReadAddonPluginXml(addon));
  EXPECT_EQ(1U, addon.ServerPluginDescriptions.size());
  EXPECT_THAT(log.Brief(),
              ElementsAre("5 ReadAddonPluginXml: ReadFile plugin[gone] desc path file [" +
                          Path("gone") + "] failed."));
}

}  // namespace
