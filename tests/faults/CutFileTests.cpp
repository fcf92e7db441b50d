// Model files that are missing, empty, a folder, or truncated at any byte. In each case the
// initialisation returns a result, and it fails when a required file cannot be read.

#include <gtest/gtest.h>

#include <set>

#include "src/PluginFrame/PluginManager.h"
#include "tests/faults/SmallProduct.h"
#include "tests/load/LibraryDoubles.h"

namespace {

class CutFile : public testing::TestWithParam<std::string> {
 protected:
  CutFile() {
    WriteSmallProduct(tree);
    doubles.exePath = tree.ExePath();
  }

  bool ComesUp() {
    doubles.productModel = ProductModel();
    return PluginFrame::CPluginManager().Init();
  }

  /// Whether the product does not require the file that is tested.
  static bool IsOptional() {
    const std::set<std::string> optional = {"bin/TevAddons/InstalledProducts.xml",
                                            "bin/TevAddons/A/A.xml", "bin/TevAddons/T/T.xml",
                                            "ProductAddons.xml", "ProductTools.xml"};
    return optional.count(GetParam()) != 0;
  }

  ProductTree tree;
  LibraryDoubles doubles{1};
};

TEST_P(CutFile, MissingKeepsOnlyAProductDownThatNeedsIt) {
  tree.Remove(GetParam());
  EXPECT_EQ(IsOptional(), ComesUp());
}

TEST_P(CutFile, EmptyIsAsMissing) {
  tree.Write(GetParam(), "");
  EXPECT_EQ(IsOptional(), ComesUp());
}

TEST_P(CutFile, FolderInItsPlaceIsAsMissing) {
  tree.Remove(GetParam());
  tree.Write(GetParam() + "/file", "content");
  EXPECT_EQ(IsOptional(), ComesUp());
}

TEST_P(CutFile, CutAtAnyByteReadsAsADocumentThatHoldsNothing) {
  const std::string whole = SmallProduct().at(GetParam());
  const std::size_t end = whole.find_last_of('>');
  for (std::size_t size = 1; size <= end; ++size) {
    tree.Write(GetParam(), whole.substr(0, size));
    ASSERT_TRUE(ComesUp()) << size;
    if (GetParam() == "Product.xml") {
      EXPECT_EQ("", doubles.productModel.Version) << size;
    }
  }
  tree.Write(GetParam(), whole);
  ASSERT_TRUE(ComesUp());
  EXPECT_EQ("2.6.0.1", doubles.productModel.Version);
}

std::vector<std::string> Files() {
  std::vector<std::string> files;
  for (const auto& file : SmallProduct()) files.push_back(file.first);
  return files;
}

std::string NameOf(const testing::TestParamInfo<std::string>& file) {
  const std::string name = file.param.substr(file.param.find_last_of('/') + 1);
  std::string letters;
  for (const char c : name.substr(0, name.size() - 4)) letters += c == '.' ? '_' : c;
  return letters;
}

INSTANTIATE_TEST_SUITE_P(Of, CutFile, testing::ValuesIn(Files()), &NameOf);

}  // namespace
