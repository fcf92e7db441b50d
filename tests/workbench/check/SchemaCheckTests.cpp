// The schemas as the workbench uses them, and the table of what the frame reads.

#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <thread>
#include <vector>

#include "workbench/check/ModelGrammar.h"
#include "workbench/check/SchemaCheck.h"
#include "workbench/product/XmlThreads.h"

namespace fs = std::filesystem;

namespace {

constexpr const char* kSchemaNames[] = {
    "Product",           "DeviceDrivers", "Portal",       "Platform",         "Plugin",
    "InstalledProducts", "ProductAddons", "ProductTools", "AddonDescription", "ToolDescription"};

std::string Read(const fs::path& path) {
  std::ifstream file(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
}

/// The kind of the file in tests/schemas, "Plugin_full.xml".
FileKind KindOf(const fs::path& path) {
  const std::string name = path.filename().string();
  const auto* found =
      std::find(std::begin(kSchemaNames), std::end(kSchemaNames), name.substr(0, name.find('_')));
  EXPECT_NE(std::end(kSchemaNames), found) << name;
  return static_cast<FileKind>(found - std::begin(kSchemaNames));
}

/// A line for each error: "3:12 message".
std::string Errors(FileKind kind, const std::string& text) {
  std::string lines;
  for (const SchemaError& error : ValidateAgainstSchema(kind, ParseXmlTree(text))) {
    lines += std::to_string(error.place.line) + ":" + std::to_string(error.place.column) + " " +
             error.message + "\n";
  }
  return lines;
}

std::string ErrorsIn(const std::string& inner) {
  return Errors(FileKind::kProduct,
                "<ProductDescription><Product>NVX</Product><Version>2.6.1</Version>\n" + inner +
                    "</ProductDescription>");
}

std::vector<fs::path> Files(const char* folder) {
  std::vector<fs::path> files;
  for (const auto& entry : fs::directory_iterator(fs::path(TEV_SCHEMA_TESTS) / folder)) {
    files.push_back(entry.path());
  }
  std::sort(files.begin(), files.end());
  return files;
}

TEST(SchemaCheck, TakesEveryGoodFile) {
  for (const fs::path& file : Files("good")) {
    EXPECT_EQ("", Errors(KindOf(file), Read(file))) << file;
  }
}

TEST(SchemaCheck, RefusesEveryBadFileInPlainWords) {
  for (const fs::path& file : Files("bad")) {
    const std::string errors = Errors(KindOf(file), Read(file));
    EXPECT_NE("", errors) << file;
    for (const char* jargon : {"facet", "{", "xs:", "atomic", "The value", "Element '"}) {
      EXPECT_EQ(std::string::npos, errors.find(jargon)) << errors;
    }
  }
}

TEST(SchemaCheck, SaysWhichElementsAreAllowed) {
  EXPECT_EQ(
      "2:1 <Plugns> is not allowed in <ProductDescription>; allowed: <Product>, <ProductLogo>, "
      "<Version>, <EditionConfig>, <FnoodPath>, <Platform> and 3 more\n",
      ErrorsIn("<Plugns/>"));
}

TEST(SchemaCheck, SaysWhichAttributesAreAllowed) {
  EXPECT_EQ(
      "2:25 the attribute LazyStart of <Plugin> is not allowed; allowed: ID, Version, Lazystart\n",
      ErrorsIn("<Plugins><Plugin ID='a' LazyStart='true'/></Plugins>"));
}

TEST(SchemaCheck, SaysWhichValuesAreAllowed) {
  EXPECT_EQ("3:3 the attribute Lazystart of <Plugin> is \"True\"; allowed: \"true\" or \"false\"\n",
            ErrorsIn("<Plugins><Plugin ID='a'\n  Lazystart='True'/></Plugins>"));
}

TEST(SchemaCheck, ShowsALongValueCutAndOnOneLine) {
  const std::string value = "a\n\n" + std::string(1000000, 'b') + "\n";
  EXPECT_EQ("2:18 the attribute ID of <Plugin> is \"a " + std::string(55, 'b') +
                "...\"; allowed: a text without blanks at its ends\n",
            ErrorsIn("<Plugins><Plugin ID='" + value + "'/></Plugins>"));
}

TEST(SchemaCheck, SaysEveryMissingAttributeOnce) {
  EXPECT_EQ("1:28 the attributes Category and ID are missing in <Plugin>\n",
            Errors(FileKind::kAddon,
                   "<AddonDescription><Plugins><Plugin/></Plugins><ID>a</ID>"
                   "</AddonDescription>"));
}

TEST(SchemaCheck, SaysOfAnAttributeWithAPrefixOnlyThatItHasOne) {
  EXPECT_EQ(
      "2:34 the attribute ID of <Plugin> in the namespace \"urn:x\" is not allowed; allowed: ID, "
      "Version, Lazystart\n",
      ErrorsIn("<Plugins><Plugin xmlns:x='urn:x' x:ID='a'/></Plugins>"));
}

TEST(SchemaCheck, GoesOnBehindAnUnexpectedElement) {
  EXPECT_EQ(
      "2:1 a second <Version> in <ProductDescription>\n"
      "4:1 the attribute ID is missing in <Plugin>\n",
      ErrorsIn("<Version/>\n<Plugins>\n<Plugin/></Plugins>"));
}

TEST(SchemaCheck, ReplacesEntitiesAndReadsNoFileForThem) {
  EXPECT_EQ("", Errors(FileKind::kProduct,
                       "<!DOCTYPE ProductDescription [<!ENTITY v '2.6'>"
                       "<!ENTITY file SYSTEM '/etc/passwd'>]>"
                       "<ProductDescription><Product>NVX</Product><Version>&v;.1</Version>"
                       "<FnoodPath>&file;</FnoodPath></ProductDescription>"));
}

TEST(SchemaCheck, LoadsNoSchemaThatTheFileNames) {
  EXPECT_EQ("", Errors(FileKind::kPlatform,
                       "<Platform xmlns:xsi='http://www.w3.org/2001/XMLSchema-instance' "
                       "xsi:noNamespaceSchemaLocation='absent.xsd'/>"));
}

TEST(SchemaCheck, SaysNothingOfATextThatIsNotWellFormed) {
  EXPECT_EQ("", Errors(FileKind::kPlatform, "<Platform>"));
}

TEST(SchemaCheck, PrintsNothing) {
  testing::internal::CaptureStderr();
  EXPECT_NE("", ErrorsIn("<Plugns/>"));
  EXPECT_EQ("", testing::internal::GetCapturedStderr());
}

TEST(SchemaCheck, IsUsedOnSeveralThreads) {
  PrepareXmlForThreads();
  std::vector<std::thread> threads;
  std::vector<std::string> errors(4);
  for (std::string& mine : errors) {
    threads.emplace_back([&mine] { mine = ErrorsIn("<Version/>"); });
  }
  for (std::thread& thread : threads) thread.join();
  EXPECT_EQ(std::vector<std::string>(4, "2:1 a second <Version> in <ProductDescription>\n"),
            errors);
}

std::string Plugins(int count, const char* attributes) {
  std::string text = "<Plugins>\n";
  for (int i = 0; i < count; ++i) {
    text += "<Plugin ID='p" + std::to_string(i) + ".server'" + attributes + "/>\n";
  }
  return text + "</Plugins>";
}

// The line in an element of libxml2 has 16 bits.
TEST(SchemaCheck, KnowsLinesBeyond65535) {
  EXPECT_EQ("70003:9 the attribute ID of <Plugin> is empty; allowed: a text that is not empty\n",
            ErrorsIn("<Plugins>\n" + std::string(70000, '\n') + "<Plugin ID=''/></Plugins>"));
}

TEST(SchemaCheck, ReportsEachOfTwentyThousandWrongEntries) {
  const XmlTree tree =
      ParseXmlTree("<ProductDescription><Product>NVX</Product><Version>2.6.1</Version>" +
                   Plugins(20000, " Version='2.6.1' Lazystart='yes'") + "</ProductDescription>");
  EXPECT_EQ(20000U, ValidateAgainstSchema(FileKind::kProduct, tree).size());
}

TEST(ModelGrammar, FollowsAnElementThatMayStandInItself) {
  const ElementSpec* item = SpecAt(FileKind::kPortal, "FullSceneMenuList/MenuItem/MenuItem");
  ASSERT_NE(nullptr, item);
  EXPECT_EQ(item, SpecAt(FileKind::kPortal, "FullSceneMenuList/MenuItem/MenuItem/MenuItem"));
  EXPECT_EQ(nullptr, SpecAt(FileKind::kPortal, "PortalModeList/PortalMode/MenuItem"));
}

TEST(ModelGrammar, FindsWhereAnElementMayStand) {
  EXPECT_EQ((std::vector<std::string>{
                "FullNavigationMenuList/MenuItem", "FullNavigationMenuList/MenuItem/MenuItem",
                "FullSceneMenuList/MenuItem", "FullSceneMenuList/MenuItem/MenuItem",
                "PortalModeList/PortalMode/SceneModeList/SceneMode/"
                "SceneMenuList/MenuItem"}),
            PathsOf(FileKind::kPortal, "MenuItem"));
  EXPECT_EQ((std::vector<std::string>{"DependencyList/Plugin"}),
            PathsOf(FileKind::kPlugin, "Plugin"));
}

TEST(ModelGrammar, KnowsEachRoot) {
  for (int kind = 0; kind <= static_cast<int>(FileKind::kTool); ++kind) {
    EXPECT_STREQ(RootName(static_cast<FileKind>(kind)), Grammar(static_cast<FileKind>(kind)).name);
  }
}

}  // namespace
