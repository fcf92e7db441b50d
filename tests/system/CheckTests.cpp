// HUB check as a process: what it prints where, its files, its exit status.

#include <gtest/gtest.h>

#include <filesystem>
#include <string>

#include "tests/system/HubProcess.h"

namespace {

constexpr char kDescription[] = "bin/META_INFO/alarm.server/alarm.server.xml";

/// A good product without libraries, in the folder "site".
class CheckedSite : public testing::Test {
 protected:
  CheckedSite() {
    std::filesystem::copy(TEV_GOOD_PRODUCT, folder.Path() / "site",
                          std::filesystem::copy_options::recursive);
    settings.folder = folder.Path();
  }

  /// Adds a dependency on an ID that does not exist: an error in line 9.
  void Spoil() const {
    const std::string name = std::string("site/") + kDescription;
    std::string text = folder.Read(name);
    text.replace(text.find("storage.server"), 14, "stroage.server");
    folder.Write(name, text);
  }

  HubResult Check(const std::string& arguments) const {
    return RunHub("check --ignore libraries " + arguments, settings);
  }

  const TemporaryFolder folder;
  HubSettings settings;
};

TEST_F(CheckedSite, WithoutAFaultHasNoFindings) {
  const HubResult result = Check("--bin site/bin");
  EXPECT_EQ(0, result.status);
  EXPECT_EQ("no findings\n", result.output);
  EXPECT_EQ("", result.errors);
}

TEST_F(CheckedSite, WithAFaultNamesItFromTheCurrentFolder) {
  Spoil();
  const std::string message =
      ":9:13: error: \"alarm.server\" depends on \"stroage.server\", which the product does not "
      "have: \"alarm.server\" does not wait for it; did you mean \"storage.server\"? [TEV301]\n"
      "    9 |     <Plugin ID=\"stroage.server\" Version=\"2.5.0\" DependentType=\"1\"/>\n"
      "      |             ^~\n"
      "1 error\n";
  const HubResult result = Check("--bin site/bin");
  EXPECT_EQ(1, result.status);
  EXPECT_EQ(std::string("site/") + kDescription + message, result.output);
  settings.folder = folder.Path() / "site";
  EXPECT_EQ(kDescription + message, Check("--bin bin").output);
  settings.folder = folder.Path() / "site" / "bin" / "META_INFO";
  const std::string whole =
      (std::filesystem::canonical(folder.Path()) / "site").generic_string() + "/" + kDescription;
  EXPECT_EQ(whole + message, Check("--bin ..").output);
}

TEST_F(CheckedSite, IsCheckedByTheChosenRulesAlone) {
  Spoil();
  EXPECT_EQ(0, Check("--bin site/bin --select plugins").status);
  EXPECT_EQ(0, RunHub("check --bin site/bin --ignore libraries,TEV301", settings).status);
  EXPECT_EQ(1, Check("--bin site/bin --select TEV301").status);
  const HubResult wrong = Check("--bin site/bin --select TEV3O1");
  EXPECT_EQ(2, wrong.status);
  EXPECT_EQ("HUB: --select: \"TEV3O1\" is no rule and no area; did you mean \"TEV301\"?\n",
            wrong.errors);
}

TEST_F(CheckedSite, IsReportedInAFile) {
  Spoil();
  const HubResult result = Check("--bin site/bin --format json --output found.json");
  EXPECT_EQ(1, result.status);
  EXPECT_EQ("", result.output + result.errors);
  const auto report = nlohmann::json::parse(folder.Read("found.json"));
  EXPECT_EQ("TEV301", report["findings"][0]["rule"]);
  EXPECT_EQ(kDescription, report["findings"][0]["file"]);
  const auto sarif = nlohmann::json::parse(Check("--bin site/bin --format sarif").output);
  EXPECT_EQ("TEV301", sarif["runs"][0]["results"][0]["ruleId"]);

  const HubResult unwritten = Check("--bin site/bin --output nowhere/found.txt");
  EXPECT_EQ(2, unwritten.status);
  EXPECT_EQ("HUB: --output: nowhere/found.txt cannot be written\n", unwritten.errors);
  const HubResult own = Check("--bin site/bin --output site/bin/META_INFO/Portal.xml");
  EXPECT_EQ(2, own.status);
  EXPECT_EQ(
      "HUB: --output: site/bin/META_INFO/Portal.xml is one of the product's own files, or could "
      "pass for one\n",
      own.errors);
}

TEST_F(CheckedSite, IsCheckedAgainstABaseline) {
  Spoil();
  EXPECT_EQ(1, Check("--bin site/bin --write-baseline known.json").status);
  const HubResult known = Check("--bin site/bin --baseline known.json");
  EXPECT_EQ(0, known.status);
  EXPECT_EQ("no new findings; 1 accepted by the baseline\n", known.output);

  folder.Write("known.json", "{");
  const HubResult broken = Check("--bin site/bin --baseline known.json");
  EXPECT_EQ(2, broken.status);
  EXPECT_EQ(0U, broken.errors.find("HUB: --baseline: known.json: line 1: ")) << broken.errors;
  const HubResult missing = Check("--bin site/bin --baseline unknown.json");
  EXPECT_EQ(2, missing.status);
  EXPECT_EQ("HUB: --baseline: unknown.json cannot be read\n", missing.errors);
}

TEST_F(CheckedSite, FailsFromTheSeverityThatCounts) {
  Spoil();
  EXPECT_EQ(1, Check("--bin site/bin --fail-on note").status);
  EXPECT_EQ("HUB: --fail-on: \"fatal\" is neither error, warning nor note\n",
            Check("--bin site/bin --fail-on fatal").errors);
}

TEST_F(CheckedSite, ThatTheFrameRefusesIsCheckedAllTheSame) {
  Spoil();
  std::filesystem::remove(folder.Path() / "site/bin/META_INFO/Platform.xml");
  const HubResult result = Check("--bin site/bin");
  EXPECT_EQ(1, result.status);
  EXPECT_NE(std::string::npos, result.output.find("[TEV101]")) << result.output;
  EXPECT_NE(std::string::npos, result.output.find("[TEV301]")) << result.output;
  EXPECT_NE(std::string::npos, result.output.find("\n2 errors\n")) << result.output;
}

TEST_F(CheckedSite, IsComparedWithAnotherOne) {
  // The frame's library is loaded twice, and each load leaves its manager in memory.
  settings.environment = {{"ASAN_OPTIONS", "detect_leaks=0"}};
  std::filesystem::copy(folder.Path() / "site", folder.Path() / "old",
                        std::filesystem::copy_options::recursive);
  Spoil();
  const HubResult result = Check("--against old/bin --bin site/bin");
  EXPECT_EQ(1, result.status);
  EXPECT_EQ(0U,
            result.output.find("From old/ (NVX 2.7.1.105) to NVX 2.7.1.105:\n"
                               "  order     alarm.server no longer waits for storage.server\n"
                               "site/bin/META_INFO/alarm.server/alarm.server.xml:9:13: error: "))
      << result.output;
  const HubResult back = Check("--against site/bin --bin old/bin");
  EXPECT_EQ(0, back.status);
  EXPECT_EQ(
      "From site/ (NVX 2.7.1.105) to NVX 2.7.1.105:\n"
      "  order     alarm.server now waits for storage.server\n"
      "  mended    TEV301 alarm.server stroage.server\n"
      "no findings\n",
      back.output.substr(0, back.output.find("no findings") + 12));
  const auto json =
      nlohmann::json::parse(Check("--against old/bin --bin site/bin --format json").output);
  EXPECT_EQ(nlohmann::json::array(
                {{{"plugin", "alarm.server"}, {"other", "storage.server"}, {"waits", false}}}),
            json["changes"]["order"]);
  EXPECT_EQ("HUB: --against and --baseline: only one of them\n",
            Check("--against old/bin --baseline x --bin site/bin").errors);
  EXPECT_EQ("HUB: --against: nowhere is no folder\n",
            Check("--against nowhere --bin site/bin").errors);
}

TEST_F(CheckedSite, IsComparedByTheContentOfItsLibraries) {
  settings.environment = {{"ASAN_OPTIONS", "detect_leaks=0"}};  // the frame is loaded twice
  const std::string megabyte(1 << 20, 'a');
  for (const char* name : {"alarm", "report", "storage", "parking"}) {
    folder.Write(std::string("site/bin/") + name + ".server.dll", megabyte + "a");
  }
  std::filesystem::copy(folder.Path() / "site", folder.Path() / "old",
                        std::filesystem::copy_options::recursive);
  folder.Write("site/bin/alarm.server.dll", megabyte + "b");
  folder.Write("site/bin/report.server.dll", megabyte);
  std::filesystem::remove(folder.Path() / "site/bin/storage.server.dll");
  EXPECT_EQ(
      "From old/ (NVX 2.7.1.105) to NVX 2.7.1.105:\n"
      "  changed   plugin alarm.server 2.7.1: its library has other content, and the same version\n"
      "  changed   plugin report.server 2.7.1: its library has other content, and the same "
      "version\n"
      "no findings\n",
      Check("--against old/bin --bin site/bin").output);
  const auto json = Check("--against old/bin --bin site/bin --format json").Json();
  EXPECT_EQ((nlohmann::json{{"plugin", "alarm.server"},
                            {"kind", "plugin"},
                            {"before", "2.7.1"},
                            {"after", "2.7.1"},
                            {"otherFile", true}}),
            json["changes"]["plugins"][0]);
}

TEST_F(CheckedSite, ThatTheFrameRefusesIsNotCompared) {
  settings.environment = {{"ASAN_OPTIONS", "detect_leaks=0"}};  // the frame is loaded twice
  std::filesystem::copy(folder.Path() / "site", folder.Path() / "old",
                        std::filesystem::copy_options::recursive);
  Spoil();
  folder.Write("old/bin/META_INFO/Portal.xml", "");
  const HubResult result = Check("--against site/bin --bin old/bin");
  EXPECT_EQ(1, result.status);
  EXPECT_EQ(0U, result.output.find("From site/ (NVX 2.7.1.105) to NVX 2.7.1.105:\n"
                                   "  the frame refuses the new product: nothing starts\n"
                                   "old/bin/META_INFO/Portal.xml: error: is empty"))
      << result.output;
  const auto json = Check("--against site/bin --bin old/bin --format json").Json();
  EXPECT_EQ("read", json["changes"]["frame"]["before"]);
  EXPECT_EQ("refused", json["changes"]["frame"]["after"]);
  EXPECT_EQ(nlohmann::json::array(), json["changes"]["plugins"]);
  EXPECT_EQ(nlohmann::json::array(), json["absent"]);
}

/// Moves the addon Parking from the product to the folder "parking", laid out as the product's bin.
void TakeAddonOut(const TemporaryFolder& folder) {
  const std::filesystem::path bin = folder.Path() / "site" / "bin";
  const std::filesystem::path addon = folder.Path() / "parking";
  std::filesystem::create_directories(addon / "TevAddons");
  std::filesystem::create_directories(addon / "META_INFO");
  std::filesystem::rename(bin / "TevAddons" / "Parking", addon / "TevAddons" / "Parking");
  std::filesystem::rename(bin / "META_INFO" / "parking.server",
                          addon / "META_INFO" / "parking.server");
  const std::string name = "site/bin/TevAddons/InstalledProducts.xml";
  std::string text = folder.Read(name);
  const std::size_t entry = text.find("    <Addon ");
  folder.Write(name, text.erase(entry, text.find('\n', entry) + 1 - entry));
}

TEST_F(CheckedSite, IsCheckedWithAnAddonThatIsNotInstalled) {
  TakeAddonOut(folder);
  settings.environment = {{"ASAN_OPTIONS", "detect_leaks=0"}};  // as with --against
  EXPECT_EQ("no findings\n", Check("--bin site/bin").output);
  EXPECT_EQ("no findings\n", Check("--bin site/bin --with parking").output);
  const HubResult changes = Check("--bin site/bin --with parking --against site/bin");
  EXPECT_EQ(
      "From site/ (NVX 2.7.1.105) to NVX 2.7.1.105:\n"
      "  new       addon Parking 1.4.0\n"
      "  new       plugin parking.server 1.4.0 of the addon Parking\n"
      "no findings\n",
      changes.output);

  const std::string name = "parking/META_INFO/parking.server/parking.server.xml";
  std::string text = folder.Read(name);
  text.replace(text.find("alarm.server"), 12, "alram.server");
  folder.Write(name, text);
  const HubResult result = Check("--bin site/bin --with parking");
  EXPECT_EQ(1, result.status);
  EXPECT_EQ(0U, result.output.find(name + ":9:13: error: ")) << result.output;
  const std::filesystem::path file = std::filesystem::canonical(folder.Path()) / name;
  const auto json =
      nlohmann::json::parse(Check("--bin site/bin --with parking --format json").output);
  EXPECT_EQ(file.generic_string(), json["findings"][0]["file"]);
  const auto sarif =
      nlohmann::json::parse(Check("--bin site/bin --with parking --format sarif").output);
  const auto& place = sarif["runs"][0]["results"][0]["locations"][0]["physicalLocation"];
  EXPECT_EQ(0U, place["artifactLocation"]["uri"].get<std::string>().find("file://"));
  EXPECT_FALSE(place["artifactLocation"].contains("uriBaseId"));
  EXPECT_EQ("HUB: --with: site has no TevAddons/ID/ID.xml, the description of an addon\n",
            Check("--bin site/bin --with site").errors);
}

TEST_F(CheckedSite, IsCheckedWithANewVersionOfAnInstalledAddon) {
  std::filesystem::create_directories(folder.Path() / "parking/TevAddons/Parking");
  std::string text = folder.Read("site/bin/TevAddons/Parking/Parking.xml");
  text.replace(text.find("<Version>1.4.0"), 14, "<Version>1.5.0");
  folder.Write("parking/TevAddons/Parking/Parking.xml", text);
  const std::string list = "site/bin/TevAddons/InstalledProducts.xml";
  text = folder.Read(list);
  folder.Write(list, text.replace(text.find("  <Addons>"), 2, "  <x/>"));
  const HubResult result = Check("--bin site/bin --with parking");
  EXPECT_EQ(0U, result.output.find(list + ":3:3: ")) << result.output;
  EXPECT_NE(std::string::npos, result.output.find("\n    3 |   <x/><Addons>\n")) << result.output;
  EXPECT_EQ(std::string::npos, result.output.find("TEV514")) << result.output;
}

TEST(Check, ExplainsItsRules) {
  const HubResult list = RunHub("check --list-rules");
  EXPECT_EQ(0, list.status);
  EXPECT_EQ(0U, list.output.find("files\n  TEV101  error    "));
  const HubResult one = RunHub("check --explain TEV301");
  EXPECT_EQ(0, one.status);
  EXPECT_EQ(0U, one.output.find("TEV301: error: "));
  const HubResult none = RunHub("check --explain TEV3O1");
  EXPECT_EQ(2, none.status);
  EXPECT_EQ("HUB: --explain: there is no rule \"TEV3O1\"; did you mean \"TEV301\"?\n", none.errors);
}

TEST(Check, OfWhatIsNoProductNamesEveryFileThatIsMissing) {
  const TemporaryFolder folder;
  HubSettings settings;
  settings.folder = folder.Path();
  std::filesystem::create_directories(folder.Path() / "site" / "bin");
  const HubResult result = RunHub("check --bin site/bin", settings);
  EXPECT_EQ(1, result.status);
  for (const char* file : {"site/Product.xml: ", "site/bin/META_INFO: ", "DeviceDrivers.xml",
                           "Platform.xml", "Portal.xml"}) {
    EXPECT_NE(std::string::npos, result.output.find(file)) << result.output;
  }
}

}  // namespace
