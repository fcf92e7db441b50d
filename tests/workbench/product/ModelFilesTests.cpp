#include "tests/workbench/product/OnDisk.h"
#include "workbench/product/OtherCase.h"

using testing::ElementsAre;
using testing::IsEmpty;

namespace fs = std::filesystem;

namespace {

class ModelFiles : public ProductOnDisk {
 protected:
  /// Each file as "path", with " STATE detail" if it is not good and with " < listed by".
  std::vector<std::string> Lines() const {
    std::vector<std::string> lines;
    for (const ModelFile& file : Files()) {
      constexpr const char* states[] = {"", " missing", " unreadable", " broken", " root", " id"};
      std::string line = file.path.string() + states[static_cast<int>(file.state)];
      if (!file.listed.element.empty()) {
        line += " < " + file.listed.file.filename().string() + ":" +
                std::to_string(file.listed.line) + " " + file.listed.element + " " + file.listed.id;
      }
      lines.push_back(Shown(line));
    }
    return lines;
  }

  /// A product with one installed addon and one installed tool.
  void Installed() const {
    tree.Write("ProductAddons.xml", "<AddonList/>");
    tree.Write("ProductTools.xml", "<ToolList/>");
    tree.Write("bin/TevAddons/InstalledProducts.xml",
               "<InstalledProductsDescription>\n"
               "<Addons><Addon ID='heat'/></Addons>\n"
               "<Tools><Tool ID='backup'/></Tools>\n"
               "</InstalledProductsDescription>");
    tree.Write("bin/TevAddons/heat/heat.xml",
               "<AddonDescription><ID>heat</ID>\n"
               "<Plugins><Plugin Category='server' ID='heat.server'/></Plugins>"
               "</AddonDescription>");
    tree.Write("bin/TevAddons/backup/backup.xml",
               "<ToolDescription><ID>backup</ID></ToolDescription>");
    tree.Write("bin/META_INFO/heat.server/heat.server.xml", PluginXml("heat.server"));
  }
};

using ModelFileSentences = ModelFiles;
using FileFindingsTest = ModelFiles;

TEST_F(ModelFiles, AreThoseThatTheFrameReadsInItsOrder) {
  Installed();
  tree.Write("bin/META_INFO/DeviceDrivers.xml", "<DAMDrivers>\n<Driver ID='d'/></DAMDrivers>");
  EXPECT_THAT(
      Lines(),
      ElementsAre("Product.xml", "bin/META_INFO/DeviceDrivers.xml", "bin/META_INFO/Portal.xml",
                  "bin/META_INFO/Platform.xml", "bin/META_INFO/a/a.xml < Product.xml:1 Plugin a",
                  "bin/META_INFO/b/b.xml < Product.xml:1 Plugin b",
                  "bin/META_INFO/d/d.xml missing < DeviceDrivers.xml:2 Driver d",
                  "bin/TevAddons/InstalledProducts.xml", "ProductAddons.xml",
                  "bin/TevAddons/heat/heat.xml < InstalledProducts.xml:2 Addon heat",
                  "bin/META_INFO/heat.server/heat.server.xml < heat.xml:2 Plugin heat.server",
                  "ProductTools.xml",
                  "bin/TevAddons/backup/backup.xml < InstalledProducts.xml:3 Tool backup"));
}

TEST_F(ModelFiles, AreFollowedThoughTheFrameStopsBefore) {
  fs::remove(Bin() / "META_INFO/Portal.xml");
  fs::remove(Bin() / "META_INFO/b/b.xml");
  EXPECT_THAT(Lines(), ElementsAre("Product.xml", "bin/META_INFO/DeviceDrivers.xml",
                                   "bin/META_INFO/Portal.xml missing", "bin/META_INFO/Platform.xml",
                                   "bin/META_INFO/a/a.xml < Product.xml:1 Plugin a",
                                   "bin/META_INFO/b/b.xml missing < Product.xml:1 Plugin b",
                                   "bin/TevAddons/InstalledProducts.xml missing",
                                   "ProductAddons.xml missing", "ProductTools.xml missing"));
}

TEST_F(ModelFiles, OfAddonsAreLeftOutWithoutVersionOfThreeParts) {
  Installed();
  tree.Write("Product.xml", "<ProductDescription><Version>2..6.</Version></ProductDescription>");
  EXPECT_THAT(Lines(),
              ElementsAre("Product.xml", "bin/META_INFO/DeviceDrivers.xml",
                          "bin/META_INFO/Portal.xml", "bin/META_INFO/Platform.xml",
                          "bin/TevAddons/InstalledProducts.xml", "ProductTools.xml",
                          "bin/TevAddons/backup/backup.xml < InstalledProducts.xml:3 Tool backup"));
}

TEST_F(ModelFiles, OfAddonsAreFollowedWithoutProduct) {
  Installed();
  tree.Remove("Product.xml");
  EXPECT_THAT(Lines(),
              testing::Contains("bin/META_INFO/heat.server/heat.server.xml < heat.xml:2 Plugin "
                                "heat.server"));
}

TEST_F(ModelFiles, LieBehindBackslashesTooAsTheFrameHasIt) {
  const std::string bin = Bin().parent_path().string() + "\\";
  EXPECT_EQ(ModelFile::State::kGood, ReadModelFiles(bin, names).at(1).state);
}

TEST_F(ModelFiles, ListedTwiceAreReadOnce) {
  tree.Write("Product.xml",
             "<ProductDescription><Plugins><Plugin ID='a'/><Plugin ID='a'/><Plugin/><Plugin/>"
             "</Plugins></ProductDescription>");
  const std::vector<std::string> lines = Lines();
  EXPECT_EQ(
      1, std::count(lines.begin(), lines.end(), "bin/META_INFO/a/a.xml < Product.xml:1 Plugin a"));
  EXPECT_EQ(2, std::count(lines.begin(), lines.end(),
                          "bin/META_INFO/.xml missing < Product.xml:1 Plugin "));
}

TEST_F(ModelFiles, AreReplacedByTheirStandIn) {
  for (const char* content : {"", "<Plugin/>"}) {
    tree.Write("bin/META_INFO/a/a.xml", content);
    tree.Write("bin/META_INFO/a/a.data", PluginXml("a"));
    const ModelFile file = Files().at(4);
    const bool empty = *content == '\0';
    EXPECT_EQ(empty ? "bin/META_INFO/a/a.data" : "bin/META_INFO/a/a.xml",
              Shown(file.read.string()));
    EXPECT_EQ("bin/META_INFO/a/a.xml", Shown(file.path.string()));
    EXPECT_EQ(empty ? "is empty" : "", file.passedOver);
  }
}

TEST_F(ModelFiles, TakeNamesInTheLocalCodePage) {
  // With Latin-1 as the code page, the frame reads each byte of an ID in UTF-8 as a character.
  const LocalNames latin1 = {[](const std::string& local) {
                               std::u32string wide;
                               for (const char c : local) wide += static_cast<unsigned char>(c);
                               return fs::path(wide);
                             },
                             [](const fs::path& path) {
                               std::string local;
                               for (const char32_t c : path.u32string())
                                 local += static_cast<char>(c);
                               return local;
                             }};
  const fs::path folder = Bin() / fs::u8path("\xC3\xA4");
  fs::create_directories(folder / "META_INFO");
  tree.Write("bin/Product.xml",
             "<ProductDescription><Plugins><Plugin ID='\xC3\xBC'/></Plugins></ProductDescription>");
  const std::vector<ModelFile> files = ReadModelFiles(folder, latin1);
  EXPECT_EQ(ModelFile::State::kGood, files.at(0).state) << files.at(0).path;
  EXPECT_EQ(fs::u8path("\xC3\x83\xC2\xBC.xml"), files.at(4).path.filename());
  EXPECT_EQ(folder / "META_INFO" / fs::u8path("\xC3\x83\xC2\xBC"), files.at(4).path.parent_path());
}

TEST_F(ModelFileSentences, AreNoneForProductThatCanBeRead) {
  EXPECT_THAT(Unreadable(), IsEmpty());
}

TEST_F(ModelFileSentences, NameEveryMissingFileAndWhoListsIt) {
  fs::remove(Bin() / "META_INFO/Portal.xml");
  fs::remove(Bin() / "META_INFO/b/b.xml");
  EXPECT_THAT(Unreadable(),
              ElementsAre("bin/META_INFO/Portal.xml does not exist, and there is no Portal.data "
                          "beside it that could stand in; the product cannot be read",
                          "bin/META_INFO/b/b.xml does not exist, and there is no b.data beside it "
                          "that could stand in; Product.xml:1 lists \"b\"; the product cannot be "
                          "read"));
}

TEST_F(ModelFileSentences, SayWhatIsWrongWithFileAndStandIn) {
  tree.Write("Product.data", "");
  fs::remove(Bin() / "../Product.xml");
  fs::create_directories(Bin() / "../Product.xml");
  tree.Write("bin/META_INFO/Platform.xml", "");
  EXPECT_THAT(
      Unreadable(),
      ElementsAre("Product.xml is a directory, and Product.data beside it, which could stand in, "
                  "is empty; the product cannot be read",
                  "bin/META_INFO/Platform.xml is empty, and there is no Platform.data beside it "
                  "that could stand in; the product cannot be read"));
}

TEST_F(ModelFileSentences, NamePlaceOfEntryWithoutID) {
  tree.Write("Product.xml",
             "<ProductDescription><Plugins>\n<Plugin ID='a'/>\n<Plugin Version='1'/>\n"
             "<Plugin ID=''/></Plugins></ProductDescription>");
  tree.Write("bin/META_INFO/DeviceDrivers.xml", "<DAMDrivers>\n<Driver/></DAMDrivers>");
  EXPECT_THAT(Unreadable(),
              ElementsAre("Product.xml:3: a <Plugin> without an ID; the product cannot be read",
                          "Product.xml:4: a <Plugin> without an ID; the product cannot be read",
                          "bin/META_INFO/DeviceDrivers.xml:2: a <Driver> without an ID; the "
                          "product cannot be read"));
}

TEST_F(ModelFileSentences, NamePlaceOfSecondSectionOnce) {
  tree.Write("Product.xml",
             "<ProductDescription><Plugins/>\n<Plugins>\n<Plugin ID='a'/></Plugins>\n"
             "<Plugins>\n<Plugin ID='b'/><Plugin ID='b'/></Plugins>\n"
             "<Plugins><Plugin ID='a'/></Plugins></ProductDescription>");
  EXPECT_THAT(Unreadable(),
              ElementsAre("Product.xml:4: a second section with <Plugin>: the frame reads only one "
                          "such section right; put all entries into the first; the product "
                          "cannot be read"));
}

TEST_F(FileFindingsTest, AreNoneForProductWithOrWithoutAddons) {
  EXPECT_THAT(FileFindings(), IsEmpty());
  Installed();
  EXPECT_THAT(FileFindings(), IsEmpty());
}

TEST_F(FileFindingsTest, NameWhatReadsAsEmptyAndWhatIsLost) {
  tree.Write("Product.xml", "<ProductDescription>\n<Product>X</Version>\n</ProductDescription>");
  tree.Write("bin/META_INFO/DeviceDrivers.xml", "\n\n<Drivers/>");
  tree.Write("bin/META_INFO/Portal.xml", "<PortalDescription xmlns='urn:x'/>");
  tree.Write("bin/META_INFO/Platform.xml", "<a:Other xmlns:a='urn:x'/>");
  EXPECT_THAT(
      FileFindings(),
      ElementsAre("E Product.xml:2: not well-formed (Opening and ending tag mismatch: Product line "
                  "2 and Version): the whole file reads as empty, so no plugin is started",
                  "E bin/META_INFO/DeviceDrivers.xml:3: its root is <Drivers>, not <DAMDrivers>: "
                  "the whole file reads as empty, so there are no drivers",
                  "E bin/META_INFO/Portal.xml:1: its root is in the namespace urn:x: the whole "
                  "file reads as empty, so there are no menus",
                  "E bin/META_INFO/Platform.xml:1: its root is <Other>, not <Platform>: the whole "
                  "file reads as empty, so the platform has no settings"));
}

TEST_F(FileFindingsTest, NameDescriptionsThatHoldAnotherIDThanTheirOwn) {
  tree.Product("a: b: c: d:");
  tree.Write("bin/META_INFO/b/b.xml", "<Plugin><Type>2</Type></Plugin>");
  tree.Write("bin/META_INFO/c/c.xml", "<Plugin><Type>2</Type><ID>a</ID></Plugin>");
  tree.Write("bin/META_INFO/d/d.xml", "\n<Plugin><Type>2</Type><ID>x</ID></Plugin>");
  EXPECT_THAT(FileFindings(),
              ElementsAre("E bin/META_INFO/b/b.xml:1: its ID is missing: the plugin that "
                          "Product.xml:1 lists as \"b\" is dropped",
                          "E bin/META_INFO/c/c.xml:1: its ID is \"a\", not \"c\", by which "
                          "Product.xml:1 lists it: another plugin has that ID, and only one of "
                          "them counts",
                          "W bin/META_INFO/d/d.xml:2: its ID is \"x\", not \"d\", by which "
                          "Product.xml:1 lists it: the plugin counts as that one"));
}

TEST_F(FileFindingsTest, NameStandInThatWasRead) {
  fs::remove(Bin() / "META_INFO/b/b.xml");
  tree.Write("bin/META_INFO/b/b.data", "<Plugin>\n\xFF</Plugin>");
  const std::vector<std::string> findings = FileFindings();
  ASSERT_EQ(1U, findings.size());
  EXPECT_THAT(findings[0],
              testing::StartsWith(
                  "E bin/META_INFO/b/b.data:2: not well-formed (Input is not proper UTF-8"));
  EXPECT_THAT(findings[0], testing::EndsWith(
                               "): the whole file reads as empty, so the plugin that Product.xml:1 "
                               "lists as \"b\" is dropped; it stands in for b.xml, which does not "
                               "exist"));
  EXPECT_EQ(std::string::npos, findings[0].find('\n'));
}

TEST_F(FileFindingsTest, NameAddonsAndToolsThatAreSkipped) {
  Installed();
  fs::remove(Bin() / "META_INFO/heat.server/heat.server.xml");
  tree.Write("bin/TevAddons/backup/backup.xml",
             "<ToolDescription>\n<ID>Backup</ID></ToolDescription>");
  EXPECT_THAT(
      FileFindings(),
      ElementsAre("E bin/META_INFO/heat.server/heat.server.xml does not exist, and there is no "
                  "heat.server.data beside it that could stand in; heat.xml:2 lists "
                  "\"heat.server\"; the addon in bin/TevAddons/heat/heat.xml is not installed",
                  "W bin/TevAddons/backup/backup.xml:1: its ID is \"Backup\", not \"backup\": the "
                  "tool \"backup\" is not installed"));
}

TEST_F(FileFindingsTest, NameAddonAndToolWithoutDescriptionOrID) {
  Installed();
  fs::remove(Bin() / "TevAddons/heat/heat.xml");
  tree.Write("bin/TevAddons/InstalledProducts.xml",
             "<InstalledProductsDescription><Addons><Addon ID='heat'/></Addons>\n"
             "<Tools><Tool/></Tools></InstalledProductsDescription>");
  EXPECT_THAT(FileFindings(),
              ElementsAre("E bin/TevAddons/heat/heat.xml does not exist, and there is no heat.data "
                          "beside it that could stand in; InstalledProducts.xml:1 lists \"heat\"; "
                          "the addon \"heat\" is not installed",
                          "W bin/TevAddons/InstalledProducts.xml:2: a <Tool> without an ID; it is "
                          "skipped"));
}

TEST_F(FileFindingsTest, NameMissingCatalogueOnlyWhenSomethingIsInstalled) {
  Installed();
  tree.Remove("ProductAddons.xml");
  tree.Remove("ProductTools.xml");
  EXPECT_THAT(
      FileFindings(),
      ElementsAre("E ProductAddons.xml does not exist, and there is no ProductAddons.data beside "
                  "it that could stand in; no addon is read, not even the one that "
                  "bin/TevAddons/InstalledProducts.xml lists",
                  "W ProductTools.xml does not exist, and there is no ProductTools.data beside it "
                  "that could stand in; no tool is read, not even the one that "
                  "bin/TevAddons/InstalledProducts.xml lists"));
  tree.Write("bin/TevAddons/InstalledProducts.xml", "<InstalledProductsDescription/>");
  EXPECT_THAT(FileFindings(), IsEmpty());
}

TEST_F(FileFindingsTest, CountAddonsThatAreInstalledWithoutCatalogue) {
  tree.Write("bin/TevAddons/InstalledProducts.xml",
             "<InstalledProductsDescription><Addons><Addon ID='a'/><Addon ID='b'/></Addons>"
             "</InstalledProductsDescription>");
  EXPECT_THAT(
      FileFindings(),
      ElementsAre("E ProductAddons.xml does not exist, and there is no ProductAddons.data beside "
                  "it that could stand in; no addon is read, not even the 2 that "
                  "bin/TevAddons/InstalledProducts.xml lists"));
}

TEST_F(FileFindingsTest, NameVersionThatKeepsAddonsAway) {
  Installed();
  tree.Write("Product.xml", "<ProductDescription><Version>2.6</Version></ProductDescription>");
  EXPECT_THAT(FileFindings(),
              ElementsAre("E Product.xml: its Version has no three parts; no addon is read, not "
                          "even the one that bin/TevAddons/InstalledProducts.xml lists"));
}

TEST_F(FileFindingsTest, OfBrokenProductSayNothingMoreOfAddons) {
  Installed();
  tree.Write("Product.xml", "<ProductDescription>\n\n\n");
  EXPECT_THAT(FileFindings(),
              ElementsAre("E Product.xml:1: not well-formed (Premature end of data in tag "
                          "ProductDescription line 1): the whole file reads as empty, so no plugin "
                          "is started"));
}

TEST_F(FileFindingsTest, NameCatalogueThatIsThereButCannotBeRead) {
  tree.Write("ProductAddons.xml", "");
  tree.Write("ProductTools.xml", "");
  tree.Write("bin/TevAddons/InstalledProducts.xml", "");
  EXPECT_THAT(FileFindings(),
              ElementsAre("E bin/TevAddons/InstalledProducts.xml is empty, and there is no "
                          "InstalledProducts.data beside it that could stand in; nothing counts as "
                          "installed",
                          "E ProductAddons.xml is empty, and there is no ProductAddons.data beside "
                          "it that could stand in; no addon is read, not even an installed one",
                          "W ProductTools.xml is empty, and there is no ProductTools.data beside "
                          "it that could stand in; no tool is read, not even an installed one"));
}

}  // namespace
