// The output of `HUB model`.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <set>
#include <sstream>
#include <string>

#include "reference/os/LocalText.h"
#include "tests/system/HubProcess.h"

using nlohmann::json;
using testing::HasSubstr;
using testing::StartsWith;

namespace {

std::set<std::string> Keys(const json& object) {
  std::set<std::string> keys;
  for (const auto& item : object.items()) keys.insert(item.key());
  return keys;
}

std::set<std::string> Words(const std::string& words) {
  std::set<std::string> set;
  std::istringstream list(words);
  for (std::string word; list >> word;) set.insert(word);
  return set;
}

const json& SampleModel() {
  static const json model = [] {
    const HubResult result = RunHub("model --bin \"" TEV_SITE "/bin\"");
    EXPECT_EQ(0, result.status) << result.errors;
    return result.Json();
  }();
  return model;
}

TEST(Model, IsIndentedByTwoBlanks) {
  EXPECT_THAT(RunHub("model --bin \"" TEV_SITE "/bin\"").output,
              StartsWith("{\n  \"Frame_Init\": 0,\n  \"ProductModel\": {\n    \"Product\": "));
}

TEST(Model, HasTheFieldsOfTheRecordsAndNoOthers) {
  const json& model = SampleModel();
  EXPECT_EQ(Words("Frame_Init ProductModel Addons Tools PluginsInfo PlatformInfo"), Keys(model));
  EXPECT_EQ(Words("Product ProductLogo EditionConfig Version FnoodPath PlatformID PlatformVersion "
                  "ClientPackagePath ClientPackageMD5 Languages Plugins SubPlatforms Platform "
                  "Portal ServerPluginDescriptions ExePluginDescriptions "
                  "DriverPluginDescriptions AddonServices"),
            Keys(model["ProductModel"]));
  EXPECT_EQ(Words("Type ID Name Version Source Path Dependencies MenuItems OwnerAddon EntryType "
                  "IsDistributed"),
            Keys(model["ProductModel"]["ServerPluginDescriptions"][0]));
  EXPECT_EQ(
      Words("ID NameKey Icon FunctionalOverviewKey Version CompatibleVersion Source MinVersion "
            "MaxVersion PackageSize HaveClientPackage PublishingType ReplaceAddonID "
            "ReplaceAddonMinVersion ReplaceAddonMaxVersion IsIndependent IsDistributed Compatible "
            "PathFlag InstallPath Installed InstalledVersion InstalledCompatibleVersion "
            "InstalledCompatible AddonPackageName ClientPackageName LastModifyTime "
            "ClientPackageMD5 Applications Plugins Services ServerPluginDescriptions "
            "ExePluginDescriptions DriverPluginDescriptions"),
      Keys(model["Addons"][0]));
  EXPECT_EQ(Words("plugin_id plugin_name source version type is_load"),
            Keys(*model["PluginsInfo"].begin()));
  EXPECT_EQ(Words("Mode Edition PlatformExePath Executables"), Keys(model["PlatformInfo"]));
  EXPECT_EQ(Words("ID Name Path Version PlatformVersion GroupNames Number Flag"),
            Keys(*model["PlatformInfo"]["Executables"].begin()));
}

TEST(Model, OfTheSampleHoldsWhatItsFilesSay) {
  const json& product = SampleModel()["ProductModel"];
  EXPECT_EQ("NVX", product["Product"]);
  EXPECT_EQ(2U, product["SubPlatforms"].size());
  EXPECT_GE(product["ServerPluginDescriptions"].size(), 12U);
  EXPECT_GE(product["ExePluginDescriptions"].size(), 2U);
  EXPECT_GE(product["DriverPluginDescriptions"].size(), 3U);
  EXPECT_EQ(1U, product["AddonServices"].size());
  EXPECT_GE(SampleModel()["Addons"].size(), 4U);
  EXPECT_EQ(3U, SampleModel()["Tools"].size());
  EXPECT_FALSE(product["ClientPackagePath"].get<std::string>().empty());
  const std::filesystem::path program = std::filesystem::absolute(TEV_SITE "/bin/KPX_Exe.exe");
  EXPECT_EQ(LocalFromPath(std::filesystem::path(program).make_preferred()),
            SampleModel()["PlatformInfo"]["PlatformExePath"]);
}

TEST(Model, OfTheDistributedModuleHoldsDistributedPluginsOnly) {
  const HubResult result = RunHub("model --module 2 --bin \"" TEV_SITE "/bin\"");
  ASSERT_EQ(0, result.status) << result.errors;
  const json product = result.Json()["ProductModel"];
  for (const char* list :
       {"ServerPluginDescriptions", "ExePluginDescriptions", "DriverPluginDescriptions"}) {
    for (const json& plugin : product[list]) EXPECT_EQ(true, plugin["IsDistributed"]);
  }
  EXPECT_EQ(SampleModel()["ProductModel"]["Plugins"], product["Plugins"]);
}

TEST(Model, OfATreeWithoutDriversIsNullAndTheErrorNamesTheFile) {
  SiteCopy site;
  site.Remove("bin/META_INFO/DeviceDrivers.xml");
  const HubResult result = RunHub("model --bin " + site.Bin());
  EXPECT_EQ(1, result.status);
  const json expected = {{"Frame_Init", -1}, {"ProductModel", nullptr}, {"Addons", nullptr},
                         {"Tools", nullptr}, {"PluginsInfo", nullptr},  {"PlatformInfo", nullptr}};
  EXPECT_EQ(expected, result.Json());
  EXPECT_EQ("HUB: " + LocalFromPath(site.Path("bin/META_INFO/DeviceDrivers.xml").make_preferred()) +
                ": does not exist, and there is no DeviceDrivers.data beside it that could stand "
                "in: the frame refuses the product, and nothing starts\n",
            result.errors);
}

TEST(Model, WithoutAPluginDescriptionNamesTheDescription) {
  SiteCopy site;
  const std::string id =
      SampleModel()["ProductModel"]["ServerPluginDescriptions"][0]["ID"].get<std::string>();
  const std::string file = "bin/META_INFO/" + id + "/" + id + ".xml";
  site.Write(file, "");
  const HubResult result = RunHub("model --bin " + site.Bin());
  EXPECT_EQ(1, result.status);
  EXPECT_THAT(result.errors,
              HasSubstr(LocalFromPath(site.Path(file).make_preferred()) + ": is empty"));
}

TEST(Model, OfAFileThatIsNotWellFormedNamesFileAndLine) {
  SiteCopy site;
  site.Write("Product.xml", "<ProductDescription>\n<Product>NVX</Produkt>\n</ProductDescription>");
  const HubResult result = RunHub("model --bin " + site.Bin());
  EXPECT_EQ(0, result.status);
  EXPECT_THAT(result.errors, HasSubstr("Product.xml:2: "));
  EXPECT_THAT(result.errors, HasSubstr("Opening and ending tag mismatch"));
}

TEST(Model, WithoutCataloguesIsWholeButForAddonsAndTools) {
  SiteCopy site;
  site.Remove("ProductAddons.xml");
  site.Remove("ProductTools.xml");
  const HubResult result = RunHub("model --bin " + site.Bin());
  EXPECT_EQ(0, result.status) << result.errors;
  EXPECT_EQ(json::array(), result.Json()["Addons"]);
  EXPECT_EQ(json::array(), result.Json()["Tools"]);
}

TEST(Model, AddonsPluginOfAHigherVersionReplacesTheProducts) {
  const json& model = SampleModel();
  std::string replaced;
  for (const json& plugin : model["ProductModel"]["ServerPluginDescriptions"]) {
    if (!plugin["OwnerAddon"].get<std::string>().empty() &&
        plugin["ID"].get<std::string>().find(".server") != std::string::npos) {
      replaced += plugin["OwnerAddon"].get<std::string>() + " ";
    }
  }
  EXPECT_NE("", replaced);
}

}  // namespace
