#include "host/PluginHeads.h"

#include <gtest/gtest.h>

#include "reference/os/LocalText.h"
#include "tests/support/TemporaryFolder.h"

namespace {

/// A line "kind id version [dependencies] library (size)" for each plugin.
std::string Shown(const std::vector<PluginHead>& heads) {
  std::string text;
  for (const PluginHead& head : heads) {
    text += head.kind + " " + head.id + " " + head.version + " [";
    for (const std::string& other : head.dependsOn) text += other + ",";
    text += "] " + head.library + " (" + std::to_string(head.librarySize) + ")\n";
  }
  return text;
}

PluginDescription Description(const std::string& id, const std::string& path) {
  PluginDescription plugin;
  plugin.ID = id;
  plugin.Version = "1.0";
  plugin.Path = path;
  return plugin;
}

PluginDependency On(const std::string& id) {
  PluginDependency dependency;
  dependency.ID = id;
  return dependency;
}

TEST(PluginHeads, AreServersPlatformsExecutablesAndDriversWithTheirFiles) {
  ProductModel model;
  model.DriverPluginDescriptions = {Description("drive", "drivers/")};
  model.ExePluginDescriptions = {Description("tool", "tools/tool.exe")};
  model.SubPlatforms = {{"sub", "3.1"}};
  model.ServerPluginDescriptions = {Description("b", "there/"), Description("a", "here/")};
  EXPECT_EQ(
      "server b 1.0 [] there/b.dll (-1)\n"
      "server a 1.0 [] here/a.dll (-1)\n"
      "platform sub 3.1 [] bin/sub.dll (-1)\n"
      "executable tool 1.0 [] tools/tool.exe (-1)\n"
      "driver drive 1.0 [] drivers/drive.dll (-1)\n",
      Shown(PluginHeads(model, "bin/")));
}

TEST(PluginHeads, HaveTheDependenciesThatOrderTheStart) {
  ProductModel model;
  model.ServerPluginDescriptions = {Description("b", ""), Description("a", "")};
  PluginDependency onPlatform = On("sub");
  onPlatform.Category = DependencyCategory::kPlatform;
  model.ServerPluginDescriptions[0].Dependencies = {On("a"), onPlatform, On("nobody")};
  model.SubPlatforms = {{"sub", "3.1"}};
  EXPECT_EQ(
      "server b 1.0 [a,] b.dll (-1)\n"
      "server a 1.0 [] a.dll (-1)\n"
      "platform sub 3.1 [] sub.dll (-1)\n",
      Shown(PluginHeads(model, "")));
}

TEST(PluginHeads, HaveEachPluginOfTheStartOnce) {
  ProductModel model;
  model.ServerPluginDescriptions = {Description("a", "first/"), Description("a", "second/")};
  model.SubPlatforms = {{"a", "3.1"}};
  EXPECT_EQ("server a 1.0 [] first/a.dll (-1)\n", Shown(PluginHeads(model, "")));
}

TEST(PluginHeads, HaveTheLibrarysSize) {
  // A letter in the local code page, in which the frame joins names.
  const std::string id = LocalFromWide(L"caf\u00e9");
  const TemporaryFolder folder;
  const std::string bin = LocalFromPath(folder.Path()) + "/";
  std::ofstream(PathFromLocal(bin + id + ".dll"), std::ios::binary) << "twelve bytes";
  ProductModel model;
  model.ServerPluginDescriptions = {Description(id, bin)};
  ASSERT_EQ(1U, PluginHeads(model, bin).size());
  EXPECT_EQ(12, PluginHeads(model, bin)[0].librarySize);
}

}  // namespace
