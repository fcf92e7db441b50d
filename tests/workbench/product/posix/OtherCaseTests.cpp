#include <gtest/gtest.h>

#include "tests/support/TemporaryFolder.h"
#include "workbench/product/OtherCase.h"

namespace fs = std::filesystem;

namespace {

class OtherCase : public testing::Test {
 protected:
  /// The file found for `wanted`, or "none"; both relative to the folder.
  std::string Found(const std::string& wanted) const {
    const auto found = FileWithOtherCase(folder.Path() / wanted);
    return found ? found->lexically_relative(folder.Path()).generic_string() : "none";
  }

  void Put(const std::string& name) const {
    fs::create_directories((folder.Path() / name).parent_path());
    folder.Write(name, "x");
  }

  TemporaryFolder folder;
};

TEST_F(OtherCase, IsFoundInAnyPart) {
  Put("META_INFO/a.Server/A.server.xml");
  EXPECT_EQ("META_INFO/a.Server/A.server.xml", Found("Meta_Info/a.server/a.server.xml"));
  EXPECT_EQ("META_INFO/a.Server/A.server.xml", Found("META_INFO/a.server/a.server.xml"));
  EXPECT_EQ("META_INFO/a.Server/A.server.xml", Found("META_INFO/a.Server/a.server.xml"));
}

TEST_F(OtherCase, IsNotFoundForAnotherName) {
  Put("META_INFO/a.server.xml");
  EXPECT_EQ("none", Found("META_INFO/b.server.xml"));
  EXPECT_EQ("none", Found("META_INFO/a.server.xm"));
  EXPECT_EQ("none", Found("META_INFO/a.server.xml/x"));
  EXPECT_EQ("none", Found("x/a.server.xml"));
}

TEST_F(OtherCase, IsNoneForFileThatIsThere) {
  Put("a.xml");
  EXPECT_EQ("none", Found("a.xml"));
  EXPECT_EQ("none", Found(""));
}

TEST_F(OtherCase, IsNoneForNonAsciiLetters) {
  Put("\xC3\xA4.xml");
  EXPECT_EQ("none", Found("\xC3\x84.xml"));
}

TEST_F(OtherCase, IsSearchedInEveryFolderOfThatName) {
  Put("AB/other.xml");
  Put("aB/C.xml");
  EXPECT_EQ("aB/C.xml", Found("ab/c.xml"));
}

}  // namespace
