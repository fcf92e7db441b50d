// Links in a product, or in an addon's folder, when both are put together.

#include <gtest/gtest.h>

#include "host/Commands.h"
#include "tests/host/StagedFolders.h"

namespace fs = std::filesystem;

namespace {

class AStagedLink : public testing::Test, public StagedFolders {
 protected:
  void Link(const std::string& target, const std::string& name) const {
    const fs::path link = folder.Path() / name;
    fs::create_directories(link.parent_path());
    fs::create_directory_symlink(target, link);
  }

  StagedProduct Staged() const { return {Site(), folder.Path() / "parking"}; }
};

TEST_F(AStagedLink, ToAFolderIsALink) {
  Write("site/bin/a.dll", "library");
  Link("..", "site/bin/data/loop");
  Link("self", "site/bin/data/self");
  const StagedProduct staged = Staged();
  EXPECT_TRUE(fs::is_symlink(staged.Place().folder / "bin/data/loop"));
  EXPECT_EQ("library", ReadFrom(staged, "bin/data/loop/a.dll"));
}

TEST_F(AStagedLink, ToAFolderThatTheAddonAddsToIsAFolder) {
  Write("elsewhere/a/a.xml", "a");
  Link("../../elsewhere", "site/bin/META_INFO");
  Link("../../elsewhere", "site/bin/TevAddons");
  Write("parking/META_INFO/b/b.xml", "b");
  Write("parking/META_INFO/a/a.xml", "new");
  const StagedProduct staged = Staged();
  EXPECT_EQ("new", ReadFrom(staged, "bin/META_INFO/a/a.xml"));
  EXPECT_EQ("b", ReadFrom(staged, "bin/META_INFO/b/b.xml"));
  EXPECT_EQ(kListOfParking, ReadFrom(staged, "bin/TevAddons/InstalledProducts.xml"));
  EXPECT_EQ("a", folder.Read("elsewhere/a/a.xml"));
  EXPECT_FALSE(fs::exists(folder.Path() / "elsewhere/b"));
  EXPECT_FALSE(fs::exists(folder.Path() / "elsewhere/InstalledProducts.xml"));
}

TEST_F(AStagedLink, ToAListThatDoesNotExistIsNotFollowed) {
  Link("../../../other.xml", "site/bin/TevAddons/InstalledProducts.xml");
  const StagedProduct staged = Staged();
  EXPECT_EQ(kListOfParking, ReadFrom(staged, "bin/TevAddons/InstalledProducts.xml"));
  EXPECT_FALSE(fs::exists(folder.Path() / "other.xml"));
}

TEST_F(AStagedLink, OfTheAddonIsNamedWithAllThatIsInIt) {
  Write("elsewhere/a.xml", "a");
  Link("../../elsewhere", "parking/META_INFO/a");
  const StagedProduct staged = Staged();
  EXPECT_EQ("a", ReadFrom(staged, "bin/META_INFO/a/a.xml"));
  EXPECT_EQ(folder.Path() / "parking/META_INFO/a", staged.AddonFiles().at("bin/META_INFO/a"));
}

TEST_F(AStagedLink, BesideTheFolderOfTheExecutablesIsStaged) {
  Write("site/client/setup.zip", "package");
  EXPECT_EQ("package", ReadFrom(Staged(), "client/setup.zip"));
}

TEST_F(AStagedLink, IsNotTriedForAnIDThatXmlCannotContain) {
  Write("parking/TevAddons/a\x01/a\x01.xml", "<AddonDescription/>");
  EXPECT_THROW(Staged(), UsageError);
}

}  // namespace
