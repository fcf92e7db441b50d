#include "reference/os/FileStatus.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

#include "tests/support/TemporaryFolder.h"

namespace fs = std::filesystem;

namespace {

class FileStatusTest : public testing::Test {
 protected:
  const TemporaryFolder folder;
};

TEST_F(FileStatusTest, KindsAreThoseBehindLinks) {
  using Kind = FileStatus::Kind;
  folder.Write("file", "");
  fs::create_symlink("file", folder.Path() / "link");
  fs::create_symlink("absent", folder.Path() / "broken");
  ASSERT_EQ(0, mkfifo((folder / "pipe").c_str(), 0600));
  EXPECT_EQ(Kind::kFile, StatusOfFile(folder / "file").kind);
  EXPECT_EQ(Kind::kFile, StatusOfFile(folder / "link").kind);
  EXPECT_EQ(Kind::kNone, StatusOfFile(folder / "broken").kind);
  EXPECT_EQ(Kind::kNone, StatusOfFile(folder / "absent").kind);
  EXPECT_EQ(Kind::kFolder, StatusOfFile(folder.Path()).kind);
  EXPECT_EQ(Kind::kOther, StatusOfFile(folder / "pipe").kind);
}

TEST_F(FileStatusTest, AllNamesOfAFileHaveItsIdentity) {
  folder.Write("file", "");
  folder.Write("other", "");
  fs::create_symlink("file", folder.Path() / "link");
  fs::create_hard_link(folder / "file", folder / "second");
  const std::string identity = StatusOfFile(folder / "file").identity;
  EXPECT_EQ(identity, StatusOfFile(folder / "link").identity);
  EXPECT_EQ(identity, StatusOfFile(folder / "second").identity);
  EXPECT_NE(identity, StatusOfFile(folder / "other").identity);
}

TEST_F(FileStatusTest, PermissionsAreThoseOfTheFile) {
  const std::string file = folder.Write("file", "");
  ASSERT_EQ(0, chmod(file.c_str(), 0664));
  EXPECT_FALSE(StatusOfFile(file).isWritableByAll);
  EXPECT_FALSE(StatusOfFile(file).isExecutable);
  ASSERT_EQ(0, chmod(file.c_str(), 0772));
  EXPECT_TRUE(StatusOfFile(file).isWritableByAll);
  EXPECT_TRUE(StatusOfFile(file).isExecutable);
}

TEST_F(FileStatusTest, AFolderIsWritableByAllUnlessEachMayReplaceOnlyItsOwnFiles) {
  ASSERT_EQ(0, chmod(folder.Path().c_str(), 0777));
  EXPECT_TRUE(StatusOfFile(folder.Path()).isWritableByAll);
  ASSERT_EQ(0, chmod(folder.Path().c_str(), 01777));
  EXPECT_FALSE(StatusOfFile(folder.Path()).isWritableByAll);
  ASSERT_EQ(0, chmod(folder.Path().c_str(), 0775));
  EXPECT_FALSE(StatusOfFile(folder.Path()).isWritableByAll);
}

}  // namespace
