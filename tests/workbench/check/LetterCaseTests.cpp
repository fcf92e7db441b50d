// A product on a system that ignores letter case: descriptions are found under other names.

#include <gtest/gtest.h>

#include <string>

#include "workbench/check/Rule.h"

namespace {

/// A product that lists `id`, and whose META_INFO contains the folder and file `there`.
class ListedWithOtherCase {
 public:
  ListedWithOtherCase(const std::string& id, const std::string& there) {
    m_product.bin = "bin";
    Add(FileKind::kProduct, "Product.xml",
        "<ProductDescription><Plugins><Plugin ID='" + id + "'/></Plugins></ProductDescription>");
    Add(FileKind::kDrivers, "bin/META_INFO/DeviceDrivers.xml", "<DAMDrivers/>");
    Add(FileKind::kPlugin, "bin/META_INFO/" + id + "/" + id + ".xml",
        "<Plugin><Type>2</Type><ID>" + id + "</ID></Plugin>");
    m_product.names = {"bin/META_INFO/", "bin/META_INFO/" + there + "/",
                       "bin/META_INFO/" + there + "/" + there + ".xml"};
    Description description;
    description.file = &m_product.files.back();
    description.folder = id;
    description.type = 2;
    description.id = id;
    m_product.descriptions.push_back(description);
    PluginEntry entry;
    entry.file = &m_product.files.front();
    entry.node = Select(m_product.files.front().tree.root, "Plugins/Plugin").front();
    entry.id = id;
    entry.type = "server";
    entry.description = &m_product.descriptions.back();
    entry.descriptionFile = &m_product.files.back();
    m_product.entries.push_back(entry);
    m_product.descriptions.back().entries = {&m_product.entries.back()};
  }

  /// What the rule says of it, a line each.
  std::string Found(const char* rule) const {
    std::string text;
    for (const RuleFinding& finding : RunRules({FindRule(rule)}, m_product)) {
      text += finding.message + "\n";
    }
    return text;
  }

 private:
  void Add(FileKind kind, const std::string& name, const std::string& text) {
    CheckedFile file;
    file.kind = kind;
    file.name = name;
    file.readName = name;
    file.tree = ParseXmlTree(text);
    m_product.files.push_back(file);
  }

  CheckedProduct m_product;
};

TEST(LetterCase, ADescriptionFoundUnderAnotherNameIsReported) {
  const ListedWithOtherCase product("Alarm.server", "alarm.server");
  EXPECT_EQ(
      "the description of \"Alarm.server\" is bin/META_INFO/alarm.server/alarm.server.xml, with "
      "other letter case: the frame finds it on this system, but not where letter case counts\n",
      product.Found("TEV206"));
}

TEST(LetterCase, ADescriptionFoundUnderAnotherNameIsListed) {
  const ListedWithOtherCase product("Alarm.server", "alarm.server");
  EXPECT_EQ("", product.Found("TEV202"));
}

TEST(LetterCase, ADescriptionWithTheNameOfTheEntryIsNoFinding) {
  const ListedWithOtherCase product("alarm.server", "alarm.server");
  EXPECT_EQ("", product.Found("TEV206"));
}

}  // namespace
