#include "host/RecordJson.h"

#include <gtest/gtest.h>

#include <fstream>
#include <set>
#include <sstream>
#include <string>
#include <vector>

#include "tests/support/FieldCount.h"

namespace {

using Names = std::set<std::string>;

Names NamesOf(const Json& object) {
  Names names;
  for (const auto& member : object.items()) names.insert(member.key());
  return names;
}

/// A record of the model as its JSON shows it.
struct Shown {
  const char* record;
  std::size_t fields;
  Names names;
};

template <typename Record>
Shown Show(const char* name, std::size_t fields = FieldCount<Record>()) {
  return {name, fields, NamesOf(Json(Record{}))};
}

std::vector<Shown> AllRecords() {
  // A base counts as one field, and its own stand in its place.
  constexpr std::size_t kOfBases =
      FieldCount<AddonBaseModel>() + FieldCount<AddonInstallInfo>() - 2;
  return {Show<LanguageEntry>("LanguageEntry"),
          Show<ProductPluginEntry>("ProductPluginEntry"),
          Show<SubPlatformEntry>("SubPlatformEntry"),
          Show<PlatformModel>("PlatformModel"),
          Show<NavigationMenuItem>("NavigationMenuItem"),
          Show<SceneMenuItem>("SceneMenuItem"),
          Show<SceneModeMenuItem>("SceneModeMenuItem"),
          Show<SceneMode>("SceneMode"),
          Show<PortalMode>("PortalMode"),
          Show<PortalModel>("PortalModel"),
          Show<PluginDependency>("PluginDependency"),
          Show<PluginMenuItem>("PluginMenuItem"),
          Show<PluginDescription>("PluginDescription"),
          Show<AddonService>("AddonService"),
          Show<ProductModel>("ProductModel"),
          Show<AddonApplication>("AddonApplication"),
          Show<AddonModel>("AddonModel", kOfBases + FieldCount<AddonModel>()),
          Show<ToolModel>("ToolModel", kOfBases + FieldCount<ToolModel>()),
          Show<ExecutableInfo>("ExecutableInfo"),
          Show<PlatformInfo>("PlatformInfo")};
}

TEST(RecordJson, HasEachFieldOfEachRecord) {
  for (const Shown& shown : AllRecords()) {
    EXPECT_EQ(shown.fields, shown.names.size()) << shown.record;
  }
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

void AddNames(const Json& json, std::set<Names>& all) {
  if (json.is_object()) all.insert(NamesOf(json));
  for (const Json& inner : json) {
    if (inner.is_structured()) AddNames(inner, all);
  }
}

std::string Joined(const Names& names) {
  std::string text;
  for (const std::string& name : names) text += name + " ";
  return text;
}

TEST(RecordJson, IsInTheHandbookWithEachRecordWhole) {
  std::stringstream page;
  page << std::ifstream(TEV_SOURCE_DIR "/docs/hub-model.md", std::ios::binary).rdbuf();
  const std::string text = page.str();
  const std::size_t begin = text.find("```json\n") + 8;
  const Json shown = Json::parse(text.substr(begin, text.find("```", begin) - begin));
  std::set<Names> inHandbook;
  AddNames(shown, inHandbook);

  // The whole, and the two maps in it.
  const Json& executables = shown.at("PlatformInfo").at("Executables");
  for (const Json& other : {shown, shown.at("PluginsInfo"), executables}) {
    inHandbook.erase(NamesOf(other));
  }
  EXPECT_EQ(1U, inHandbook.erase(NamesOf(Json(CPluginInfo())))) << "CPluginInfo";
  for (const Shown& record : AllRecords()) {
    const bool isThere = inHandbook.count(record.names) != 0;
    EXPECT_TRUE(isThere) << record.record << ": no object with " << Joined(record.names);
  }
  for (const Shown& record : AllRecords()) inHandbook.erase(record.names);
  for (const Names& names : inHandbook) ADD_FAILURE() << "no record has " << Joined(names);
}

}  // namespace
