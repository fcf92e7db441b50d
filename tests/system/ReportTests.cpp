// HUB report and HUB why on the records of real runs.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

#include "reference/os/LocalText.h"
#include "tests/system/HubProcess.h"
#include "tests/system/MadeProduct.h"

namespace fs = std::filesystem;
using testing::AllOf;
using testing::HasSubstr;
using testing::Not;
using testing::StartsWith;

namespace {

/// The arguments of a report on the record, quoted for the command line.
std::string ReportOf(const fs::path& record, const std::string& more = "") {
  return "report \"" + LocalFromPath(record) + "\" " + more;
}

TEST(Report, AgreesWithWhatTheRunPrinted) {
  MadeProduct product;
  HubSettings settings;
  settings.record = product.Site().Path("run.jsonl");
  product.Plugin("a.server")
      .Plugin("b.server", "init_fails", DependsOn("a.server"))
      .Plugin("c.server", "uninit_refuses", DependsOn("b.server"))
      .BrokenLibrary("d.server", "no library");
  const nlohmann::json run = product.RunUntilUp("--json", settings).Json();
  const nlohmann::json report = RunHub(ReportOf(settings.record, "--format json")).Json();
  EXPECT_EQ(run["status"], report["end"]["status"]);
  EXPECT_EQ(run["exitStatus"], report["end"]["exitStatus"]);
  ASSERT_EQ(run["plugins"].size(), report["plugins"].size());
  for (std::size_t i = 0; i < run["plugins"].size(); ++i) {
    const nlohmann::json& printed = run["plugins"][i];
    const nlohmann::json& reported = report["plugins"][i];
    EXPECT_EQ(printed["id"], reported["id"]);
    EXPECT_EQ(printed["state"], reported["state"]) << printed["id"];
    EXPECT_EQ(printed["reason"], reported["reason"]) << printed["id"];
    EXPECT_EQ(printed["initMs"], reported["start"]["ms"]) << printed["id"];
    EXPECT_EQ(printed["uninitMs"], reported["stop"]["ms"]) << printed["id"];
    EXPECT_EQ(printed["dependsOn"], reported["dependsOn"]) << printed["id"];
  }
}

TEST(Report, IsOfTheProductsLastRunWhenNoRecordIsNamed) {
  TemporaryFolder state;
  HubSettings settings;
  settings.state = state.Path();
  MadeProduct first;
  MadeProduct second;
  first.Plugin("a.server").Run("--seconds 0.1", settings);
  first.Run("--seconds 0.2", settings);
  second.Plugin("b.server").Run("--seconds 0.1", settings);
  const std::vector<fs::path> records = RecordsBelow(state.Path());
  ASSERT_EQ(3U, records.size());
  const auto source = [&](const std::string& arguments) {
    return RunHub("report --format json " + arguments, settings).Json()["source"]["name"];
  };
  const auto newest = [&](const std::string& plugin) {
    fs::path last;
    for (const fs::path& record : records) {
      const nlohmann::json report = RunHub(ReportOf(record, "--format json")).Json();
      if (report["plugins"][0]["id"] == plugin && last.filename() < record.filename())
        last = record;
    }
    return last.u8string();
  };
  EXPECT_EQ(newest("a.server"), source("--bin " + first.Site().Bin()));
  EXPECT_EQ(newest("b.server"), source("--bin " + second.Site().Bin()));
  EXPECT_EQ(newest("b.server"), source(""));
}

TEST(Report, SaysThatThereIsNoRecord) {
  TemporaryFolder state;
  HubSettings settings;
  settings.state = state.Path();
  const HubResult any = RunHub("report", settings);
  EXPECT_EQ(2, any.status);
  EXPECT_EQ(
      "HUB: there is no record of a run; HUB run writes one, or name its file: HUB report FILE\n",
      any.errors);
  const SiteCopy site;
  EXPECT_THAT(RunHub("report --bin " + site.Bin(), settings).errors,
              StartsWith("HUB: there is no record of a run of the product in "));
}

TEST(Report, OfAFileThatIsNoRecordIsASentence) {
  const SiteCopy site;
  const fs::path file = site.Path("Product.xml");
  const HubResult result = RunHub(ReportOf(file));
  EXPECT_EQ(2, result.status);
  EXPECT_EQ("HUB: " + LocalFromPath(file) +
                " is neither a flight record nor a log with a line of the frame\n",
            result.errors);
}

TEST(Report, IsWrittenToAFile) {
  MadeProduct product;
  HubSettings settings;
  settings.record = product.Site().Path("run.jsonl");
  product.Plugin("a.server").Run("--seconds 0.1", settings);
  const fs::path file = product.Site().Path("report.txt");
  const HubResult result =
      RunHub(ReportOf(settings.record, "--output \"" + LocalFromPath(file) + "\""));
  EXPECT_EQ(0, result.status) << result.errors;
  EXPECT_EQ("", result.output);
  EXPECT_EQ(RunHub(ReportOf(settings.record)).output, product.Site().Read("report.txt"));
}

TEST(Report, OfAHungStartNamesThePluginWhileTheRunGoesOn) {
  MadeProduct product;
  HubSettings settings;
  settings.record = product.Site().Path("run.jsonl");
  product.Plugin("a.server", "init_hangs")
      .Plugin("b.server", "well_behaved", DependsOn("a.server"));
  HubProcess hub(product.Arguments(""), settings);
  ASSERT_TRUE(hub.AwaitEvent("init-begin", "a.server"));
  const std::string report = RunHub(ReportOf(settings.record)).output;
  EXPECT_THAT(report, HasSubstr("The record has no end: the run still goes on, or its process was "
                                "killed\n"));
  EXPECT_THAT(report, HasSubstr("\nNever returned\n  a.server, in Init for "));
  EXPECT_THAT(report, HasSubstr(" ms when the record ended; 1 plugin waits for it: b.server\n"));
}

TEST(Report, AgainstAnEarlierRunShowsWhatDiffers) {
  MadeProduct product;
  HubSettings first;
  HubSettings second;
  first.record = product.Site().Path("first.jsonl");
  second.record = product.Site().Path("second.jsonl");
  product.Plugin("a.server").RunUntilUp("", first);
  product.Plugin("b.server").RunUntilUp("", second);
  const HubResult result =
      RunHub(ReportOf(second.record, "--against \"" + LocalFromPath(first.record) + "\""));
  EXPECT_EQ(0, result.status) << result.errors;
  EXPECT_THAT(result.output, StartsWith("Against 1 earlier run\n  the start of the plugins: "));
  EXPECT_THAT(result.output, HasSubstr("\nNew\n  b.server\n"));
}

TEST(Report, WithABudgetThatIsExceededEndsWithOne) {
  MadeProduct product;
  HubSettings settings;
  settings.record = product.Site().Path("run.jsonl");
  product.Plugin("a.server").RunUntilUp("", settings);
  const auto withBudget = [&](const std::string& budget) {
    product.Site().Write("budget.json", budget);
    const std::string file = LocalFromPath(product.Site().Path("budget.json"));
    return RunHub(ReportOf(settings.record, "--budget \"" + file + "\""));
  };
  const HubResult kept = withBudget(R"({"up": 100000})");
  EXPECT_EQ(0, kept.status);
  EXPECT_EQ("1 of 1 budget kept\n", kept.output);
  const HubResult exceeded = withBudget(R"({"phases": {"frame-init": 0}})");
  EXPECT_EQ(1, exceeded.status);
  EXPECT_THAT(exceeded.output, HasSubstr(" ms, budget 0.0 ms, exceeded by "));
  const HubResult wrong = withBudget("5");
  EXPECT_EQ(2, wrong.status);
  EXPECT_THAT(wrong.errors, HasSubstr(": it is no object of names and milliseconds\n"));
}

TEST(Report, PredictsFromTheRecord) {
  MadeProduct product;
  HubSettings settings;
  settings.record = product.Site().Path("run.jsonl");
  product.Plugin("a.server")
      .Plugin("b.server", "well_behaved", DependsOn("a.server"))
      .RunUntilUp("--full-sleep", settings);
  const HubResult result = RunHub(ReportOf(settings.record, "--what-if poll=0 --advise"));
  EXPECT_EQ(0, result.status) << result.errors;
  EXPECT_THAT(result.output, HasSubstr("What if poll=0\n  the start: "));
  EXPECT_THAT(result.output, HasSubstr("if nothing waited for the next look (poll=0)\n"));
  const HubResult wrong = RunHub(ReportOf(settings.record, "--what-if b.sever=0"));
  EXPECT_EQ(2, wrong.status);
  EXPECT_THAT(wrong.errors, StartsWith("HUB: --what-if: "));
  EXPECT_THAT(wrong.errors, HasSubstr("did you mean \"b.server\"?"));
}

TEST(Report, WritesATraceAndAGraph) {
  MadeProduct product;
  HubSettings settings;
  settings.record = product.Site().Path("run.jsonl");
  product.Plugin("a.server").RunUntilUp("", settings);
  EXPECT_TRUE(RunHub(ReportOf(settings.record, "--format trace")).Json().contains("traceEvents"));
  EXPECT_THAT(RunHub(ReportOf(settings.record, "--format dot --focus a.server")).output,
              StartsWith("digraph"));
  EXPECT_THAT(RunHub(ReportOf(settings.record, "--format dot --focus b.server")).errors,
              StartsWith("HUB: --focus: "));
}

TEST(Report, OfALogIsOfItsLastRunUnlessOneIsChosen) {
  MadeProduct product;
  const std::string log = LocalFromPath(product.Site().Path("hub.log"));
  product.Plugin("a.server").RunUntilUp("--log \"" + log + "\"");
  product.Plugin("b.server", "well_behaved", DependsOn("a.server"))
      .RunUntilUp("--log \"" + log + "\"");
  const auto ids = [&](const std::string& more) {
    std::vector<std::string> names;
    const nlohmann::json report = RunHub("report \"" + log + "\" --format json " + more).Json();
    for (const auto& plugin : report["plugins"]) names.push_back(plugin["id"]);
    std::sort(names.begin(), names.end());
    return names;
  };
  EXPECT_EQ((std::vector<std::string>{"a.server", "b.server"}), ids(""));
  EXPECT_EQ((std::vector<std::string>{"a.server"}), ids("--run 1"));
  EXPECT_EQ("HUB: --run: there are 2 runs\n", RunHub("report \"" + log + "\" --run 3").errors);
  const nlohmann::json report =
      RunHub("report \"" + log + "\" --format json --bin " + product.Site().Bin()).Json();
  EXPECT_EQ(2U, report["start"]["criticalPath"].size()) << report["start"];
}

TEST(Report, WithAWrongTimeFormatIsRefused) {
  const HubResult result = RunHub("report x.log --time-format %d");
  EXPECT_EQ(2, result.status);
  EXPECT_THAT(result.errors,
              StartsWith("HUB: --time-format: \"%d\" does not give the time of day"));
}

TEST(Report, RefusesWhatItsFormatDoesNotShow) {
  const auto refused = [](const std::string& arguments) {
    const HubResult result = RunHub("report x.jsonl " + arguments);
    EXPECT_EQ(2, result.status);
    return result.errors;
  };
  EXPECT_EQ("HUB: --what-if is not for --format json\n", refused("--format json --what-if poll=0"));
  EXPECT_EQ("HUB: --advise is not for --format json\n", refused("--format json --advise"));
  EXPECT_EQ("HUB: --against is not for --format dot\n", refused("--format dot --against y"));
  EXPECT_EQ("HUB: --budget is not for --format trace\n", refused("--format trace --budget y"));
  EXPECT_EQ("HUB: --focus is not for --format text\n", refused("--focus a"));
  EXPECT_EQ("HUB: --depth requires --focus\n", refused("--format dot --depth 2"));
}

std::string PageIn(const fs::path& file) {
  std::ifstream stream(file, std::ios::binary);
  return {std::istreambuf_iterator<char>(stream), std::istreambuf_iterator<char>()};
}

TEST(Report, IsThePageThatRunWritesAtItsEnd) {
  MadeProduct product;
  HubSettings settings;
  settings.record = product.Site().Path("run.jsonl");
  const fs::path page = product.Site().Path("page.html");
  const HubResult run = product.Plugin("a.server")
                            .Plugin("bad.server", "init_fails")
                            .RunUntilUp("--report \"" + LocalFromPath(page) + "\"", settings);
  EXPECT_EQ(3, run.status);
  const HubResult report =
      RunHub("report \"" + LocalFromPath(settings.record) + "\" --format html");
  EXPECT_EQ(report.output, PageIn(page));
  EXPECT_THAT(PageIn(page), HasSubstr("degraded: 1 of 2 plugins started"));
}

TEST(Report, IsThePageThatRunWritesOfAStartThatHangs) {
  MadeProduct product;
  HubSettings settings;
  settings.record = product.Site().Path("run.jsonl");
  const fs::path page = product.Site().Path("page.html");
  HubProcess hub(product.Plugin("hangs.server", "init_hangs")
                     .Arguments("--stop-timeout 0 --report \"" + LocalFromPath(page) + "\""),
                 settings);
  EXPECT_TRUE(hub.AwaitEvent("init-begin", "hangs.server"));
  hub.RequestStop(StopKind::kTerminate);
  EXPECT_EQ(4, hub.Wait().status);
  EXPECT_THAT(PageIn(page),
              HasSubstr("<bdi>hangs.server</bdi></a>: has not returned: in Init for "));
}

TEST(Report, ThatRunCannotWriteDegradesTheRun) {
  MadeProduct product;
  HubSettings settings;
  settings.record = product.Site().Path("run.jsonl");
  const std::string page = LocalFromPath(product.Site().Path("gone") / "page.html");
  fs::create_directory(product.Site().Path("gone"));
  HubProcess hub(product.Plugin("a.server").Arguments("--report \"" + page + "\""), settings);
  EXPECT_TRUE(hub.AwaitUp());
  fs::remove_all(product.Site().Path("gone"));
  hub.RequestStop(StopKind::kTerminate);
  const HubResult result = hub.Wait();
  EXPECT_EQ(3, result.status);
  EXPECT_EQ("HUB: --report: " + page + " cannot be written\n", result.errors);
}

TEST(Report, OfARunThatGoesOnReachesUntilNow) {
  TemporaryFolder state;
  HubSettings settings;
  settings.state = state.Path();
  MadeProduct product;
  HubProcess hub(product.Plugin("hangs.server", "init_hangs").Arguments("--stop-timeout 0"),
                 settings);
  EXPECT_TRUE(hub.AwaitEvent("init-begin", "hangs.server"));
  const auto report = [&] {
    return RunHub("report --bin " + product.Site().Bin(), settings).output;
  };
  EXPECT_THAT(report(), AllOf(HasSubstr("\nIt still goes on\n"), HasSubstr("\nNot returned yet\n"),
                              HasSubstr("in Init for "), HasSubstr(" ms by now")));
  hub.RequestStop(StopKind::kTerminate);
  hub.Wait();
  EXPECT_THAT(report(), AllOf(Not(HasSubstr("It still goes on")), HasSubstr("\nNever returned\n")));
}

TEST(Why, OfALogGoesByItsProduct) {
  MadeProduct product;
  const std::string log = LocalFromPath(product.Site().Path("hub.log"));
  product.Plugin("a.server").Plugin("b.server", "well_behaved", DependsOn("a.server"));
  product.RunUntilUp("--log \"" + log + "\"");
  EXPECT_THAT(RunHub("why b.server --record \"" + log + "\" --bin " + product.Site().Bin()).output,
              HasSubstr("  b.server waited for a.server, done at "));
}

TEST(Why, OfNoProductSaysWhereThereIsNone) {
  TemporaryFolder state;
  HubSettings settings;
  settings.state = state.Path();
  const HubResult result = RunHub("why a.server", settings);
  EXPECT_EQ(2, result.status);
  EXPECT_THAT(result.errors, HasSubstr("HUB: there is no product with plugins in "));
}

TEST(Why, OfAPluginAndItselfIsRefused) {
  MadeProduct product;
  const HubResult result =
      RunHub("why a.server a.server --bin " + product.Plugin("a.server").Site().Bin());
  EXPECT_EQ("HUB: \"a.server\" is named twice\n", result.errors);
}

TEST(Why, NamesWhereTheDependencyIsDeclared) {
  MadeProduct product;
  HubSettings settings;
  settings.record = product.Site().Path("run.jsonl");
  product.Plugin("a.server").Plugin("b.server", "well_behaved", DependsOn("a.server"));
  product.RunUntilUp("", settings);
  const std::string record = "--record \"" + LocalFromPath(settings.record) + "\"";
  EXPECT_THAT(RunHub("why b.server " + record).output,
              HasSubstr("  b.server waited for a.server, done at "));
  EXPECT_THAT(RunHub("why b.server a.server " + record).output,
              StartsWith("b.server starts after a.server, because\n"
                         "  b.server depends on a.server  (bin/META_INFO/b.server/b.server.xml:"));
}

TEST(Why, BeforeAnyRunReadsTheProduct) {
  TemporaryFolder state;
  HubSettings settings;
  settings.state = state.Path();
  MadeProduct product;
  product.Plugin("a.server").Plugin("b.server", "well_behaved", DependsOn("a.server"));
  const HubResult result = RunHub("why b.server --bin " + product.Site().Bin(), settings);
  EXPECT_EQ(0, result.status) << result.errors;
  EXPECT_THAT(
      result.output,
      StartsWith("b.server starts after 1 plugin, because\n  b.server depends on a.server"));
}

TEST(Why, OfADriverSaysThatTheFrameDoesNotStartIt) {
  const SiteCopy site;
  const HubResult result = RunHub("why camera.driver --bin " + site.Bin());
  EXPECT_EQ(2, result.status);
  EXPECT_EQ("HUB: \"camera.driver\" is not started by the frame: its kind is driver\n",
            result.errors);
}

TEST(Why, OfAnUnknownPluginNamesTheNearest) {
  MadeProduct product;
  const HubResult result =
      RunHub("why b.sever --bin " + product.Plugin("a.server").Plugin("b.server").Site().Bin());
  EXPECT_EQ(2, result.status);
  EXPECT_EQ("HUB: \"b.sever\" is no plugin of this product; did you mean \"b.server\"?\n",
            result.errors);
}

}  // namespace
