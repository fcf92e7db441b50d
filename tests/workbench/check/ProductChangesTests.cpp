#include "workbench/check/ProductChanges.h"

#include <gtest/gtest.h>

#include <set>

#include "workbench/product/StartGraph.h"

namespace {

PluginDescription Plugin(const std::string& id, const std::string& version,
                         const std::vector<std::string>& waitsFor = {}) {
  PluginDescription plugin;
  plugin.ID = id;
  plugin.Version = version;
  for (const std::string& other : waitsFor) plugin.Dependencies.emplace_back().ID = other;
  return plugin;
}

void Finish(CheckedProduct& product, const std::string& version) {
  product.fromFrame = true;
  product.model.Product = "NVX";
  product.model.Version = version;
  product.graph = MakeStartGraph(product.model);
}

/// `otherFiles`: those whose content differs.
std::string Changes(const CheckedProduct& before, const CheckedProduct& after,
                    const std::set<std::string>& otherFiles = {}) {
  ProductChanges changes = CompareProducts(
      before, after, [&](const std::string& name) { return otherFiles.count(name) != 0; });
  changes.folder = "/srv/old/";
  return ChangesText(changes);
}

TEST(ProductChanges, AreNoneBetweenEqualProducts) {
  CheckedProduct product;
  product.model.ServerPluginDescriptions = {Plugin("a", "1.0")};
  Finish(product, "2.7.0");
  EXPECT_EQ(
      "From /srv/old/ (NVX 2.7.0) to NVX 2.7.0:\n"
      "  no addon, no plugin, no library and no order changes\n",
      Changes(product, product));
}

TEST(ProductChanges, AreTheVersionsThatWinAndWhatIsNewOrGone) {
  CheckedProduct before;
  before.model.ServerPluginDescriptions = {Plugin("a", "1.10"), Plugin("b", "1.0"),
                                           Plugin("c", "1.0"), Plugin("gone", "1.0")};
  before.model.SubPlatforms = {{"sub", "1"}};
  Finish(before, "2.7.0");
  CheckedProduct after;
  PluginDescription ofAddon = Plugin("b", "1.1");
  ofAddon.OwnerAddon = "Parking";
  after.model.ServerPluginDescriptions = {Plugin("a", "1.9"), ofAddon, Plugin("c", "1.0")};
  after.model.SubPlatforms = {{"sub", "2"}};
  after.model.ExePluginDescriptions = {Plugin("new.exe", "3\x1b")};
  after.model.DriverPluginDescriptions = {Plugin("new.driver", "3")};
  Finish(after, "2.8.0");
  EXPECT_EQ(
      "From /srv/old/ (NVX 2.7.0) to NVX 2.8.0:\n"
      "  lower     plugin a 1.10 to 1.9\n"
      "  changed   plugin b 1.0 to 1.1 of the addon Parking\n"
      "  gone      plugin gone 1.0\n"
      "  new       driver new.driver 3\n"
      "  new       program new.exe 3\\x1b\n"
      "  changed   sub platform sub 1 to 2\n",
      Changes(before, after));
}

TEST(ProductChanges, AreWaitsBetweenPluginsOfBoth) {
  CheckedProduct before;
  before.model.ServerPluginDescriptions = {Plugin("a", "1", {"b", "old"}), Plugin("b", "1"),
                                           Plugin("c", "1", {"b"}), Plugin("old", "1")};
  Finish(before, "2.7.0");
  CheckedProduct after;
  after.model.ServerPluginDescriptions = {Plugin("a", "1", {"c", "new"}), Plugin("b", "1"),
                                          Plugin("c", "1", {"b"}), Plugin("new", "1", {"a"})};
  Finish(after, "2.7.0");
  EXPECT_EQ(
      "From /srv/old/ (NVX 2.7.0) to NVX 2.7.0:\n"
      "  new       plugin new 1\n"
      "  gone      plugin old 1\n"
      "  order     a no longer waits for b\n"
      "  order     a now waits for c\n",
      Changes(before, after));
}

TEST(ProductChanges, AreNotListedWhenTheFrameRefusesTheNewProduct) {
  CheckedProduct before;
  before.model.ServerPluginDescriptions = {Plugin("a", "1", {"b"}), Plugin("b", "1")};
  Finish(before, "2.7.0");
  CheckedProduct after;
  after.model.ServerPluginDescriptions = {Plugin("a", "2"), Plugin("b", "1")};
  Finish(after, "2.8.0");
  after.fromFrame = false;
  EXPECT_EQ(
      "From /srv/old/ (NVX 2.7.0) to NVX 2.8.0:\n"
      "  the frame refuses the new product: nothing starts\n",
      Changes(before, after));
  EXPECT_EQ(
      "From /srv/old/ (NVX 2.8.0) to NVX 2.7.0:\n"
      "  the frame refuses the old product: nothing of it starts, so there is nothing to compare\n",
      Changes(after, before));
  EXPECT_EQ(
      "From /srv/old/ (NVX 2.8.0) to NVX 2.8.0:\n"
      "  the frame refuses the old product: nothing of it starts, so there is nothing to compare\n"
      "  the frame refuses the new product: nothing starts\n",
      Changes(after, after));
}

TEST(ProductChanges, AreNotListedWhenTheFrameIsNotAsked) {
  CheckedProduct before;
  before.model.ServerPluginDescriptions = {Plugin("a", "1")};
  Finish(before, "2.7.0");
  CheckedProduct after;
  XmlTree& tree = after.files.emplace_back().tree;
  tree.wellFormed = true;
  tree.root.name = RootName(FileKind::kProduct);
  tree.root.children.resize(kMostElementsForFrame + 1);
  Finish(after, "2.7.0");
  after.fromFrame = false;
  ASSERT_TRUE(after.HoldsUpFrame());
  EXPECT_EQ(
      "From /srv/old/ (NVX 2.7.0) to NVX 2.7.0:\n"
      "  what the frame makes of the new product is not known: one of its files is a "
      "pipe, or has more than "
      "10000 elements\n",
      Changes(before, after));
}

TEST(ProductChanges, AreFilesOfOtherContentUnderTheSameVersion) {
  CheckedProduct product;
  product.model.ServerPluginDescriptions = {Plugin("a", "1.0"), Plugin("b", "1.0"),
                                            Plugin("none", "")};
  product.model.ExePluginDescriptions = {Plugin("exe", "2")};
  product.model.DriverPluginDescriptions = {Plugin("driver", "3")};
  product.model.SubPlatforms = {{"sub", "4"}, {"", "4"}};
  Finish(product, "2.7.0");
  EXPECT_EQ(
      "From /srv/old/ (NVX 2.7.0) to NVX 2.7.0:\n"
      "  changed   plugin a 1.0: its library has other content, and the same version\n"
      "  changed   driver driver 3: its library has other content, and the same version\n"
      "  changed   program exe 2: its program has other content, and the same version\n"
      "  changed   plugin none (no version): its library has other content, and the same version\n"
      "  changed   sub platform sub 4: its library has other content, and the same version\n",
      Changes(product, product,
              {"a.dll", "driver.dll", "exe.exe", "none.dll", "sub.dll", ".dll", "b.exe"}));
}

TEST(ProductChanges, AreOneLineForAnotherVersionWithAnotherFile) {
  CheckedProduct before;
  before.model.ServerPluginDescriptions = {Plugin("a", "1.0")};
  Finish(before, "2.7.0");
  CheckedProduct after;
  after.model.ServerPluginDescriptions = {Plugin("a", "1.1")};
  Finish(after, "2.7.0");
  EXPECT_EQ(
      "From /srv/old/ (NVX 2.7.0) to NVX 2.7.0:\n"
      "  changed   plugin a 1.0 to 1.1\n",
      Changes(before, after, {"a.dll"}));
}

TEST(ProductChanges, OfAKindEndTheWaitsForWhatIsNoPluginAnyMore) {
  CheckedProduct before;
  before.model.ServerPluginDescriptions = {Plugin("a", "2", {"c"}), Plugin("b", "2"),
                                           Plugin("c", "1", {"a", "b"})};
  Finish(before, "2.7.0");
  CheckedProduct after;
  after.model.ServerPluginDescriptions = {Plugin("c", "1", {"a", "b"})};
  after.model.ExePluginDescriptions = {Plugin("a", "2", {"c"})};
  after.model.DriverPluginDescriptions = {Plugin("b", "1")};
  Finish(after, "2.7.0");
  EXPECT_EQ(
      "From /srv/old/ (NVX 2.7.0) to NVX 2.7.0:\n"
      "  changed   a 2, from plugin to program\n"
      "  lower     b 2 to 1, from plugin to driver\n"
      "  order     c no longer waits for a\n"
      "  order     c no longer waits for b\n",
      Changes(before, after, {"a.dll", "a.exe"}));
  EXPECT_EQ(
      "From /srv/old/ (NVX 2.7.0) to NVX 2.7.0:\n"
      "  changed   a 2, from program to plugin\n"
      "  changed   b 1 to 2, from driver to plugin\n"
      "  order     c now waits for a\n"
      "  order     c now waits for b\n",
      Changes(after, before));
}

template <typename Model>
Model Installed(const std::string& id, const std::string& version) {
  Model model;
  model.ID = id;
  model.Version = version;
  model.Installed = model.InstalledCompatible = true;
  return model;
}

TEST(ProductChanges, AreInstalledAddonsAndTools) {
  CheckedProduct before;
  before.addonModels = {Installed<AddonModel>("A", "1.10"), Installed<AddonModel>("B", "1"),
                        Installed<AddonModel>("Same", "1"), Installed<AddonModel>("Gone", "1")};
  before.toolModels = {Installed<ToolModel>("T", "1")};
  Finish(before, "2.7.0");
  CheckedProduct after;
  after.addonModels = {Installed<AddonModel>("A", "1.9"), Installed<AddonModel>("B", "1"),
                       Installed<AddonModel>("Same", "1"), Installed<AddonModel>("New", "1"),
                       Installed<AddonModel>("Offered", "1")};
  after.addonModels[1].InstalledCompatible = false;
  after.addonModels[4].Installed = false;
  after.toolModels = {Installed<ToolModel>("T", "2"), Installed<ToolModel>("", "1")};
  Finish(after, "2.7.0");
  EXPECT_EQ(
      "From /srv/old/ (NVX 2.7.0) to NVX 2.7.0:\n"
      "  lower     addon A 1.10 to 1.9\n"
      "  changed   addon B 1 to 1 (incompatible)\n"
      "  gone      addon Gone 1\n"
      "  new       addon New 1\n"
      "  changed   tool T 1 to 2\n",
      Changes(before, after, {"Same.dll"}));
}

TEST(ProductChanges, WithoutAVersionAreNotTakenForNew) {
  CheckedProduct before;
  before.model.ServerPluginDescriptions = {Plugin("a", ""), Plugin("b", "1")};
  Finish(before, "2.7.0");
  CheckedProduct after;
  after.model.ServerPluginDescriptions = {Plugin("a", "1"), Plugin("b", "")};
  Finish(after, "2.7.0");
  EXPECT_EQ(
      "From /srv/old/ (NVX 2.7.0) to NVX 2.7.0:\n"
      "  changed   plugin a (no version) to 1\n"
      "  changed   plugin b 1 to (no version)\n",
      Changes(before, after));
}

TEST(ProductChanges, DoNotCallItMendedThatANoteOrAnAddonIsGone) {
  ProductChanges changes;
  changes.folder = "old/";
  changes.productBefore = changes.productAfter = "NVX 1";
  changes.addons = {{"Parking", "addon", "1", "", false, "", false}};
  changes.plugins = {{"g\n", "plugin", "1", "", false, "", false}};
  changes.mended = {{{"TEV220", "map.server", "Parking"}, 1},
                    {{"TEV301", "g\\x0a", "b"}, 1},
                    {{"TEV301", "h", "b"}, 1},
                    {{"TEV504", "Parking", ""}, 1}};
  EXPECT_EQ(
      "From old/ (NVX 1) to NVX 1:\n"
      "  gone      addon Parking 1\n"
      "  gone      plugin g\\x0a 1\n"
      "  no longer TEV220 map.server Parking\n"
      "  no longer TEV301 g\\x0a b\n"
      "  mended    TEV301 h b\n"
      "  no longer TEV504 Parking\n",
      ChangesText(changes));
}

TEST(ProductChanges, NameMendedFindings) {
  ProductChanges changes;
  changes.folder = "old/";
  changes.productBefore = changes.productAfter = "NVX 1";
  changes.mended = {
      {{"TEV301", "a", "b"}, 1}, {{"TEV101", "", "Product.xml"}, 1}, {{"TEV204", "a", "a"}, 1}};
  EXPECT_EQ(
      "From old/ (NVX 1) to NVX 1:\n"
      "  no addon, no plugin, no library and no order changes\n"
      "  mended    TEV101 Product.xml\n"
      "  mended    TEV204 a\n"
      "  mended    TEV301 a b\n",
      ChangesText(changes));
}

}  // namespace
