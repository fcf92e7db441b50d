#include "host/InstalledAddons.h"

#include <gtest/gtest.h>

namespace {

constexpr char kParking[] = "<Addon ID=\"Parking\" Version=\"1.5.0\"/>";
constexpr char kGate[] = "<Addon ID=\"Gate\" Version=\"2.0.0\"/>";

std::string List(const std::string& content) {
  return "<InstalledProductsDescription>" + content + "</InstalledProductsDescription>";
}

std::string After(const std::string& before,
                  std::vector<InstalledAddon> addons = {{"Parking", "1.5.0"}}) {
  return InstalledAddons(before, std::move(addons)).After();
}

/// "line:column" of the place before; "" for none.
std::string PlaceBefore(const InstalledAddons& list, int line, int column) {
  const std::optional<TextPlace> place = list.PlaceBefore({line, column});
  return place ? std::to_string(place->line) + ":" + std::to_string(place->column) : "";
}

TEST(InstalledAddons, MakeAListWhereThereIsNone) {
  EXPECT_EQ(List("<Addons>" + std::string(kParking) + "</Addons>"), After(""));
}

TEST(InstalledAddons, AreAddedAtTheEndOfTheList) {
  EXPECT_EQ(List("<Addons>\n" + std::string(kGate) + kParking + "</Addons ><Tools/>"),
            After(List("<Addons>\n" + std::string(kGate) + "</Addons ><Tools/>")));
}

TEST(InstalledAddons, AreNotAddedInAComment) {
  const std::string comment = "<!-- <Addons> </Addons> -->";
  EXPECT_EQ(List("<Addons>" + std::string(kParking) + "</Addons>" + comment),
            After(List("<Addons></Addons>" + comment)));
}

TEST(InstalledAddons, AreAddedToAnEmptyElement) {
  const std::string list = "<Addons a=\"/>\">" + std::string(kParking) + "</Addons>";
  EXPECT_EQ(List(list), After(List("<Addons a=\"/>\"/>")));
  EXPECT_EQ(List("<Tools/><Addons>" + std::string(kParking) + "</Addons>"),
            After(List("<Tools/>")));
  EXPECT_EQ(List("<Addons>" + std::string(kParking) + "</Addons>"),
            After("<InstalledProductsDescription/>"));
}

TEST(InstalledAddons, OfAnotherVersionReplaceTheirEntries) {
  EXPECT_EQ(
      List("<Addons>" + std::string(kParking) + kGate + "</Addons>"),
      After(List("<Addons><Addon Version=\"1.4.0\" ID=\"Parking\"\n ClientPackageName=\"a\"/>" +
                 std::string(kGate) + "</Addons>")));
  EXPECT_EQ(List("<Addons><Addon ID=\"Parking\" Version=\"1.5.0\">a</Addon></Addons>"),
            After(List("<Addons><Addon ID=\"Parking\">a</Addon></Addons>")));
}

TEST(InstalledAddons, OfTheSameVersionKeepTheirEntries) {
  const std::string before =
      List("<Addons><Addon ID=\"Parking\" LastModifyTime=\"\" Version=\"1.5.0\"/></Addons>");
  EXPECT_EQ(before, After(before));
}

TEST(InstalledAddons, ReplaceTheEntryThatCounts) {
  EXPECT_EQ(List("<Addons><Addon ID=\"Parking\"/>" + std::string(kParking) + "</Addons>"),
            After(List("<Addons><Addon ID=\"Parking\"/><Addon ID=\"Parking\"/></Addons>")));
}

TEST(InstalledAddons, AreEscaped) {
  EXPECT_EQ(List("<Addons><Addon ID=\"A&#38;B&#34;\" Version=\"1&#60;2&#10;\"/></Addons>"),
            After("", {{"A&B\"", "1<2\n"}}));
}

TEST(InstalledAddons, ChangeNoTextThatTheFrameReadsAsEmpty) {
  for (const char* text : {"<InstalledProductsDescription>", "<Addons></Addons>",
                           "<InstalledProductsDescription xmlns=\"a\"/>"}) {
    EXPECT_EQ(text, After(text));
  }
}

TEST(InstalledAddons, LeaveThePlacesOfTheTextBefore) {
  const InstalledAddons list(List("\n<Addons><Addon ID=\"Parking\"\n "
                                  "Version=\"1\"/><Addon/>\n</Addons><Tools><a/></Tools>"),
                             {{"Parking", "1.5.0"}, {"Gät", "2"}});
  ASSERT_EQ(List("\n<Addons>" + std::string(kParking) +
                 "<Addon/>\n<Addon ID=\"Gät\" Version=\"2\"/></Addons><Tools><a/></Tools>"),
            list.After());
  EXPECT_EQ("0:0", PlaceBefore(list, 0, 0));
  EXPECT_EQ("1:1", PlaceBefore(list, 1, 1));
  EXPECT_EQ("2:1", PlaceBefore(list, 2, 1));
  EXPECT_EQ("2:9", PlaceBefore(list, 2, 9));    // the entry of Parking
  EXPECT_EQ("2:9", PlaceBefore(list, 2, 16));   // its ID
  EXPECT_EQ("3:15", PlaceBefore(list, 2, 46));  // the other entry
  EXPECT_EQ("", PlaceBefore(list, 3, 1));       // the entry of Gät
  EXPECT_EQ("", PlaceBefore(list, 3, 8));
  EXPECT_EQ("4:1", PlaceBefore(list, 3, 30));  // </Addons>
  EXPECT_EQ("4:10", PlaceBefore(list, 3, 39));
  EXPECT_EQ("4:0", PlaceBefore(list, 3, 0));
}

}  // namespace
