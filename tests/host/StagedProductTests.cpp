#include "host/StagedProduct.h"

#include <gtest/gtest.h>

#include "host/Commands.h"
#include "tests/host/StagedFolders.h"

namespace fs = std::filesystem;

namespace {

class AStagedProduct : public testing::Test, public StagedFolders {};

TEST_F(AStagedProduct, HasTheFilesOfBothAndIsRemoved) {
  Write("site/Product.xml", "product");
  Write("site/bin/META_INFO/a/a.xml", "old");
  Write("site/bin/b.dll", "library");
  Write("parking/META_INFO/a/a.xml", "new");
  fs::path root;
  {
    const StagedProduct staged(Site(), folder.Path() / "parking");
    root = staged.Place().folder;
    EXPECT_EQ("product", ReadFrom(staged, "Product.xml"));
    EXPECT_EQ("new", ReadFrom(staged, "bin/META_INFO/a/a.xml"));
    EXPECT_EQ("library", ReadFrom(staged, "bin/b.dll"));
    const std::map<std::string, fs::path> files = {
        {"bin/META_INFO/a/a.xml", folder.Path() / "parking/META_INFO/a/a.xml"},
        {"bin/TevAddons/Parking/Parking.xml",
         folder.Path() / "parking/TevAddons/Parking/Parking.xml"}};
    EXPECT_EQ(files, staged.AddonFiles());
  }
  EXPECT_FALSE(fs::exists(root));
  EXPECT_EQ("old", folder.Read("site/bin/META_INFO/a/a.xml"));
}

TEST_F(AStagedProduct, ListsTheAddonInTheDataFileThatIsRead) {
  Write("site/bin/TevAddons/InstalledProducts.data", kEmptyList);
  const StagedProduct staged(Site(), folder.Path() / "parking");
  EXPECT_EQ("bin/TevAddons/InstalledProducts.data", staged.InstalledFile());
  EXPECT_EQ(kListOfParking, ReadFrom(staged, staged.InstalledFile()));
  EXPECT_FALSE(fs::exists(staged.Place().folder / "bin/TevAddons/InstalledProducts.xml"));
  EXPECT_EQ(kEmptyList, staged.InstalledText());
}

TEST_F(AStagedProduct, ListsTheAddonInAListOfItsOwnIfThereIsNone) {
  const StagedProduct staged(Site(), folder.Path() / "parking");
  EXPECT_EQ("bin/TevAddons/InstalledProducts.xml", staged.InstalledFile());
  EXPECT_EQ(kListOfParking, ReadFrom(staged, staged.InstalledFile()));
  EXPECT_EQ("", staged.InstalledText());
}

TEST_F(AStagedProduct, HasAListThatCannotBeReadAsItIs) {
  Write("site/bin/TevAddons/InstalledProducts.xml", "");
  const StagedProduct staged(Site(), folder.Path() / "parking");
  EXPECT_EQ("", ReadFrom(staged, "bin/TevAddons/InstalledProducts.xml"));
  EXPECT_TRUE(fs::exists(staged.Place().folder / "bin/TevAddons/InstalledProducts.xml"));
}

TEST_F(AStagedProduct, DoesNotUseTheListInTheFolderOfTheAddon) {
  Write("site/bin/TevAddons/InstalledProducts.xml", kEmptyList);
  Write("parking/TevAddons/InstalledProducts.xml", "other");
  Write("parking/TevAddons/InstalledProducts.data", "other");
  const StagedProduct staged(Site(), folder.Path() / "parking");
  EXPECT_EQ(kListOfParking, ReadFrom(staged, "bin/TevAddons/InstalledProducts.xml"));
  EXPECT_FALSE(fs::exists(staged.Place().folder / "bin/TevAddons/InstalledProducts.data"));
}

TEST_F(AStagedProduct, NamesPlacesOfItsListAsTheyAreInTheProduct) {
  const std::string list = "bin/TevAddons/InstalledProducts.xml";
  Write("site/" + list,
        "<InstalledProductsDescription><Addons/><Tools/>"
        "</InstalledProductsDescription>");
  const StagedProduct staged(Site(), folder.Path() / "parking");
  RuleFinding finding;
  finding.place = {list, 1, 40};
  finding.related = {{{list, 1, 40}, "the entry"}, {{list, 1, 85}, "tools"}, {{"a", 1, 40}, "a"}};
  RuleFindings findings = {finding};
  staged.UsePlacesOfProduct(findings);
  EXPECT_EQ(list + ":0:0", Text(findings[0].place));
  ASSERT_EQ(2U, findings[0].related.size());
  EXPECT_EQ(list + ":1:40", Text(findings[0].related[0].place));
  EXPECT_EQ("a:1:40", Text(findings[0].related[1].place));
}

TEST_F(AStagedProduct, NeedsAnAddon) {
  EXPECT_THROW(StagedProduct(Site(), folder.Path() / "site"), UsageError);
}

}  // namespace
