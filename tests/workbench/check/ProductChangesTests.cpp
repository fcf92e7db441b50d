#include "workbench/check/ProductChanges.h"

#include <gtest/gtest.h>

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

std::string Changes(const CheckedProduct& before, const CheckedProduct& after) {
  ProductChanges changes = CompareProducts(before, after);
  changes.folder = "/srv/old/";
  return ChangesText(changes);
}

TEST(ProductChanges, AreNoneBetweenEqualProducts) {
  CheckedProduct product;
  product.model.ServerPluginDescriptions = {Plugin("a", "1.0")};
  Finish(product, "2.7.0");
  EXPECT_EQ(
      "From /srv/old/ (NVX 2.7.0) to NVX 2.7.0:\n"
      "  no plugin, no order and no finding changes\n",
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
      "  lower    plugin a 1.10 to 1.9\n"
      "  changed  plugin b 1.0 to 1.1 of the addon Parking\n"
      "  gone     plugin gone 1.0\n"
      "  new      driver new.driver 3\n"
      "  new      program new.exe 3\\x1b\n"
      "  changed  sub platform sub 1 to 2\n",
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
      "  new      plugin new 1\n"
      "  gone     plugin old 1\n"
      "  order    a no longer waits for b\n"
      "  order    a now waits for c\n",
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
  ASSERT_TRUE(after.IsSlowForFrame());
  EXPECT_EQ(
      "From /srv/old/ (NVX 2.7.0) to NVX 2.7.0:\n"
      "  what the frame makes of the new product is not known: one of its files has more than "
      "10000 elements\n",
      Changes(before, after));
}

TEST(ProductChanges, NameMendedFindings) {
  ProductChanges changes;
  changes.folder = "old/";
  changes.productBefore = changes.productAfter = "NVX 1";
  changes.mended = {
      {{"TEV301", "a", "b"}, 1}, {{"TEV101", "", "Product.xml"}, 1}, {{"TEV204", "a", "a"}, 1}};
  EXPECT_EQ(
      "From old/ (NVX 1) to NVX 1:\n"
      "  mended   TEV101 Product.xml\n"
      "  mended   TEV204 a\n"
      "  mended   TEV301 a b\n",
      ChangesText(changes));
}

}  // namespace
