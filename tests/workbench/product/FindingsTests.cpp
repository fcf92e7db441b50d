#include "tests/workbench/product/OnDisk.h"

using testing::ElementsAre;
using testing::IsEmpty;

namespace {

class BeforeStart : public ProductOnDisk {
 protected:
  /// Adds a plugin that depends on `others` to the model, and writes its description.
  void Depends(const std::string& id, const std::vector<std::string>& others) {
    PluginDescription plugin;
    plugin.ID = id;
    std::string list;
    for (const std::string& other : others) {
      PluginDependency dependency;
      dependency.ID = other;
      plugin.Dependencies.push_back(dependency);
      list += "\n<Plugin ID='" + other + "'/>";
    }
    model.ServerPluginDescriptions.push_back(plugin);
    entries += "<Plugin ID='" + id + "'/>";
    tree.Write("bin/META_INFO/" + id + "/" + id + ".xml",
               PluginXml(id, "<DependencyList>" + list + "</DependencyList>"));
  }

  std::vector<std::string> Found() {
    tree.Write("Product.xml", "<ProductDescription><Plugins>" + entries + "</Plugins>" +
                                  subPlatforms + "</ProductDescription>");
    return ShownFindings(FindingsBeforeStart(Bin(), model, names));
  }

  ProductModel model;
  std::string entries;
  std::string subPlatforms;
};

TEST_F(BeforeStart, ThereIsNothingToSayOfAnOrderlyProduct) {
  Depends("a", {"b"});
  Depends("b", {});
  EXPECT_THAT(Found(), IsEmpty());
}

TEST_F(BeforeStart, CycleIsSaidWithItsLinesAndWhoWaits) {
  Depends("w1", {"w2"});
  Depends("w2", {"x", "c"});
  Depends("a", {"x", "b"});
  Depends("b", {"c"});
  Depends("c", {"a"});
  Depends("x", {});
  EXPECT_THAT(Found(),
              ElementsAre("E a \xE2\x86\x92 b \xE2\x86\x92 c \xE2\x86\x92 a: these wait for each "
                          "other for ever (a depends on b: bin/META_INFO/a/a.xml:3; b depends on "
                          "c: bin/META_INFO/b/b.xml:2; c depends on a: bin/META_INFO/c/c.xml:2); "
                          "2 others wait behind them: w1 and w2"));
}

TEST_F(BeforeStart, SelfDependencyIsSaidAndAtMostFiveNamesOfWhoWaits) {
  Depends("a", {"a"});
  for (int i = 1; i <= 7; ++i) Depends("w" + std::to_string(i), {"a"});
  EXPECT_THAT(Found(), ElementsAre("E a \xE2\x86\x92 a: it waits for itself for ever (a depends on "
                                   "a: bin/META_INFO/a/a.xml:2); 7 others wait behind it: w1, w2, "
                                   "w3, w4, w5 and 2 more"));
}

TEST_F(BeforeStart, OneWhoWaitsIsOneOther) {
  Depends("a", {"a"});
  Depends("w", {"a"});
  EXPECT_THAT(Found(), ElementsAre("E a \xE2\x86\x92 a: it waits for itself for ever (a depends on "
                                   "a: bin/META_INFO/a/a.xml:2); 1 other waits behind it: w"));
}

TEST_F(BeforeStart, LongCycleIsShortened) {
  for (int i = 1; i <= 13; ++i) {
    Depends("p" + std::to_string(i), {"p" + std::to_string(i % 13 + 1)});
  }
  const std::vector<std::string> found = Found();
  ASSERT_EQ(1U, found.size());
  EXPECT_THAT(found[0], testing::StartsWith(
                            "E p1 \xE2\x86\x92 p2 \xE2\x86\x92 p3 \xE2\x86\x92 p4 \xE2\x86\x92 "
                            "p5 \xE2\x86\x92 p6 \xE2\x86\x92 p7 \xE2\x86\x92 p8 \xE2\x86\x92 "
                            "p9 \xE2\x86\x92 p10 \xE2\x86\x92 (3 more) \xE2\x86\x92 p1: "));
  EXPECT_THAT(found[0],
              testing::EndsWith("p10 depends on p11: bin/META_INFO/p10/p10.xml:2; and 3 more)"));
}

TEST_F(BeforeStart, LineIsThatOfTheDescriptionThatTheFrameKeeps) {
  Depends("a", {"a"});
  entries += "<Plugin ID='a2'/><Plugin ID='a3'/><Plugin ID='a4'/>";
  const std::string list =
      "<DependencyList><Plugin ID='a' DependentType='2'/>\n\n\n"
      "<Platform ID='a'/><Platform ID='a' Category='x'/></DependencyList>";
  tree.Write("bin/META_INFO/a2/a2.xml",
             "<Plugin><Type>2</Type><ID>a</ID><Version>2.0</Version>" + list + "</Plugin>");
  tree.Write("bin/META_INFO/a3/a3.xml",
             "<Plugin><Type>2</Type><ID>a</ID><Version>1.9</Version></Plugin>");
  tree.Write("bin/META_INFO/a4/a4.xml",
             "<Plugin><Type>1</Type><ID>a</ID><Version>3</Version></Plugin>");
  tree.Write("bin/META_INFO/DeviceDrivers.xml", "<DAMDrivers><Driver ID='a5'/></DAMDrivers>");
  tree.Write("bin/META_INFO/a5/a5.xml",
             "<Plugin><Type>2</Type><ID>a</ID><Version>3</Version></Plugin>");
  EXPECT_THAT(Found(), ElementsAre("E a \xE2\x86\x92 a: it waits for itself for ever (a depends on "
                                   "a: bin/META_INFO/a2/a2.xml:4)"));
}

TEST_F(BeforeStart, SubPlatformWithoutIDIsSaidWithItsLine) {
  model.SubPlatforms = {{"", ""}, {"sub", ""}};
  subPlatforms = "<SubPlatforms>\n<SubPlatform/>\n<SubPlatform ID='sub'/></SubPlatforms>";
  EXPECT_THAT(Found(), ElementsAre("E Product.xml:2: a <SubPlatform> without an ID: it has no "
                                   "library, and its stop is never counted, so that the stop never "
                                   "ends by itself"));
}

TEST_F(BeforeStart, SecondSectionOfSubPlatformsIsSaidOnce) {
  model.SubPlatforms = {{"a", ""}, {"b", ""}, {"", ""}, {"", ""}};
  subPlatforms =
      "<SubPlatforms><SubPlatform ID='a'/><SubPlatform ID='b'/></SubPlatforms>\n"
      "<SubPlatforms><SubPlatform ID='c'/><SubPlatform ID='d'/></SubPlatforms>";
  EXPECT_THAT(Found(),
              ElementsAre("E Product.xml:2: a second section with <SubPlatform>: the frame reads "
                          "only one such section right; put all entries into the first; till then "
                          "there is a sub platform without an ID: its stop is never counted, so "
                          "that the stop never ends by itself"));
}

}  // namespace
