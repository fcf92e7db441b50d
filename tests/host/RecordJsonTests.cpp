#include "host/RecordJson.h"

#include <gtest/gtest.h>

#include <cstddef>
#include <fstream>
#include <set>
#include <sstream>
#include <string>
#include <vector>

#include "tests/host/FieldNames.h"
#include "tests/support/FieldCount.h"

namespace {

using Names = std::vector<std::string>;

constexpr char kProduct[] = "src/model/ProductModel.h";
constexpr char kPlugin[] = "src/model/PluginDescription.h";
constexpr char kAddon[] = "src/model/AddonModel.h";
constexpr char kLpc[] = "sdk/lpc/lpc.h";

Names NamesOf(const Json& object) {
  Names names;
  for (const auto& member : object.items()) names.push_back(member.key());
  return names;
}

/// A record of the model: what its header declares, and what its JSON has.
struct Shown {
  std::string record;
  Names fields;
  Names names;
};

/// `more`: how many fields its bases have beyond one for each.
template <typename Record>
Shown Show(const char* header, const char* record, std::size_t more = 0) {
  Shown shown = {record, FieldNames(header, record), NamesOf(Json(Record{}))};
  EXPECT_EQ(FieldCount<Record>() + more, shown.fields.size())
      << record << ": declare each field on a line of its own";
  return shown;
}

std::vector<Shown> AllRecords() {
  constexpr std::size_t kOfBases =
      FieldCount<AddonBaseModel>() + FieldCount<AddonInstallInfo>() - 2;
  return {Show<LanguageEntry>(kProduct, "LanguageEntry"),
          Show<ProductPluginEntry>(kProduct, "ProductPluginEntry"),
          Show<SubPlatformEntry>(kProduct, "SubPlatformEntry"),
          Show<PlatformModel>(kProduct, "PlatformModel"),
          Show<NavigationMenuItem>(kProduct, "NavigationMenuItem"),
          Show<SceneMenuItem>(kProduct, "SceneMenuItem"),
          Show<SceneModeMenuItem>(kProduct, "SceneModeMenuItem"),
          Show<SceneMode>(kProduct, "SceneMode"),
          Show<PortalMode>(kProduct, "PortalMode"),
          Show<PortalModel>(kProduct, "PortalModel"),
          Show<AddonService>(kProduct, "AddonService"),
          Show<ProductModel>(kProduct, "ProductModel"),
          Show<PluginDependency>(kPlugin, "PluginDependency"),
          Show<PluginMenuItem>(kPlugin, "PluginMenuItem"),
          Show<PluginDescription>(kPlugin, "PluginDescription"),
          Show<AddonApplication>(kAddon, "AddonApplication"),
          Show<AddonModel>(kAddon, "AddonModel", kOfBases),
          Show<ToolModel>(kAddon, "ToolModel", kOfBases),
          Show<ExecutableInfo>(kLpc, "ExecutableInfo"),
          Show<PlatformInfo>(kLpc, "PlatformInfo")};
}

TEST(RecordJson, IsOfEachRecordThatTheHeadersDeclare) {
  Names declared;
  for (const char* header : {kProduct, kPlugin, kAddon, kLpc}) {
    for (const std::string& record : RecordNames(header)) declared.push_back(record);
  }
  Names shown = {"AddonBaseModel", "AddonInstallInfo"};  // within AddonModel and ToolModel
  for (const Shown& record : AllRecords()) shown.push_back(record.record);
  EXPECT_EQ("", Difference(declared, shown));
}

TEST(RecordJson, HasEachFieldOfEachRecordInItsOrder) {
  for (const Shown& shown : AllRecords()) {
    const std::string difference = Difference(shown.fields, shown.names);
    EXPECT_EQ("", difference) << shown.record;
    if (difference.empty()) {
      EXPECT_EQ(shown.fields, shown.names) << shown.record;
    }
  }
}

TEST(RecordJson, HasEachFieldOfThePlatformsRecordOfAPlugin) {
  Names fields = FieldNames("sdk/kpx/platform.h", "CPluginInfo");
  for (std::string& field : fields) field.erase(0, std::string("m_").size());
  EXPECT_EQ("", Difference(fields, NamesOf(Json(CPluginInfo()))));
}

TEST(RecordJson, HasAllThatThePlatformKnowsOfAPlugin) {
  CPluginInfo info;
  info.SetVal_plugin_id("a.server");
  info.SetVal_plugin_name("A");
  info.SetVal_source("site");
  info.SetVal_version("1.2");
  info.SetVal_type(2);
  info.SetVal_is_load(true);
  EXPECT_EQ(R"({"plugin_id":"a.server","plugin_name":"A","source":"site","version":"1.2","type":2,)"
            R"("is_load":true})",
            Json(info).dump());
}

// The object that docs/hub-model.md shows.

void AddObjects(const Json& json, std::set<Names>& all) {
  if (json.is_object()) all.insert(NamesOf(json));
  for (const Json& inner : json) {
    if (inner.is_structured()) AddObjects(inner, all);
  }
}

/// The difference to the one of `objects` that is most like `names`.
std::string LeastDifference(const Names& names, const std::set<Names>& objects) {
  std::string least = Difference(names, Names());
  for (const Names& object : objects) {
    const std::string difference = Difference(names, object);
    if (difference.size() < least.size()) least = difference;
  }
  return least;
}

TEST(RecordJson, IsInTheHandbookWithEachRecordWhole) {
  std::stringstream page;
  page << std::ifstream(TEV_SOURCE_DIR "/docs/hub-model.md", std::ios::binary).rdbuf();
  const std::string text = page.str();
  const std::size_t begin = text.find("```json\n") + 8;
  const Json shown = Json::parse(text.substr(begin, text.find("```", begin) - begin));
  std::set<Names> inHandbook;
  AddObjects(shown, inHandbook);

  std::set<Names> expected;
  for (const Shown& record : AllRecords()) {
    EXPECT_EQ("", LeastDifference(record.fields, inHandbook)) << record.record;
    expected.insert(record.fields);
  }
  const Names pluginInfo = NamesOf(Json(CPluginInfo()));
  EXPECT_EQ("", LeastDifference(pluginInfo, inHandbook)) << "CPluginInfo";
  expected.insert(pluginInfo);
  // The whole, and the two maps in it.
  const Json& executables = shown.at("PlatformInfo").at("Executables");
  for (const Json& other : {shown, shown.at("PluginsInfo"), executables}) {
    expected.insert(NamesOf(other));
  }
  for (const Names& names : inHandbook) {
    EXPECT_EQ("", LeastDifference(names, expected)) << "no record is as this object";
  }
}

}  // namespace
