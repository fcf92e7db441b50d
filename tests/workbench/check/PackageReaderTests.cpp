#include "workbench/check/PackageReader.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <string>

#include "host/PluginHeads.h"
#include "tests/support/TemporaryFolder.h"
#include "workbench/check/ProductReader.h"

namespace fs = std::filesystem;

namespace {

/// A product that consists of InstalledProducts.xml and packages.
class Packages : public testing::Test {
 protected:
  void Write(const std::string& name, const std::string& text) {
    const fs::path file = m_folder.Path() / name;
    fs::create_directories(file.parent_path());
    std::ofstream(file, std::ios::binary) << text;
  }

  void WriteInstalled(const std::string& content) {
    Write("bin/TevAddons/InstalledProducts.xml",
          "<InstalledProductsDescription>" + content + "</InstalledProductsDescription>");
  }

  /// "WHAT OWNER NAME -> FILE MD5", a line each.
  std::string Read() {
    const LocalNames names = SystemNames();
    const auto place = FindProduct(m_folder.Path() / "bin", names);
    const auto product = ReadCheckedProduct(*place, names, 1);
    ReadPackages(*product, *place, names);
    std::string text;
    for (const NamedPackage& package : product->packages) {
      text += package.what + " " + package.owner + " " + package.name + " -> " + package.file +
              " " + package.md5 + "\n";
    }
    return text;
  }

  const TemporaryFolder m_folder;
};

TEST_F(Packages, HaveTheMd5OfTheirBytes) {
  Write("empty", "");
  Write("one", "a");
  Write("before", std::string(55, 'a'));  // the padding fits into the last block
  Write("behind", std::string(56, 'a'));  // and does not
  Write("block", std::string(64, 'a'));
  Write("large", std::string(1000000, 'a'));
  std::string tools;
  for (const char* name : {"empty", "one", "before", "behind", "block", "large"}) {
    tools += "<Tool ID='t' ClientPackageName='" + std::string(name) + "' ClientPackageMD5='x'/>";
  }
  WriteInstalled("<Tools>" + tools + "</Tools>");
  EXPECT_EQ(
      "ClientPackageName t empty -> empty d41d8cd98f00b204e9800998ecf8427e\n"
      "ClientPackageName t one -> one 0cc175b9c0f1b6a831c399e269772661\n"
      "ClientPackageName t before -> before ef1772b6dff9a122358552954ad0df65\n"
      "ClientPackageName t behind -> behind 3b0c8ac703f828b04c6c197006d17218\n"
      "ClientPackageName t block -> block 014842d480b571495a4a0363793f7367\n"
      "ClientPackageName t large -> large 7707d6ae4e027c70eea2a935c2296f21\n",
      Read());
}

TEST_F(Packages, AreLookedForInTheFolderOfTheirAddonFirst) {
  for (const char* folder : {"bin/TevAddons/A/", "bin/TevAddons/", "bin/", ""}) {
    Write(std::string(folder) + "p", folder);
  }
  Write("bin/q", "");
  Write("r/r", "");
  WriteInstalled(
      "<ClientPackage><Path>p</Path></ClientPackage>"
      "<OfflineInstallPackage><Path>r</Path></OfflineInstallPackage>"
      "<Addons><Addon ID='A' ClientPackageName='p' AddonPackageName='q'/>"
      "<Addon ID='B' AddonPackageName='r\\r'/></Addons>");
  EXPECT_EQ(
      "<Path> of <ClientPackage>  p -> bin/TevAddons/p \n"
      "<Path> of <OfflineInstallPackage>  r -> r \n"
      "ClientPackageName A p -> bin/TevAddons/A/p \n"
      "AddonPackageName A q -> bin/q \n"
      "AddonPackageName B r\\r -> r/r \n",
      Read());
}

TEST_F(Packages, AreNotLookedForOutsideTheProduct) {
  Write("bin/p", "a");
  const std::string absolute = (m_folder.Path() / "bin" / "p").generic_string();
  WriteInstalled("<Addons><Addon ID='A' ClientPackageName='" + absolute +
                 "'/><Addon ID='A' ClientPackageName='x/../p'/>"
                 "<Addon ID='A' ClientPackageName='..\\p'/>"
                 "<Addon ID='..' ClientPackageName='p'/></Addons>");
  EXPECT_EQ("ClientPackageName A " + absolute +
                " ->  \n"
                "ClientPackageName A x/../p ->  \n"
                "ClientPackageName A ..\\p ->  \n"
                "ClientPackageName .. p -> bin/p \n",
            Read());
}

TEST_F(Packages, ThatAreFoldersHaveNoMd5) {
  Write("bin/p/file", "a");
  WriteInstalled("<ClientPackage><Path>p</Path><MD5>x</MD5></ClientPackage>");
  EXPECT_EQ("<Path> of <ClientPackage>  p -> bin/p \n", Read());
}

}  // namespace
