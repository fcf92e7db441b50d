#include "src/PluginFrame/PluginLists.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "src/PluginFrame/PlatformHandover.h"
#include "src/PluginFrame/PluginGraph.h"

using namespace PluginFrame;
using testing::ElementsAre;

namespace {

PluginDescription Description(const std::string& id, const std::string& version,
                              bool distributed = false) {
  PluginDescription plugin;
  plugin.ID = id;
  plugin.Version = version;
  plugin.IsDistributed = distributed;
  return plugin;
}

/// "ID:version;" of a list.
template <typename Entry>
std::string Text(const std::vector<Entry>& list) {
  std::string text;
  for (const Entry& entry : list) text += entry.ID + ":" + entry.Version + ";";
  return text;
}

TEST(Trim, KeepsOfEachIdTheGreatestVersionAsText) {
  ProductModel model;
  model.ServerPluginDescriptions = {Description("b", "1.10"), Description("a", "10.0"),
                                    Description("b", "1.2"), Description("a", "9.0")};
  TrimPluginLists(model, false);
  EXPECT_EQ("a:9.0;b:1.2;", Text(model.ServerPluginDescriptions));
}

TEST(Trim, ComparesBytesAsUnsigned) {
  ProductModel model;
  model.ServerPluginDescriptions = {Description("a", "\x7f"), Description("a", "\x80"),
                                    Description("\xc3\xa4", "1"), Description("z", "1")};
  TrimPluginLists(model, false);
  EXPECT_EQ("a:\x80;z:1;\xc3\xa4:1;", Text(model.ServerPluginDescriptions));
}

TEST(Trim, OfEqualEntriesTheEarlierStays) {
  ProductModel model;
  model.ServerPluginDescriptions = {Description("a", "1"), Description("a", "1")};
  model.ServerPluginDescriptions[0].Name = "first";
  model.ServerPluginDescriptions[1].Name = "second";
  TrimPluginLists(model, false);
  ASSERT_EQ(1U, model.ServerPluginDescriptions.size());
  EXPECT_EQ("first", model.ServerPluginDescriptions[0].Name);
}

TEST(Trim, OfManyEqualEntriesTheEarliestStays) {
  ProductModel model;
  for (int i = 0; i < 200; ++i) {
    model.ServerPluginDescriptions.push_back(Description(i % 2 == 0 ? "a" : "b", "1"));
    model.ServerPluginDescriptions.back().Name = std::to_string(i);
  }
  TrimPluginLists(model, false);
  ASSERT_EQ(2U, model.ServerPluginDescriptions.size());
  EXPECT_EQ("0", model.ServerPluginDescriptions[0].Name);
  EXPECT_EQ("1", model.ServerPluginDescriptions[1].Name);
}

TEST(Trim, EntriesWithoutAnIdAreRemoved) {
  ProductModel model;
  model.ExePluginDescriptions = {Description("", "2"), Description("x", "1"), Description("", "1")};
  ProductPluginEntry nameless;
  model.Plugins = {nameless};
  TrimPluginLists(model, false);
  EXPECT_EQ("x:1;", Text(model.ExePluginDescriptions));
  EXPECT_TRUE(model.Plugins.empty());
}

TEST(Trim, DistributedModuleDropsOthersFromDescriptionsNotFromEntries) {
  ProductModel model;
  const auto both = {Description("here", "1"), Description("there", "1", true)};
  model.ServerPluginDescriptions = both;
  model.ExePluginDescriptions = both;
  model.DriverPluginDescriptions = both;
  ProductPluginEntry entry;
  entry.ID = "here";
  model.Plugins = {entry};
  TrimPluginLists(model, true);
  EXPECT_EQ("there:1;", Text(model.ServerPluginDescriptions));
  EXPECT_EQ("there:1;", Text(model.ExePluginDescriptions));
  EXPECT_EQ("there:1;", Text(model.DriverPluginDescriptions));
  EXPECT_EQ("here:;", Text(model.Plugins));
}

TEST(Trim, AnyOtherModuleKeepsDistributedPluginsToo) {
  ProductModel model;
  model.ServerPluginDescriptions = {Description("here", "1"), Description("there", "1", true)};
  TrimPluginLists(model, false);
  EXPECT_EQ("here:1;there:1;", Text(model.ServerPluginDescriptions));
}

TEST(Trim, DistributedModuleKeepsALowerVersionWhenOnlyThatIsDistributed) {
  ProductModel model;
  model.ServerPluginDescriptions = {Description("a", "2"), Description("a", "1", true)};
  TrimPluginLists(model, true);
  EXPECT_EQ("a:1;", Text(model.ServerPluginDescriptions));
}

TEST(Trim, EntriesKeepTheirGreatestVersion) {
  ProductModel model;
  ProductPluginEntry low;
  low.ID = "a";
  low.Version = "1.10";
  ProductPluginEntry high = low;
  high.Version = "1.2";
  model.Plugins = {low, high};
  TrimPluginLists(model, false);
  EXPECT_EQ("a:1.2;", Text(model.Plugins));
}

TEST(InstalledAddon, IsAppendedBehindWhatTheProductHas) {
  ProductModel model;
  model.ServerPluginDescriptions = {Description("s", "1")};
  AddonModel addon;
  addon.ServerPluginDescriptions = {Description("s2", "1")};
  addon.ExePluginDescriptions = {Description("e2", "1")};
  addon.DriverPluginDescriptions = {Description("d2", "1")};
  addon.Services = {{"v2", "1"}};
  ProductPluginEntry entry;
  entry.ID = "p2";
  addon.Plugins = {entry};
  AddInstalledAddon(model, addon);
  EXPECT_EQ("s:1;s2:1;", Text(model.ServerPluginDescriptions));
  EXPECT_EQ("e2:1;", Text(model.ExePluginDescriptions));
  EXPECT_EQ("d2:1;", Text(model.DriverPluginDescriptions));
  EXPECT_EQ("v2:1;", Text(model.AddonServices));
  EXPECT_EQ("p2:;", Text(model.Plugins));
}

ProductModel WithSubPlatforms(int count) {
  ProductModel model;
  for (int i = 0; i < count; ++i) model.SubPlatforms.push_back({std::string(1, char('a' + i)), ""});
  return model;
}

TEST(PluginsToInit, ThreeItemsKeepTheirTrailingBlank) {
  EXPECT_EQ("Plugins need to init:\n[a] [b] [c] ", PluginsToInitText(WithSubPlatforms(3)));
}

TEST(PluginsToInit, AFullLineLosesItsBlankAndLineFeed) {
  EXPECT_EQ("Plugins need to init:\n[a] [b] [c] [d] [e]", PluginsToInitText(WithSubPlatforms(5)));
  EXPECT_EQ("Plugins need to init:\n[a] [b] [c] [d] [e] \n[f] ",
            PluginsToInitText(WithSubPlatforms(6)));
}

TEST(PluginsToInit, NoItemsRemoveTheColonToo) {
  EXPECT_EQ("Plugins need to init", PluginsToInitText(ProductModel()));
}

TEST(PluginsToInit, SubPlatformsComeFirstThenServersThenExecutables) {
  ProductModel model = WithSubPlatforms(1);
  model.ExePluginDescriptions = {Description("exe", "1")};
  model.ServerPluginDescriptions = {Description("server", "1")};
  model.DriverPluginDescriptions = {Description("driver", "1")};
  EXPECT_EQ("Plugins need to init:\n[a] [server] [exe] ", PluginsToInitText(model));
}

TEST(Versions, ListServersThenExecutablesAndDriversApart) {
  ProductModel model;
  model.ServerPluginDescriptions = {Description("s", "1"), Description("t", "2")};
  model.ExePluginDescriptions = {Description("e", "3")};
  model.DriverPluginDescriptions = {Description("d", "4")};
  EXPECT_EQ("s:1;t:2;e:3;", PluginVersionsText(model));
  EXPECT_EQ("d:4;", DriverVersionsText(model));
}

TEST(Keys, NumberServersFromAHundredThenSubPlatforms) {
  ProductModel model = WithSubPlatforms(1);
  model.ServerPluginDescriptions = {Description("alarm.server", "1"),
                                    Description("map.server", "1")};
  PluginKeys keys;
  AddPluginKeys(keys, model);
  EXPECT_EQ(
      (PluginKeys{
          {"alarm.server", "100_alarm.server"}, {"map.server", "101_map.server"}, {"a", "102_a"}}),
      keys);
}

TEST(Keys, ANameThatOccursTwiceKeepsItsFirstKey) {
  ProductModel model;
  model.ServerPluginDescriptions = {Description("a", "1")};
  model.SubPlatforms = {{"a", ""}, {"b", ""}};
  PluginKeys keys;
  AddPluginKeys(keys, model);
  EXPECT_EQ((PluginKeys{{"a", "100_a"}, {"b", "102_b"}}), keys);
}

TEST(Keys, FromTheNumberAThousandOnStandBeforeTheFirst) {
  ProductModel model;
  std::vector<std::string> expected = {"p900"};
  for (int i = 0; i < 900; ++i) expected.push_back("p" + std::to_string(i));
  for (int i = 0; i <= 900; ++i) model.SubPlatforms.push_back({"p" + std::to_string(i), ""});
  PluginKeys keys;
  AddPluginKeys(keys, model);
  EXPECT_EQ("999_p899 1000_p900", keys.at("p899") + " " + keys.at("p900"));
  PluginDataMap data;
  AddPluginData(data, keys, model);
  std::vector<std::string> names;
  for (const auto& entry : data) names.push_back(entry.second->name);
  EXPECT_EQ(expected, names);
}

/// "name<dependencies" of every record in key order, for server plugins with these dependencies.
std::string Graph(const ProductModel& model) {
  PluginKeys keys;
  AddPluginKeys(keys, model);
  PluginDataMap data;
  AddPluginData(data, keys, model);
  std::string text;
  for (const auto& entry : data) {
    text += entry.second->name + "<";
    for (const auto& other : entry.second->depends_on) text += other->name;
    text += ">";
    for (const auto& other : entry.second->depended_by) text += other->name;
    text += " ";
  }
  DisconnectPluginData(data);
  return text;
}

PluginDependency On(const std::string& id, std::int32_t category, std::int32_t type = 1) {
  PluginDependency dependency;
  dependency.ID = id;
  dependency.Category = category;
  dependency.DependentType = type;
  return dependency;
}

TEST(Graph, LinksPluginsThatDependOnPluginsOrOthers) {
  ProductModel model;
  model.ServerPluginDescriptions = {Description("a", "1"), Description("b", "1"),
                                    Description("c", "1")};
  model.ServerPluginDescriptions[1].Dependencies = {On("a", 1)};
  model.ServerPluginDescriptions[2].Dependencies = {On("a", 4), On("b", 1), On("p", 4)};
  model.SubPlatforms = {{"p", ""}};
  EXPECT_EQ("a<>bc b<a>c c<abp> p<>c ", Graph(model));
}

TEST(Graph, DependencyOnAPlatformOrOfAnotherTypeGivesNoEdge) {
  ProductModel model;
  model.ServerPluginDescriptions = {Description("a", "1"), Description("b", "1")};
  model.ServerPluginDescriptions[1].Dependencies = {On("a", 2), On("a", 1, 0), On("a", 1, 2),
                                                    On("missing", 1)};
  EXPECT_EQ("a<> b<> ", Graph(model));
}

TEST(Graph, ANameWithoutAKeyHasNoRecord) {
  ProductModel model = WithSubPlatforms(1);
  model.ServerPluginDescriptions = {Description("known", "1"), Description("unknown", "1")};
  PluginDataMap data;
  AddPluginData(data, {{"known", "100_known"}}, model);
  EXPECT_EQ(1U, data.size());
  EXPECT_EQ(1U, data.count("100_known"));
}

TEST(Graph, DisconnectedRecordsAreFreedWithTheirMap) {
  ProductModel model;
  model.ServerPluginDescriptions = {Description("a", "1"), Description("b", "1")};
  model.ServerPluginDescriptions[0].Dependencies = {On("b", 1)};
  model.ServerPluginDescriptions[1].Dependencies = {On("a", 1)};
  PluginKeys keys;
  AddPluginKeys(keys, model);
  PluginDataMap data;
  AddPluginData(data, keys, model);
  const std::weak_ptr<FramePluginData> record = data.at("100_a");
  DisconnectPluginData(data);
  EXPECT_FALSE(record.expired());
  data.clear();
  EXPECT_TRUE(record.expired());
}

TEST(Ready, ToStartOnceEveryDependencyHasStartedOrFailed) {
  FramePluginData plugin;
  EXPECT_TRUE(ReadyToStart(plugin));
  const auto other = std::make_shared<FramePluginData>();
  plugin.depends_on = {other};
  EXPECT_FALSE(ReadyToStart(plugin));
  for (const std::uint32_t done : {1U, 2U, 3U, 4U}) {
    other->state = done;
    EXPECT_TRUE(ReadyToStart(plugin)) << done;
  }
}

TEST(Ready, ToStopOnceEveryDependentHasStopped) {
  FramePluginData plugin;
  EXPECT_TRUE(ReadyToStop(plugin));
  const auto other = std::make_shared<FramePluginData>();
  plugin.depended_by = {other};
  for (const std::uint32_t state : {0U, 1U, 2U}) {
    other->state = state;
    EXPECT_FALSE(ReadyToStop(plugin)) << state;
  }
  for (const std::uint32_t state : {3U, 4U}) {
    other->state = state;
    EXPECT_TRUE(ReadyToStop(plugin)) << state;
  }
}

TEST(NewRecord, HasNoNameIsPendingAndHasNoLinks) {
  const FramePluginData plugin;
  EXPECT_EQ("", plugin.name);
  EXPECT_EQ(0U, plugin.state);
  EXPECT_TRUE(plugin.depends_on.empty() && plugin.depended_by.empty());
}

TEST(PlatformInfoOfTheProduct, StartsAsTheFrameworkHasIt) {
  const PlatformInfo info;
  EXPECT_EQ(2, info.Mode);
  EXPECT_EQ("OverseaNeutral", info.Edition);
}

TEST(PlatformInfoOfTheProduct, TakesTheEditionEvenWhenEmptyAndThePlatformsExecutable) {
  ProductModel model;
  PlatformInfo info = MakePlatformInfo(model, "/bin/");
  EXPECT_EQ(2, info.Mode);
  EXPECT_EQ("", info.Edition);
  EXPECT_EQ("/bin/KPX_Exe.exe", info.PlatformExePath);
  model.EditionConfig = "Neutral";
  EXPECT_EQ("Neutral", MakePlatformInfo(model, "/bin/").Edition);
}

TEST(PlatformInfoOfTheProduct, ListsExecutablesWithTheirGroupsAndLastPlatformVersion) {
  ProductModel model;
  PluginDescription exe = Description("media.exe", "1.5");
  exe.Name = "Media";
  exe.Path = "/bin/media.exe.exe";
  exe.Dependencies = {On("video.server", 1), On("nogroup", 1), On(".x", 4),
                      On("p1", 2),           On("p2", 2),      On("door.lock.x", 4)};
  exe.Dependencies[3].Version = "3.0";
  exe.Dependencies[4].Version = "3.1";
  model.ExePluginDescriptions = {exe};
  const PlatformInfo platform = MakePlatformInfo(model, "/bin/");
  ASSERT_EQ(1U, platform.Executables.count("media.exe"));
  const ExecutableInfo& info = platform.Executables.at("media.exe");
  EXPECT_EQ("media.exe", info.ID);
  EXPECT_EQ("Media", info.Name);
  EXPECT_EQ("/bin/media.exe.exe", info.Path);
  EXPECT_EQ("1.5", info.Version);
  EXPECT_EQ("3.1", info.PlatformVersion);
  EXPECT_THAT(info.GroupNames, ElementsAre("video", "door"));
  EXPECT_EQ(0, info.Number);
  EXPECT_FALSE(info.Flag);
}

TEST(PlatformInfoOfTheProduct, APlatformThatAnExecutableNeedsGivesNoGroup) {
  ProductModel model;
  model.ExePluginDescriptions = {Description("media.exe", "1.5")};
  model.ExePluginDescriptions[0].Dependencies = {On("kpx.base", 2), On("video.server", 1)};
  const PlatformInfo platform = MakePlatformInfo(model, "/bin/");
  EXPECT_THAT(platform.Executables.at("media.exe").GroupNames, ElementsAre("video"));
}

TEST(PluginInfos, OfOneIdTheFirstStaysAndNoneIsLoaded) {
  ProductModel model;
  PluginDescription server = Description("a", "2");
  server.Name = "A";
  server.Source = "made here";
  PluginDescription exe = Description("a", "3");
  exe.Type = 1;
  model.ServerPluginDescriptions = {server};
  model.ExePluginDescriptions = {exe, Description("b", "1")};
  model.DriverPluginDescriptions = {Description("driver", "1")};
  const PluginInfoMap infos = MakePluginInfos(model);
  ASSERT_EQ(2U, infos.size());
  const CPluginInfo& info = *infos.at("a");
  EXPECT_EQ("a", info.plugin_id());
  EXPECT_EQ("A", info.plugin_name());
  EXPECT_EQ("made here", info.source());
  EXPECT_EQ("2", info.version());
  EXPECT_EQ(2, info.type());
  EXPECT_FALSE(info.is_load());
}

TEST(PluginInfos, AnExecutablesTypeIsItsOwn) {
  ProductModel model;
  model.ExePluginDescriptions = {Description("exe", "1")};
  model.ExePluginDescriptions[0].Type = PluginType::kExecutable;
  EXPECT_EQ(1, MakePluginInfos(model).at("exe")->type());
}

}  // namespace
