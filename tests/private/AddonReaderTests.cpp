#include "src/private/AddonCompatibility.h"

#include <sstream>

#include "src/private/ProductModelReaderImpl.h"
#include "tests/support/FrameTest.h"

using testing::ElementsAre;
using testing::HasSubstr;
using TevModelParse::Compatibility;
using TevModelParse::CProductXmlReader;
using TevModelParse::JudgeCompatibility;

namespace {

/// The fields of both parts of a record, each in its order, with "|" between them.
std::string Text(const AddonBaseModel& entry, const AddonInstallInfo& install) {
  std::ostringstream text;
  text << entry.ID << '|' << entry.NameKey << '|' << entry.Icon << '|'
       << entry.FunctionalOverviewKey << '|' << entry.Version << '|' << entry.CompatibleVersion
       << '|' << entry.Source << '|' << entry.MinVersion << '|' << entry.MaxVersion << '|'
       << entry.PackageSize << '|' << entry.HaveClientPackage << '|' << entry.PublishingType << '|'
       << entry.ReplaceAddonID << '|' << entry.ReplaceAddonMinVersion << '|'
       << entry.ReplaceAddonMaxVersion << '|' << entry.IsIndependent << '|' << entry.IsDistributed
       << '|' << entry.Compatible << " " << install.PathFlag << '|' << install.InstallPath << '|'
       << install.Installed << '|' << install.InstalledVersion << '|'
       << install.InstalledCompatibleVersion << '|' << install.InstalledCompatible << '|'
       << install.AddonPackageName << '|' << install.ClientPackageName << '|'
       << install.LastModifyTime << '|' << install.ClientPackageMD5;
  return text.str();
}

/// The IDs of each of an addon's lists, with ";" behind each list.
std::string ListsText(const AddonModel& addon) {
  std::string text;
  const auto add = [&text](const auto& list) {
    for (const auto& entry : list) text += entry.ID + ",";
    text += ";";
  };
  add(addon.Applications);
  add(addon.Plugins);
  add(addon.Services);
  add(addon.ServerPluginDescriptions);
  add(addon.ExePluginDescriptions);
  add(addon.DriverPluginDescriptions);
  return text;
}

class AddonReader : public FrameTest {
 protected:
  AddonReader() {
    g_productName = "NVX";
    g_productVersion = "2.7.1";
  }

  /// The description file of an addon X with this inside.
  std::string Describe(const std::string& inner) {
    return tree.Write("bin/TevAddons/X/X.xml",
                      "<AddonDescription><ID>X</ID>" + inner + "</AddonDescription>");
  }

  /// Reads it into `addon`; X is its ID.
  bool Read(const std::string& inner) {
    Log::Instance().Clear();
    addon = AddonModel();
    addon.ID = "X";
    return reader.ReadSingleInstalledAddonModel(addon, Describe(inner));
  }

  static std::string Support(const std::string& logo, const std::string& min,
                             const std::string& max = "9") {
    return "<SupportProducts><Product><ProductLogo>" + logo + "</ProductLogo><MinVersion>" + min +
           "</MinVersion><MaxVersion>" + max + "</MaxVersion></Product></SupportProducts>";
  }

  void Catalogue(const std::string& addons) {
    tree.Write("ProductAddons.xml", "<AddonList>" + addons + "</AddonList>");
  }

  void Installed(const std::string& inner) {
    tree.Write("bin/TevAddons/InstalledProducts.xml",
               "<InstalledProductsDescription>" + inner + "</InstalledProductsDescription>");
  }

  std::string InstallFolder() const { return tree.ExeDirectory() + "TevAddons/"; }

  /// A catalogue entry of X whose every field has a value.
  static std::string WholeEntry(const std::string& element, const std::string& inner) {
    return "<" + element +
           "><ID>X</ID><Icon>c1</Icon><NameKey>c2</NameKey><FunctionalOverviewKey>c3"
           "</FunctionalOverviewKey><Version>c4</Version><PackageSize>7</PackageSize>" +
           inner + "</" + element + ">";
  }

  std::vector<AddonModel> ReadAddons() {
    std::vector<AddonModel> addons;
    EXPECT_TRUE(reader.ReadServerAddonsModel(addons));
    return addons;
  }

  /// Reads both files; "ID:version:size,package;" of every addon, "+" for an installed one.
  std::string ReadAll() {
    std::string text;
    for (const auto& one : ReadAddons()) {
      text += one.ID + ":" + one.Version + ":" + std::to_string(one.PackageSize) + "," +
              one.AddonPackageName + (one.Installed ? "+" : "") + ";";
    }
    return text;
  }

  const CProductXmlReader reader{};
  AddonModel addon;
};

TEST_F(AddonReader, ReadsEveryFieldOfADescription) {
  EXPECT_TRUE(Read(
      "<NameKey>n</NameKey><Icon>i</Icon><FunctionalOverviewKey>f</FunctionalOverviewKey>"
      "<Version>1</Version><CompatibleVersion>2</CompatibleVersion><Source>s</Source>"
      "<HaveClientPackage>1</HaveClientPackage><PublishingType>3</PublishingType>"
      "<IsIndependent>1</IsIndependent><IsDistributed>1</IsDistributed>"
      "<ReplaceAddon><ID>r</ID><MinVersion>3</MinVersion><MaxVersion>4</MaxVersion></"
      "ReplaceAddon>" +
      Support("Velmora Professional", "2.6.0", "2.9") +
      "<ApplicationList><Application><ID>1</ID><Icon>2</Icon><NameKey>3</NameKey>"
      "<FunctionalOverviewKey>4</FunctionalOverviewKey><InstallUDF>5</InstallUDF>"
      "<FunctionUDF>6</FunctionUDF><RelatedApplicationID>7</RelatedApplicationID></Application>"
      "</ApplicationList><Plugins><Plugin ID='a.b' Version='8' Category='server'/></Plugins>"
      "<Services><Service ID='v' Version='9'/></Services>"));
  EXPECT_EQ("n i f 1 2 s r 3 4 2.6.0 2.9",
            addon.NameKey + " " + addon.Icon + " " + addon.FunctionalOverviewKey + " " +
                addon.Version + " " + addon.CompatibleVersion + " " + addon.Source + " " +
                addon.ReplaceAddonID + " " + addon.ReplaceAddonMinVersion + " " +
                addon.ReplaceAddonMaxVersion + " " + addon.MinVersion + " " + addon.MaxVersion);
  EXPECT_TRUE(addon.HaveClientPackage && addon.IsIndependent && addon.IsDistributed);
  EXPECT_EQ(3, addon.PublishingType);
  EXPECT_TRUE(addon.Installed && addon.Compatible && addon.InstalledCompatible);
  EXPECT_EQ("2", addon.InstalledCompatibleVersion);
  const AddonApplication& app = addon.Applications.at(0);
  EXPECT_EQ("1234567", app.ID + app.Icon + app.NameKey + app.FunctionalOverviewKey +
                           app.InstallUDF + app.FunctionUDF + app.RelatedApplicationID);
  const ProductPluginEntry& plugin = addon.Plugins.at(0);
  EXPECT_EQ("a.b 8 server ",
            plugin.ID + " " + plugin.Version + " " + plugin.Type + " " + plugin.GroupName);
  EXPECT_EQ("v9", addon.Services.at(0).ID + addon.Services.at(0).Version);
  EXPECT_THAT(log.Brief(), ElementsAre("3 ReadSingleInstalledAddonModel: Begin parse single addon "
                                       "model.path[" +
                                           tree.ExeDirectory() + "TevAddons/X/X.xml]",
                                       "3 ReadSingleInstalledAddonModel: End parse single addon "
                                       "model."));
}

TEST_F(AddonReader, OnlyTheNumberOneIsTrueAndDefaultsHold) {
  EXPECT_TRUE(
      Read("<HaveClientPackage>true</HaveClientPackage><IsIndependent>2</IsIndependent>"
           "<IsDistributed>yes</IsDistributed><PublishingType>2</PublishingType>"
           "<ReplaceAddon><ID>r</ID></ReplaceAddon>"));
  EXPECT_FALSE(addon.HaveClientPackage || addon.IsIndependent || addon.IsDistributed);
  EXPECT_EQ("1.0.0", addon.CompatibleVersion);
  EXPECT_EQ("", addon.ReplaceAddonID + addon.MinVersion + addon.MaxVersion);
}

TEST_F(AddonReader, UnreadableOrForeignDescriptionsFail) {
  addon.ID = "X";
  EXPECT_FALSE(reader.ReadSingleInstalledAddonModel(addon, ""));
  EXPECT_FALSE(reader.ReadSingleInstalledAddonModel(addon, "/none/X.xml"));
  const std::string other = tree.Write("o.xml", "<AddonDescription><ID>x</ID></AddonDescription>");
  EXPECT_FALSE(reader.ReadSingleInstalledAddonModel(addon, other));
  EXPECT_THAT(
      log.Brief(),
      ElementsAre(
          "3 ReadSingleInstalledAddonModel: Begin parse single addon model.path[]",
          "3 ReadSingleInstalledAddonModel: Xml path is empty.",
          "3 ReadSingleInstalledAddonModel: Begin parse single addon model.path[/none/X.xml]",
          "3 ReadSingleInstalledAddonModel: ReadFile failed. xml path [/none/X.xml]",
          "3 ReadSingleInstalledAddonModel: Begin parse single addon model.path[" + other + "]",
          "3 ReadSingleInstalledAddonModel: Addon's ID is not match.[X] != [x]"));
}

TEST_F(AddonReader, TheFirstSupportedProductThatMatchesWins) {
  Read(
      "<SupportProducts><Product><ProductLogo>Elsewhere</ProductLogo></Product>"
      "<Product><ProductLogo>Velmora Lite</ProductLogo><MinVersion>1</MinVersion></Product>"
      "<Product><ProductLogo>Velmora Professional</ProductLogo><MinVersion>2.6.0</MinVersion>"
      "</Product><Product><ProductLogo>Velmora Professional</ProductLogo><MinVersion>3</MinVersion>"
      "</Product><Product><ProductLogo>Nowhere</ProductLogo></Product></SupportProducts>");
  EXPECT_EQ("2.6.0", addon.MinVersion);
  EXPECT_THAT(log.BriefFrom(4), ElementsAre("5 ReadSingleInstalledAddonModel: Addon[X]'s supported "
                                            "product[Elsewhere] is error."));
}

TEST_F(AddonReader, AnIncompatibleAddonIsReadToItsEndAndLogged) {
  EXPECT_TRUE(Read(Support("Velmora Professional", "2.8.0", "2.9") +
                   "<Services><Service ID='v'/></Services>"));
  EXPECT_TRUE(addon.Installed);
  EXPECT_FALSE(addon.Compatible || addon.InstalledCompatible);
  EXPECT_EQ(1U, addon.Services.size());
  EXPECT_THAT(log.BriefFrom(4),
              ElementsAre("5 ReadSingleInstalledAddonModel: Product[NVX_v2.7.1] installed addon[X] "
                          "is not compatible, support version[2.8.0][2.9]."));
}

TEST_F(AddonReader, AProductBelowTheFirstBoundHasALineOfItsOwn) {
  g_productVersion = "2.10.0";  // as a text below 2.6.0
  Read(Support("Velmora Professional", "2.5.0"));
  EXPECT_THAT(
      log.BriefFrom(4),
      ElementsAre("4 ReadSingleInstalledAddonModel: Addon[X][2.5.0] is not compatible in NVX "
                  "product[2.10.0].",
                  "5 ReadSingleInstalledAddonModel: Product[NVX_v2.10.0] installed addon[X] "
                  "is not compatible, support version[2.5.0][9]."));
  g_productName = "NVT";
  Read(Support("Velmora Lite", "2.5.0"));
  EXPECT_THAT(log.BriefFrom(4)[0],
              "4 ReadSingleInstalledAddonModel: Addon[X][2.5.0] is not compatible in NVT "
              "product[2.10.0].");
}

TEST_F(AddonReader, ProductsVersionDecidesTheLevelsOfTheLines) {
  struct Case {
    const char* product;
    const char* version;
    const char* min;
    const char* levels;
  };
  const Case cases[] = {{"NVX", "2.10.0", "2.10.0", "45"},
                        {"NVX", "2.5.9", "", "45"},
                        {"NVX", "2.5.9", "2.5.9", "45"},
                        {"NVX", "2.6.0", "2.5.0", "5"},
                        {"NVX", "2.6.0", "2.6.0", ""},
                        {"NVX", "2.6.0", "2.6.1", "5"},
                        {"NVX", "2.7.1", "2.5.9", "5"},
                        {"NVX", "2.7.1", "2.6.0", ""},
                        {"NVX", "2.7.1", "2.8.0", "5"},
                        {"NVX", "3.0.0", "2.9.9", "5"},
                        {"NVX", "3.0.0", "3.0.0", ""},
                        {"NVX", "3.1.0", "3.2.0", "5"},
                        {"NVT", "2.5.0", "2.6.0", "45"},
                        {"NVT", "2.6.0", "2.6.0", ""},
                        {"NVT", "3.1.0", "", ""},
                        {"OTHER", "2.6.0", "2.6.0", "5"},
                        {"", "", "", "5"}};
  for (const Case& one : cases) {
    g_productName = one.product;
    g_productVersion = one.version;
    const std::string logo = g_productName == "NVT" ? "Velmora Lite" : "Velmora Professional";
    EXPECT_TRUE(Read(Support(logo, one.min)));
    std::string levels;
    for (const LogLine& line : log.Lines()) {
      if (line.level > 3) levels += std::to_string(line.level);
    }
    EXPECT_EQ(one.levels, levels) << one.product << " " << one.version << " for " << one.min;
    EXPECT_EQ(levels.empty(), addon.Compatible);
  }
}

/// The rule, written a second time to compare JudgeCompatibility with it.
bool Oracle(const std::string& name, const std::string& p, const std::string& m) {
  if (name == "NVT") return !(p < m);
  if (name != "NVX") return false;
  if (p == "2.6.0") return m == "2.6.0";
  if (p > "2.6.0" && p < "3.0.0") return !(p < m) && !(m < "2.6.0");
  if (p < "3.0.0") return false;
  return !(p < m) && !(m < "3.0.0");
}

TEST(CompatibilityRule, HoldsAroundEveryBound) {
  const std::string versions[] = {"",      "2",      "2.10.0", "2.5.0", "2.5.9",     "2.6",
                                  "2.6.0", "2.6.1",  "2.7.1",  "2.8.0", "3.0",       "3.0.0",
                                  "3.1.0", "10.0.0", "\x7f",   "\x80",  "2.6.0\x80", "3.0.0 "};
  for (const std::string name : {"NVX", "NVT", "", "nvx"}) {
    for (const std::string& product : versions) {
      for (const std::string& min : versions) {
        EXPECT_EQ(Oracle(name, product, min),
                  JudgeCompatibility(name, product, min) == Compatibility::kCompatible)
            << name << " " << product << " for " << min;
      }
    }
  }
}

TEST(CompatibilityRule, ExamplesHold) {
  const auto compatible = [](const char* name, const char* product, const char* min) {
    return JudgeCompatibility(name, product, min) == Compatibility::kCompatible;
  };
  EXPECT_TRUE(compatible("NVT", "2.5.0", ""));
  EXPECT_TRUE(compatible("NVX", "2.6.0", "2.6.0"));
  EXPECT_FALSE(compatible("NVX", "2.6.0", "2.5.0"));
  EXPECT_TRUE(compatible("NVX", "2.7.1", "2.6.0"));
  EXPECT_FALSE(compatible("NVX", "2.7.1", "2.5.9"));
  EXPECT_FALSE(compatible("NVX", "2.7.1", "2.8.0"));
  EXPECT_FALSE(compatible("NVX", "3.1.0", "2.6.0"));
  EXPECT_TRUE(compatible("NVX", "3.1.0", "3.0.0"));
  EXPECT_FALSE(compatible("", "", ""));
}

TEST(CompatibilityRule, OnlyAProductThatIsTooOldHasALineOfItsOwn) {
  EXPECT_EQ(Compatibility::kProductTooOld, JudgeCompatibility("NVX", "2.5.0", "2.6.0"));
  EXPECT_EQ(Compatibility::kProductTooOld, JudgeCompatibility("NVX", "2.10.0", ""));
  EXPECT_EQ(Compatibility::kProductTooOld, JudgeCompatibility("NVT", "2.5.0", "2.6.0"));
  EXPECT_EQ(Compatibility::kIncompatible, JudgeCompatibility("NVX", "2.7.1", "2.8.0"));
  EXPECT_EQ(Compatibility::kIncompatible, JudgeCompatibility("OTHER", "2.7.1", ""));
}

TEST_F(AddonReader, CatalogueEntriesAreReadAndNoneIsInstalled) {
  Catalogue(
      "<Addon><ID>A</ID><Icon>i</Icon><NameKey>n</NameKey><FunctionalOverviewKey>f"
      "</FunctionalOverviewKey><Version>1</Version><PackageSize>12</PackageSize>"
      "<ApplicationList><Application><ID>p</ID></Application></ApplicationList></Addon>"
      "<Addon><ID>B</ID></Addon><Addon><ID>B</ID></Addon>");
  Installed("");
  std::vector<AddonModel> addons;
  EXPECT_TRUE(reader.ReadServerAddonsModel(addons));
  ASSERT_EQ(3U, addons.size());
  EXPECT_EQ("A i n f 1 p", addons[0].ID + " " + addons[0].Icon + " " + addons[0].NameKey + " " +
                               addons[0].FunctionalOverviewKey + " " + addons[0].Version + " " +
                               addons[0].Applications.at(0).ID);
  EXPECT_EQ(12, addons[0].PackageSize);
  for (const auto& one : addons) EXPECT_TRUE(one.Compatible && !one.Installed);
  const std::string exe = tree.ExeDirectory();
  EXPECT_THAT(log.Brief(),
              ElementsAre("3 ReadServerAddonsModel: parse addons model begin.",
                          "3 ReadAllAddonsXml: Begin Read AddonAplication.xml[" + exe +
                              "../ProductAddons.xml]",
                          "3 ReadAllAddonsXml: End Read AddonAplication.xml[" + exe +
                              "../ProductAddons.xml], all addon size[3]",
                          "3 ReadInstalledAddonsXml: Begin Read InstalledProducts.xml[" + exe +
                              "TevAddons/InstalledProducts.xml]",
                          "3 ReadInstalledAddonsXml: End Read InstalledProductsDescription.xml[" +
                              exe + "TevAddons/InstalledProducts.xml], addon size[0]",
                          "3 ReadServerAddonsModel: parse addons model success."));
}

TEST_F(AddonReader, CatalogueEntryWithoutAnIdCountsAsInstalled) {
  Catalogue("<Addon/>");
  Installed("");
  EXPECT_EQ("::0,+;", ReadAll());
}

TEST_F(AddonReader, InstalledAddonUpdatesItsFirstEntryInPlaceAndKeepsItsSize) {
  Catalogue(
      "<Addon><ID>A</ID></Addon><Addon><ID>X</ID><Version>1</Version><PackageSize>7"
      "</PackageSize></Addon><Addon><ID>X</ID></Addon>");
  Describe("<Version>2</Version>");
  Installed(
      "<OfflineInstallPackage><Path>off</Path></OfflineInstallPackage><Addons>"
      "<Addon ID='X' Version='2' ClientPackageName='c' LastModifyTime='t' "
      "ClientPackageMD5='m'/></Addons>");
  EXPECT_EQ("A::0,off;X:2:7,off+;X::0,off;", ReadAll());
}

TEST_F(AddonReader, InstalledAddonReplacesTheWholeEntryButItsPackageSize) {
  Catalogue(WholeEntry("Addon",
                       "<ApplicationList><Application><ID>c5</ID></Application>"
                       "<Application/></ApplicationList>"));
  Describe(
      "<NameKey>1</NameKey><Icon>2</Icon><FunctionalOverviewKey>3</FunctionalOverviewKey>"
      "<Version>4</Version><CompatibleVersion>5</CompatibleVersion><Source>6</Source>"
      "<HaveClientPackage>1</HaveClientPackage><PublishingType>3</PublishingType>"
      "<IsIndependent>1</IsIndependent><IsDistributed>1</IsDistributed><ReplaceAddon><ID>7</ID>"
      "<MinVersion>8</MinVersion><MaxVersion>9</MaxVersion></ReplaceAddon>" +
      Support("Velmora Professional", "2.6.0", "2.9") +
      "<ApplicationList><Application><ID>app</ID></Application></ApplicationList><Plugins>"
      "<Plugin ID='s' Category='server'/><Plugin ID='e' Category='server'/>"
      "<Plugin ID='d' Category=''/></Plugins><Services><Service ID='v'/><Service ID='w'/>"
      "</Services>");
  for (const std::string id : {"s", "d"}) {
    tree.Write("bin/META_INFO/" + id + "/" + id + ".xml", PluginXml(id));
  }
  tree.Write("bin/META_INFO/e/e.xml", "<Plugin><Type>1</Type><ID>e</ID></Plugin>");
  Installed(
      "<Addons><Addon ID='X' Version='10' ClientPackageName='11' LastModifyTime='12' "
      "ClientPackageMD5='13' AddonPackageName='14'/></Addons>");
  const std::vector<AddonModel> addons = ReadAddons();
  ASSERT_EQ(1U, addons.size());
  EXPECT_EQ(
      "X|1|2|3|4|5|6|2.6.0|2.9|7|1|3|7|8|9|1|1|1 0|" + InstallFolder() + "X/|1|10|5|1|14|11|12|13",
      Text(addons[0], addons[0]));
  EXPECT_EQ("app,;s,e,d,;v,w,;s,;e,;d,;", ListsText(addons[0]));
}

TEST_F(AddonReader, InstalledAddonKeepsOnlyThePackageSizeOfItsEntry) {
  Catalogue(WholeEntry("Addon", "<ApplicationList><Application/></ApplicationList>"));
  Describe("");
  Installed("<Addons><Addon ID='X'/></Addons>");
  const std::vector<AddonModel> addons = ReadAddons();
  ASSERT_EQ(1U, addons.size());
  EXPECT_EQ("X|||||1.0.0||||7|0|0||||0|0|0 0|" + InstallFolder() + "X/|1||1.0.0|0||||",
            Text(addons[0], addons[0]));
  EXPECT_EQ(";;;;;;", ListsText(addons[0]));
}

TEST_F(AddonReader, InstalledAddonsOutsideTheCatalogueAreAppendedInTheirOrder) {
  Catalogue("<Addon><ID>A</ID></Addon>");
  for (const std::string id : {"Z", "Y"}) {
    tree.Write("bin/TevAddons/" + id + "/" + id + ".xml",
               "<AddonDescription><ID>" + id + "</ID></AddonDescription>");
  }
  Installed("<Addons><Addon ID='Z'/><Addon ID='Y'/></Addons>");
  EXPECT_EQ("A::0,;Z::0,+;Y::0,+;", ReadAll());
}

TEST_F(AddonReader, OfflinePackageGoesToEveryCatalogueEntryInstalledOrNot) {
  Catalogue("<Addon><ID>A</ID></Addon><Addon><ID>X</ID></Addon>");
  Describe("");
  Installed(
      "<OfflineInstallPackage><Path>off</Path></OfflineInstallPackage><Addons>"
      "<Addon ID='X' AddonPackageName='own'/></Addons>");
  EXPECT_EQ("A::0,off;X::0,own+;", ReadAll());
}

TEST_F(AddonReader, AppendedAddonDoesNotTakeTheOfflinePackage) {
  Catalogue("<Addon><ID>A</ID></Addon>");
  Describe("<Version>2</Version>");
  Installed(
      "<OfflineInstallPackage><Path>off</Path></OfflineInstallPackage><Addons>"
      "<Addon ID='X'/></Addons>");
  EXPECT_EQ("A::0,off;X:2:0,+;", ReadAll());
}

TEST_F(AddonReader, InstalledEntryHasTheAttributesOfInstalledProducts) {
  Catalogue("");
  Describe("");
  Installed(
      "<Addons><Addon ID='X' Version='5' ClientPackageName='c' LastModifyTime='t' "
      "ClientPackageMD5='m' AddonPackageName='p'/></Addons>");
  std::vector<AddonModel> addons;
  reader.ReadServerAddonsModel(addons);
  const AddonModel& x = addons.at(0);
  EXPECT_EQ("5 c t m p", x.InstalledVersion + " " + x.ClientPackageName + " " + x.LastModifyTime +
                             " " + x.ClientPackageMD5 + " " + x.AddonPackageName);
  EXPECT_EQ(InstallFolder() + "X/", x.InstallPath);
  EXPECT_FALSE(x.PathFlag);
}

TEST_F(AddonReader, EntriesThatCannotBeReadAreSkippedAndTheRestGoesOn) {
  Catalogue("<Addon><ID>Gone</ID></Addon>");
  Describe("<Plugins><Plugin ID='p' Category='server'/></Plugins>");
  Installed("<Addons><Addon ID='Gone'/><Addon ID='X'/><Addon ID='../up'/></Addons>");
  EXPECT_EQ("Gone::0,;", ReadAll());
  EXPECT_THAT(
      log.BriefFrom(5),
      testing::Contains("5 ReadInstalledAddonsXml: parse single addon xml failed. xml path [" +
                        InstallFolder() + "Gone/Gone.xml]"));
  EXPECT_THAT(log.BriefFrom(5),
              testing::Contains("5 ReadInstalledAddonsXml: Addon[X] parse plugins failed."));
  EXPECT_THAT(
      log.BriefFrom(5),
      testing::Contains("5 ReadInstalledAddonsXml: parse single addon xml failed. xml path [" +
                        InstallFolder() + "../up/../up.xml]"));
  EXPECT_THAT(log.Brief(), testing::Contains(HasSubstr("addon size[3]")));
}

TEST_F(AddonReader, IncompatibleInstalledAddonIsStillMerged) {
  Catalogue("<Addon><ID>X</ID></Addon>");
  Describe(Support("Velmora Professional", "9"));
  Installed("<Addons><Addon ID='X'/></Addons>");
  std::vector<AddonModel> addons;
  reader.ReadServerAddonsModel(addons);
  EXPECT_TRUE(addons.at(0).Installed);
  EXPECT_FALSE(addons.at(0).InstalledCompatible || addons.at(0).Compatible);
}

TEST_F(AddonReader, WithoutAProductVersionNothingIsRead) {
  g_productVersion.clear();
  std::vector<AddonModel> addons;
  EXPECT_FALSE(reader.ReadServerAddonsModel(addons));
  EXPECT_THAT(log.Brief(), ElementsAre("5 ReadServerAddonsModel: Get product version is empty."));
}

TEST_F(AddonReader, MissingFilesFailTheAddonsAndKeepWhatWasRead) {
  std::vector<AddonModel> addons;
  EXPECT_FALSE(reader.ReadServerAddonsModel(addons));
  EXPECT_EQ("3 ReadServerAddonsModel: parse all addons with apps failed.", log.Brief().back());
  Catalogue("<Addon><ID>A</ID></Addon>");
  EXPECT_FALSE(reader.ReadServerAddonsModel(addons));
  EXPECT_EQ("3 ReadServerAddonsModel: parse installed addons failed.", log.Brief().back());
  EXPECT_EQ(1U, addons.size());
}

class ToolReader : public AddonReader {
 protected:
  void Tool(const std::string& inner) {
    tree.Write("bin/TevAddons/T/T.xml", "<ToolDescription>" + inner + "</ToolDescription>");
  }

  static std::string Text(const ToolModel& tool) {
    return ::Text(tool, tool) + (tool.ServerSide ? " on the server" : "");
  }

  std::vector<ToolModel> tools;
};

TEST_F(ToolReader, InstalledToolReplacesTheWholeEntry) {
  tree.Write("ProductTools.xml",
             "<ToolList>" + WholeEntry("Tool", "<Source>c5</Source>") + "</ToolList>");
  tree.Write("bin/TevAddons/X/X.xml",
             "<ToolDescription><ID>X</ID><NameKey>1</NameKey><Icon>2</Icon><FunctionalOverviewKey>3"
             "</FunctionalOverviewKey><Version>4</Version><CompatibleVersion>5</CompatibleVersion>"
             "<Source>6</Source><HaveClientPackage>1</HaveClientPackage><ServerSide>1</ServerSide>"
             "<PublishingType>3</PublishingType><IsIndependent>1</IsIndependent><IsDistributed>1"
             "</IsDistributed><ReplaceAddon><ID>r</ID></ReplaceAddon><SupportProducts><Product>"
             "<MinVersion>7</MinVersion><MaxVersion>8</MaxVersion></Product></SupportProducts>"
             "</ToolDescription>");
  Installed(
      "<OfflineInstallPackage><Path>off</Path></OfflineInstallPackage><Tools><Tool ID='X' "
      "Version='10' ClientPackageName='11' LastModifyTime='12' ClientPackageMD5='13' "
      "AddonPackageName='14'/></Tools>");
  EXPECT_TRUE(reader.ReadServerToolsModel(tools));
  ASSERT_EQ(1U, tools.size());
  EXPECT_EQ("X|1|2|3|4|1.0.0|6|7|8|0|1|0||||0|0|0 0|" + InstallFolder() +
                "X/|1|10||0||11|12|13 on the server",
            Text(tools[0]));
}

TEST_F(ToolReader, InstalledToolKeepsNothingOfItsEntry) {
  tree.Write("ProductTools.xml",
             "<ToolList>" + WholeEntry("Tool", "<Source>c5</Source><ServerSide>1</ServerSide>") +
                 "</ToolList>");
  tree.Write("bin/TevAddons/X/X.xml", "<ToolDescription><ID>X</ID></ToolDescription>");
  Installed("<Tools><Tool ID='X'/></Tools>");
  EXPECT_TRUE(reader.ReadServerToolsModel(tools));
  ASSERT_EQ(1U, tools.size());
  EXPECT_EQ("X|||||1.0.0||||0|0|0||||0|0|0 0|" + InstallFolder() + "X/|1|||0||||", Text(tools[0]));
}

TEST_F(ToolReader, InstalledToolsOutsideTheCatalogueAreAppendedInTheirOrder) {
  tree.Write("ProductTools.xml", "<ToolList>" + WholeEntry("Tool", "") + "</ToolList>");
  for (const std::string id : {"Z", "Y"}) {
    tree.Write("bin/TevAddons/" + id + "/" + id + ".xml",
               "<ToolDescription><ID>" + id + "</ID></ToolDescription>");
  }
  Installed("<Tools><Tool ID='Z'/><Tool ID='Y'/></Tools>");
  EXPECT_TRUE(reader.ReadServerToolsModel(tools));
  ASSERT_EQ(3U, tools.size());
  EXPECT_EQ("X|c2|c1|c3|c4|||||7|0|0||||0|0|0 0||0|||0||||", Text(tools[0]));
  EXPECT_EQ("Z Y", tools[1].ID + " " + tools[2].ID);
}

TEST_F(ToolReader, CatalogueAndInstalledToolsAreReadAndMerged) {
  tree.Write("ProductTools.xml",
             "<ToolList><Tool><ID>T</ID><PackageSize>5</PackageSize><Source>s</Source>"
             "<ServerSide>1</ServerSide></Tool><Tool><ID>U</ID><NameKey>n</NameKey>"
             "<ServerSide>true</ServerSide><PackageSize>6</PackageSize></Tool></ToolList>");
  Tool(
      "<ID>T</ID><Version>3</Version><MinVersion>0</MinVersion><Source>own</Source>"
      "<HaveClientPackage>1</HaveClientPackage><SupportProducts><Product><ProductLogo>any"
      "</ProductLogo><MinVersion>1</MinVersion><MaxVersion>2</MaxVersion></Product><Product>"
      "<MinVersion>8</MinVersion></Product></SupportProducts>");
  Installed(
      "<OfflineInstallPackage><Path>off</Path></OfflineInstallPackage><Tools><Tool ID='T' "
      "Version='3' ClientPackageName='c' AddonPackageName='not read'/></Tools>");
  EXPECT_TRUE(reader.ReadServerToolsModel(tools));
  ASSERT_EQ(2U, tools.size());
  const ToolModel& t = tools[0];
  EXPECT_EQ("T 3 own 1 2 3 c ", t.ID + " " + t.Version + " " + t.Source + " " + t.MinVersion + " " +
                                    t.MaxVersion + " " + t.InstalledVersion + " " +
                                    t.ClientPackageName + " " + t.AddonPackageName);
  EXPECT_TRUE(t.Installed && t.HaveClientPackage);
  EXPECT_FALSE(t.ServerSide);
  EXPECT_FALSE(tools[1].ServerSide || tools[1].Installed);
  const std::string exe = tree.ExeDirectory();
  EXPECT_THAT(
      log.Brief(),
      ElementsAre("3 ReadServerToolsModel: parse tools model begin.",
                  "3 ReadAllToolsXml: Begin Read ProductTools.xml[" + exe + "../ProductTools.xml]",
                  "3 ReadAllToolsXml: End Read ProductTools.xml[" + exe +
                      "../ProductTools.xml], all addon size[2]",
                  "3 ReadInstalledToolsXml: Begin Read InstalledProducts.xml[" + exe +
                      "TevAddons/InstalledProducts.xml]",
                  "3 ReadSingleInstalledToolModel: Begin parse single tool model.path[" + exe +
                      "TevAddons/T/T.xml]",
                  "3 ReadSingleInstalledToolModel: End parse single tool model.",
                  "3 ReadInstalledToolsXml: End Read InstalledProductsDescription.xml[" + exe +
                      "TevAddons/InstalledProducts.xml], tool size[1]",
                  "3 ReadServerToolsModel: parse tools model success."));
}

TEST_F(ToolReader, SourceIsReadFromTheCatalogue) {
  tree.Write("ProductTools.xml", "<ToolList><Tool><Source>s</Source></Tool></ToolList>");
  EXPECT_TRUE(reader.ReadAllToolsXml(tools, tree.ExeDirectory() + "../"));
  EXPECT_EQ("s", tools.at(0).Source);
}

TEST_F(ToolReader, TextsMissingInTheCatalogueAreEmpty) {
  tree.Write("ProductTools.xml", "<ToolList><Tool/></ToolList>");
  EXPECT_TRUE(reader.ReadAllToolsXml(tools, tree.ExeDirectory() + "../"));
  const ToolModel& tool = tools.at(0);
  EXPECT_EQ("", tool.ID + tool.Icon + tool.NameKey + tool.FunctionalOverviewKey + tool.Version +
                    tool.Source + tool.MinVersion + tool.MaxVersion);
}

TEST_F(ToolReader, InstalledToolIsOnTheServerByItsOwnDescription) {
  Installed("<Tools><Tool ID='T'/></Tools>");
  for (const std::string value : {"0", "1", "2"}) {
    tree.Write("ProductTools.xml", "<ToolList><Tool><ID>T</ID></Tool></ToolList>");
    Tool("<ID>T</ID><ServerSide>" + value + "</ServerSide>");
    tools.clear();
    EXPECT_TRUE(reader.ReadServerToolsModel(tools));
    EXPECT_EQ(value == "1", tools.at(0).ServerSide) << value;
  }
}

TEST_F(ToolReader, InstalledToolLosesTheCataloguesPackageSize) {
  tree.Write("ProductTools.xml",
             "<ToolList><Tool><ID>T</ID><PackageSize>5</PackageSize></Tool></ToolList>");
  Tool("<ID>T</ID>");
  Installed("<Tools><Tool ID='T'/></Tools>");
  reader.ReadServerToolsModel(tools);
  EXPECT_EQ(0, tools.at(0).PackageSize);
}

TEST_F(ToolReader, CompatibleVersionOfAToolIsReadFromTheAddonsElement) {
  ToolModel tool;
  tool.ID = "T";
  Tool("<ID>T</ID><CompatibleVersion>4</CompatibleVersion>");
  EXPECT_TRUE(reader.ReadSingleInstalledToolModel(tool, InstallFolder() + "T/T.xml"));
  EXPECT_EQ("1.0.0", tool.CompatibleVersion);
}

TEST_F(ToolReader, CompatibilityOfAToolIsNotDecided) {
  ToolModel tool;
  tool.ID = "T";
  Tool("<ID>T</ID>");
  reader.ReadSingleInstalledToolModel(tool, InstallFolder() + "T/T.xml");
  EXPECT_TRUE(tool.Installed);
  EXPECT_FALSE(tool.Compatible || tool.InstalledCompatible);
}

TEST_F(ToolReader, ForeignOrMissingDescriptionsAreSkipped) {
  tree.Write("ProductTools.xml", "<ToolList/>");
  Tool("<ID>t</ID>");
  Installed("<Tools><Tool ID='T'/><Tool ID='Gone'/></Tools>");
  EXPECT_TRUE(reader.ReadServerToolsModel(tools));
  EXPECT_TRUE(tools.empty());
  EXPECT_THAT(log.Brief("ReadSingleInstalledToolModel"),
              testing::Contains("3 ReadSingleInstalledToolModel: Tool's ID is not match.[T] != "
                                "[t]"));
  EXPECT_THAT(log.BriefFrom(5),
              ElementsAre("5 ReadInstalledToolsXml: parse single tool xml failed. xml path [" +
                              InstallFolder() + "T/T.xml]",
                          "5 ReadInstalledToolsXml: parse single tool xml failed. xml path [" +
                              InstallFolder() + "Gone/Gone.xml]"));
}

TEST_F(ToolReader, MissingFilesFailTheTools) {
  EXPECT_FALSE(reader.ReadServerToolsModel(tools));
  EXPECT_EQ("3 ReadServerToolsModel: parse all tools model failed.", log.Brief().back());
  tree.Write("ProductTools.xml", "<ToolList/>");
  EXPECT_FALSE(reader.ReadServerToolsModel(tools));
  EXPECT_EQ("3 ReadServerToolsModel: parse installed tools failed.", log.Brief().back());
}

TEST_F(AddonReader, ClientPackageComesFromTheInstalledProducts) {
  Installed("<ClientPackage><Path>p</Path><MD5>m</MD5></ClientPackage>");
  ProductModel model;
  EXPECT_TRUE(reader.ReadClientInfoFromInstalledAddonsXml(model));
  EXPECT_EQ("pm", model.ClientPackagePath + model.ClientPackageMD5);
}

TEST_F(AddonReader, ADescriptionThatIsADirectoryOrEmptyIsReplacedByItsDataFile) {
  Catalogue("");
  tree.Write("bin/TevAddons/X/X.xml/inside", "x");
  tree.Write("bin/TevAddons/X/X.data",
             "<AddonDescription><ID>X</ID><Version>4</Version></AddonDescription>");
  Installed("<Addons><Addon ID='X'/></Addons>");
  EXPECT_EQ("X:4:0,+;", ReadAll());
}

TEST_F(AddonReader, MissingFlagsAreNotSet) {
  EXPECT_TRUE(Read(""));
  EXPECT_FALSE(addon.IsIndependent || addon.IsDistributed || addon.HaveClientPackage);
}

TEST_F(AddonReader, MissingTextsAreEmpty) {
  EXPECT_TRUE(
      Read("<ApplicationList><Application/></ApplicationList><Plugins><Plugin/></Plugins>"
           "<Services><Service/></Services>"));
  EXPECT_EQ("", addon.NameKey + addon.Icon + addon.FunctionalOverviewKey + addon.Version +
                    addon.Source + addon.MinVersion + addon.MaxVersion);
  const AddonApplication& app = addon.Applications.at(0);
  EXPECT_EQ("", app.ID + app.Icon + app.NameKey + app.FunctionalOverviewKey + app.InstallUDF +
                    app.FunctionUDF + app.RelatedApplicationID);
  const ProductPluginEntry& plugin = addon.Plugins.at(0);
  EXPECT_EQ("", plugin.ID + plugin.Version + plugin.Type + plugin.GroupName);
  EXPECT_EQ("", addon.Services.at(0).ID + addon.Services.at(0).Version);
}

TEST_F(AddonReader, OnlyPublishingTypeThreeReplacesAnother) {
  const std::string replaced = "<ReplaceAddon><ID>old</ID></ReplaceAddon>";
  for (const int type : {1, 2, 4}) {
    Read("<PublishingType>" + std::to_string(type) + "</PublishingType>" + replaced);
    EXPECT_EQ("", addon.ReplaceAddonID) << type;
  }
  Read("<PublishingType>3</PublishingType>" + replaced);
  EXPECT_EQ("old", addon.ReplaceAddonID);
}

TEST_F(AddonReader, InstalledAddonUpdatesTheEntryOfItsOwnIdAmongOthers) {
  Catalogue(
      "<Addon><ID>Z</ID><Version>1</Version></Addon>"
      "<Addon><ID>X</ID><Version>1</Version></Addon>");
  Installed("<Addons><Addon ID='X'/></Addons>");
  Describe("<Version>2</Version>");
  EXPECT_EQ("Z:1:0,;X:2:0,+;", ReadAll());
}

TEST_F(AddonReader, ToolOnTheServerIsOneAndNothingElse) {
  for (const char* value : {"0", "2", "-1", "true"}) {
    tree.Write("ProductTools.xml", std::string("<ToolList><Tool><ServerSide>") + value +
                                       "</ServerSide></Tool><Tool/></ToolList>");
    std::vector<ToolModel> tools;
    reader.ReadAllToolsXml(tools, tree.ExeDirectory() + "../");
    ASSERT_EQ(2U, tools.size());
    EXPECT_FALSE(tools[0].ServerSide || tools[1].ServerSide) << value;
  }
  tree.Write("ProductTools.xml", "<ToolList><Tool><ServerSide>1</ServerSide></Tool></ToolList>");
  std::vector<ToolModel> tools;
  reader.ReadAllToolsXml(tools, tree.ExeDirectory() + "../");
  EXPECT_TRUE(tools.at(0).ServerSide);
}

}  // namespace
