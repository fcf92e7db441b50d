// Model files of kinds that exist only on POSIX systems.

#include <sys/stat.h>

#include "tests/workbench/product/OnDisk.h"

using testing::ElementsAre;

namespace fs = std::filesystem;

namespace {

using PosixModelFiles = ProductOnDisk;

TEST_F(PosixModelFiles, AreNotWaitedForWhenTheyArePipes) {
  fs::remove(Bin() / "META_INFO/Portal.xml");
  ASSERT_EQ(0, mkfifo((Bin() / "META_INFO/Portal.xml").c_str(), 0600));
  EXPECT_THAT(
      Unreadable(),
      ElementsAre("bin/META_INFO/Portal.xml is no regular file, and there is no Portal.data "
                  "beside it that could stand in; the product cannot be read"));
}

TEST_F(PosixModelFiles, OfLinkedFolderAreNamedWhereTheyLie) {
  fs::create_directories(Bin() / "../elsewhere");
  fs::create_directory_symlink(Bin(), Bin() / "../elsewhere/bin");
  tree.Write("elsewhere/Product.xml", "not this one");
  const std::vector<ModelFile> files = ReadModelFiles(Bin() / "../elsewhere/bin", names);
  EXPECT_EQ("Product.xml", Shown(files.at(0).path.string()));
  EXPECT_EQ(ModelFile::State::kGood, files.at(0).state);
}

TEST_F(PosixModelFiles, WithOtherCaseAreNamed) {
  fs::create_directories(Bin() / "META_INFO/B");
  fs::rename(Bin() / "META_INFO/b/b.xml", Bin() / "META_INFO/B/b.xml");
  fs::remove(Bin() / "META_INFO/b");
  fs::rename(Bin() / "META_INFO/a/a.xml", Bin() / "META_INFO/a/A.xml");
  EXPECT_THAT(Unreadable(),
              ElementsAre("bin/META_INFO/a/a.xml does not exist, and there is no a.data beside it "
                          "that could stand in; Product.xml:1 lists \"a\"; there is A.xml, with "
                          "other letter case; the product cannot be read",
                          "bin/META_INFO/b/b.xml does not exist, and there is no b.data beside it "
                          "that could stand in; Product.xml:1 lists \"b\"; there is "
                          "bin/META_INFO/B/b.xml, with other letter case; the product cannot be "
                          "read"));
}

}  // namespace
