// Complete runs of the sample product and of other products by HUB.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <fstream>
#include <map>
#include <regex>
#include <set>
#include <sstream>
#include <vector>

#include "reference/os/LocalText.h"
#include "tests/system/MadeProduct.h"
#include "workbench/output/Text.h"

using nlohmann::json;
using testing::AnyOf;
using testing::HasSubstr;

namespace {

/// The timing table's result for each plugin: "Init OK", "Init Failed" or "Load Failed" by name.
std::map<std::string, std::string> Outcomes(const json& run) {
  std::map<std::string, std::string> outcomes;
  for (const json& line : run["Timing"]) {
    const std::string text = line["text"];
    const std::size_t end = text.find("] ");
    if (text[0] == '[' && end != std::string::npos) {
      outcomes[text.substr(1, end - 1)] = text.substr(end + 2);
    }
  }
  return outcomes;
}

/// The content of the library, changed so that it is for another machine type.
std::string ForAnotherMachine(const std::string& library) {
  std::ostringstream file;
  file << std::ifstream(library, std::ios::binary).rdbuf();
  std::string content = file.str();
  const bool isElf = content.compare(1, 3, "ELF") == 0;
  // Its header's field for the machine: S/390 for ELF, ARM64 for PE.
  const std::size_t machine = isElf ? 18 : content.find(std::string("PE\0\0", 4)) + 4;
  content[machine] = isElf ? '\x16' : '\x64';
  content[machine + 1] = isElf ? '\0' : '\xAA';
  return content;
}

/// Why license.server fails with this file of its own, in a product of it and what it needs.
std::string ReasonOfLicence(const std::string& file) {
  const SiteCopy site;
  site.Write("Product.xml",
             "<ProductDescription><Plugins><Plugin ID='config.server'/>"
             "<Plugin ID='license.server'/></Plugins></ProductDescription>");
  site.Remove("bin/TevAddons");
  site.Write("bin/data/licence.conf", file);
  const HubResult result = RunHubUntilUp("--json --bin " + site.Bin());
  EXPECT_EQ(3, result.status) << result.errors;
  return result.Json()["plugins"][1]["reason"];
}

std::string LogOf(const SiteCopy& site) {
  return LocalFromPath(site.Path("hub.log"));
}

TEST(SampleProduct, RunsToTheEndAndIsDegradedOnPurpose) {
  const HubResult result = RunHubUntilUp("--json --bin \"" TEV_SITE "/bin\"");
  ASSERT_EQ(3, result.status) << result.errors;
  const json run = result.Json();
  EXPECT_EQ(2, run["schema"]);
  EXPECT_EQ("degraded", run["status"]);
  EXPECT_EQ(
      "degraded: 18 of 20 plugins started; license.server failed in Init; backup.server was not "
      "loaded",
      run["sentence"]);
  EXPECT_EQ(0, run["Frame_Init"]);
  EXPECT_EQ(0, run["Frame_Start"]);
  EXPECT_EQ(true, run["CallbackResult"]);
  EXPECT_EQ(json::array({""}), run["Notified"]);

  std::set<std::string> started;
  for (const auto& plugin : Outcomes(run)) {
    if (plugin.second == "Init OK") started.insert(plugin.first);
  }
  EXPECT_EQ(18U, started.size());
  std::set<std::string> loadState;
  for (const auto& plugin : run["LoadState"].items()) loadState.insert(plugin.key());
  EXPECT_EQ(started, loadState);
  EXPECT_EQ(started.size() + 1, run["Handles"].size());  // the one whose Init failed is loaded too
}

TEST(SampleProduct, SaysWhenItsLicenceRanOut) {
  EXPECT_EQ(
      "its Init returned false: [license.server] the licence in data/licence.conf ran out on "
      "2020-02-29",
      ReasonOfLicence("valid.until = 2020-02-29"));
  EXPECT_EQ(
      "its Init returned false: [license.server] the licence in data/licence.conf has no line "
      "\"valid.until = YYYY-MM-DD\"",
      ReasonOfLicence("valid.until = for ever"));
}

TEST(SampleProduct, ReportsInDetailWithALicence) {
  const SiteCopy site;
  site.Write("bin/data/licence.conf", "valid.until = 2999-12-31\nfeatures = report.details\n");
  HubProcess hub("run --bin " + site.Bin() + " --log \"" + LogOf(site) + "\"");
  EXPECT_TRUE(hub.AwaitFile(
      LogOf(site), "[dashboard.server] open alarms: 1, smoke at quay, actions: 1, no backup\n"));
  EXPECT_TRUE(hub.AwaitOutput("Up after"));
  hub.RequestStop(StopKind::kTerminate);
  EXPECT_THAT(hub.Wait().output,
              HasSubstr("\ndegraded: 19 of 20 plugins started; backup.server was not loaded\n"));
}

TEST(SampleProduct, ActsOnWhatItsDevicesReport) {
  const SiteCopy site;
  HubProcess hub("run --bin " + site.Bin() + " --log \"" + LogOf(site) + "\"");
  for (const std::string line :
       {"[access.server] door-1 opens for bo", "[parking.server] HH-A 1 goes in, cars inside: 1",
        "[alarm.server] alarm: smoke at quay", "[notification.server] to bo: smoke at quay, ",
        "[video.server] cam-2 records on channel 0",
        "[linkage.server] alarm at quay: its cameras record",
        "[dashboard.server] open alarms: 1, actions: 1, no backup"}) {
    EXPECT_TRUE(hub.AwaitFile(LogOf(site), line)) << line;
  }
  EXPECT_TRUE(hub.AwaitOutput("Up after"));
  hub.RequestStop(StopKind::kTerminate);
  EXPECT_EQ(3, hub.Wait().status);
}

TEST(SampleProduct, SurvivesAStopWhileItsSlowPluginIsInInit) {
  HubProcess hub("run --bin \"" TEV_SITE "/bin\"");
  ASSERT_TRUE(hub.AwaitEvent("init-begin", "video.server"));
  hub.RequestStop(StopKind::kInterrupt);
  const HubResult result = hub.Wait();
  EXPECT_EQ(4, result.status) << result.errors;
  // Which of them depends on whether the slow one returns while the others are stopped.
  EXPECT_THAT(result.output, AnyOf(HasSubstr("\nleft behind: "), HasSubstr("\ncut short: ")));
}

TEST(SampleProduct, ShowsTheFailingAndTheMissingPluginFirst) {
  const HubResult result = RunHubUntilUp("--bin \"" TEV_SITE "/bin\"");
  EXPECT_EQ(3, result.status) << result.errors;
  EXPECT_EQ("", result.errors);
  const std::size_t table = result.output.find("\n\nPlugin ");
  ASSERT_NE(std::string::npos, table) << result.output;
  std::istringstream lines(result.output.substr(table + 2));
  std::vector<std::string> names;
  for (std::string line; std::getline(lines, line);)
    names.push_back(line.substr(0, line.find(' ')));
  EXPECT_EQ("backup.server", names[2]);
  EXPECT_EQ("license.server", names[3]);
  EXPECT_TRUE(std::regex_search(
      result.output, std::regex(R"(\n *\d+ of 20 started.*; waiting for .*video\.server \()")))
      << result.output;
  EXPECT_THAT(result.output,
              HasSubstr("\ndegraded: 18 of 20 plugins started; license.server failed "
                        "in Init; backup.server was not loaded\n"));
}

TEST(Run, BrokenLibrariesAreReportedAndHoldNothingBack) {
  MadeProduct product;
  product.BrokenLibrary("text.server", "this is no library");
  product.BrokenLibrary("empty.server", "");
  product.BrokenLibrary("foreign.server", ForAnotherMachine(Fixture("well_behaved").string()));
  product.Plugin("throws.server", "init_throws").Plugin("bare.server", "without_entries");
  product.Plugin("after.server", "well_behaved", DependsOn("text.server throws.server"));
  const HubResult result = product.RunUntilUp("--json");
  EXPECT_EQ(3, result.status) << result.errors;
  const json run = result.Json();
  const std::map<std::string, std::string> expected = {
      {"after.server", "Init OK"},     {"bare.server", "Init Failed"},
      {"empty.server", "Load Failed"}, {"foreign.server", "Load Failed"},
      {"text.server", "Load Failed"},  {"throws.server", "Init Failed"}};
  EXPECT_EQ(expected, Outcomes(run));
  EXPECT_EQ(json({{"after.server", true}}), run["LoadState"]);
  EXPECT_EQ(json({"after.server", "bare.server", "throws.server"}), run["Handles"]);
}

TEST(Run, StartsAndStopsAPluginThatIsWrittenInC) {
  MadeProduct product;
  product.Plugin("c.server", "written_in_c")
      .Plugin("after.server", "well_behaved", DependsOn("c.server"));
  const HubResult result = product.RunUntilUp("--json");
  EXPECT_EQ(0, result.status) << result.errors;
  const std::map<std::string, std::string> expected = {{"after.server", "Init OK"},
                                                       {"c.server", "Init OK"}};
  EXPECT_EQ(expected, Outcomes(result.Json()));
}

TEST(Run, StopsInOrderWhenAPersonOrTheSystemAsks) {
  for (const StopKind how : {StopKind::kInterrupt, StopKind::kTerminate, StopKind::kHangUp}) {
    MadeProduct product;
    product.Plugin("a.server").Plugin("b.server", "well_behaved", DependsOn("a.server"));
    const std::string log = LocalFromPath(product.Site().Path("hub.log"));
    HubProcess hub(product.Arguments("--log \"" + log + "\""));
    ASSERT_TRUE(hub.AwaitOutput("Up after"));
    hub.RequestStop(how);
    const HubResult result = hub.Wait();
    EXPECT_EQ(0, result.status) << result.errors;
    EXPECT_THAT(result.output, HasSubstr("\nup: all 2 plugins started\n"));
    EXPECT_THAT(product.Site().Read("hub.log"), HasSubstr("!Frame_UnInit end!"));
  }
}

TEST(Run, InAFolderWithBlanksAndLettersBeyondAsciiIsTheSame) {
  // A letter of the local code page, which has two bytes on systems with UTF-8.
  SiteCopy site(PathFromLocal(LocalFromWide(L"my site \u00e9 (2)")));
  const HubResult result = RunHubUntilUp("--json --bin " + site.Bin());
  EXPECT_EQ(3, result.status) << result.errors;
  EXPECT_EQ(18U, result.Json()["LoadState"].size());
  site.Remove("Product.xml");
  const HubResult failed = RunHub("model --bin " + site.Bin());
  EXPECT_EQ("HUB: " + Escaped(LocalFromPath(site.Path("Product.xml").make_preferred())) +
                ": does not exist, and there is no Product.data beside it that could stand in: "
                "the frame refuses the product, and nothing starts\n",
            failed.errors);
}

TEST(Run, AProductWithoutPluginsComesUpAndGoesDown) {
  MadeProduct product;
  const HubResult result = product.RunUntilUp("--json");
  EXPECT_EQ(0, result.status) << result.errors;
  EXPECT_THAT(result.errors, HasSubstr("no addon brings one: the product starts nothing\n"));
  const json run = result.Json();
  EXPECT_EQ("up: there are no plugins to start", run["sentence"]);
  EXPECT_EQ(json::object(), run["LoadState"]);
  EXPECT_EQ(json::array(), run["Handles"]);
  EXPECT_EQ(json::array(), run["plugins"]);
  EXPECT_EQ(json({{{"text", "Plugins need to init"}, {"ms", -1}}}),
            json::array({run["Timing"].back()}));
}

TEST(Run, WithOneWorkerStartsAllPluginsOnOneThread) {
  MadeProduct product;
  product.Plugin("a.server").Plugin("b.server").Plugin("c.server");
  const HubResult result = product.RunUntilUp("--json --workers 1");
  EXPECT_EQ(0, result.status) << result.errors;
  std::set<json> threads;
  const json run = result.Json();
  for (const json& plugin : run["plugins"]) threads.insert(plugin["thread"]);
  EXPECT_EQ(1U, threads.size());
}

}  // namespace
