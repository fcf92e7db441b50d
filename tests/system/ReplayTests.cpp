// HUB replay: the product that it writes runs like the recorded one.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <iterator>
#include <map>
#include <string>

#include "reference/os/LocalText.h"
#include "tests/system/MadeProduct.h"
#include "workbench/record/FlightRecord.h"
#include "workbench/record/RunOutcome.h"
#include "workbench/record/RunState.h"

namespace fs = std::filesystem;
using testing::AllOf;
using testing::HasSubstr;
using testing::Not;

namespace {

/// The part of a reason that says what kind of failure it is.
std::string KindOf(const std::string& reason) {
  for (const std::string kind :
       {"does not exist", "returned false", "Init threw", "UnInit threw"}) {
    if (reason.find(kind) != std::string::npos) return kind;
  }
  return reason.empty() ? "" : "other";
}

/// What became of each plugin that the frame starts, a line each: without times and texts.
std::string ShapeOf(const fs::path& file) {
  const FlightRecord record = ReadFlightRecord(file);
  RunState state;
  for (const PluginHead& head : record.plugins) state.AddPlugin(head);
  for (const RunEvent& event : record.events) state.Apply(event);
  std::map<std::string, std::string> lines;
  for (const PluginRun& plugin : state.Plugins()) {
    if (!IsStarted(plugin.head)) continue;
    std::vector<std::string> others = plugin.head.dependsOn;
    std::sort(others.begin(), others.end());
    std::string line = plugin.head.kind + " " + plugin.head.id + " " + plugin.head.version + " (";
    for (const std::string& other : others) line += other + " ";
    lines[plugin.head.id] = line + "): " + OutcomeWord(plugin) + ", " + KindOf(plugin.reason) +
                            ", " + KindOf(plugin.stopReason);
  }
  std::string shape;
  for (const auto& line : lines) shape += line.second + "\n";
  return shape;
}

std::string Quoted(const fs::path& path) {
  return "\"" + LocalFromPath(path) + "\"";
}

class ReplayedProduct : public testing::Test {
 protected:
  HubSettings RecordAs(const std::string& name) const {
    HubSettings settings;
    settings.record = folder.Path() / name;
    return settings;
  }

  HubResult Replay(const std::string& options = "") const {
    return RunHub("replay " + Quoted(folder.Path() / "run.jsonl") + " --output " +
                  Quoted(folder.Path() / "replay") + " " + options);
  }

  std::string Bin() const { return "--bin " + Quoted(folder.Path() / "replay" / "bin"); }

  /// Runs the replay until it is up and returns how HUB ended.
  HubResult RunReplay() const { return RunHubUntilUp(Bin(), RecordAs("replay.jsonl")); }

  void ExpectSameShape() const {
    EXPECT_EQ(ShapeOf(folder.Path() / "run.jsonl"), ShapeOf(folder.Path() / "replay.jsonl"));
  }

  /// A refused command line's message.
  std::string Refused(const std::string& options) const {
    const HubResult result = Replay(options);
    EXPECT_EQ(2, result.status) << result.output;
    return result.errors;
  }

  const TemporaryFolder folder;
};

TEST_F(ReplayedProduct, OfTheSampleHasItsGraphAndResults) {
  const SiteCopy site;
  EXPECT_EQ(3, RunHubUntilUp("--bin " + site.Bin(), RecordAs("run.jsonl")).status);
  EXPECT_EQ(0, Replay().status);
  EXPECT_EQ(3, RunReplay().status);
  ExpectSameShape();
}

TEST_F(ReplayedProduct, FailsInTheSameWays) {
  MadeProduct product;
  product.Plugin("fails.server", "init_fails")
      .Plugin("throws.server", "init_throws", DependsOn("fails.server"))
      .Plugin("refuses.server", "uninit_refuses", DependsOn("throws.server"))
      .Plugin("stopthrows.server", "uninit_throws")
      .BrokenLibrary("broken.server", "no library")
      .BrokenLibrary("gone.server", "");
  product.Site().Remove("bin/gone.server.dll");
  const HubResult run = product.RunUntilUp("", RecordAs("run.jsonl"));
  EXPECT_EQ(0, Replay().status);
  EXPECT_EQ(run.status, RunReplay().status);
  ExpectSameShape();
}

TEST_F(ReplayedProduct, OfALogHasTheGraphOfItsProductAndTheResultsOfTheLog) {
  MadeProduct product;
  product.Plugin("a.server", "init_fails")
      .Plugin("b.server", "uninit_refuses", DependsOn("a.server"));
  const std::string log = Quoted(folder.Path() / "hub.log");
  product.RunUntilUp("--log " + log, RecordAs("run.jsonl"));
  const std::string replay =
      "replay " + log + " --output " + Quoted(folder.Path() / "replay") + " ";
  const HubResult refused = RunHub(replay);
  EXPECT_EQ(2, refused.status);
  EXPECT_THAT(refused.errors, HasSubstr("does not say which plugin waits for which; --bin DIR"));
  EXPECT_EQ(0, RunHub(replay + "--bin " + product.Site().Bin()).status);
  EXPECT_EQ(3, RunReplay().status);
  ExpectSameShape();
}

TEST_F(ReplayedProduct, TakesAtLeastAsLong) {
  MadeProduct product;
  product.Plugin("a.server", "init_takes_two_seconds");
  product.RunUntilUp("", RecordAs("run.jsonl"));
  EXPECT_EQ(0, Replay().status);
  EXPECT_EQ(0, RunReplay().status);
  RunState state;
  for (const RunEvent& event : ReadFlightRecord(folder.Path() / "replay.jsonl").events) {
    state.Apply(event);
  }
  EXPECT_GE(state.Find("a.server")->initMs, 2000);
}

TEST_F(ReplayedProduct, HangsWhereTheRecordedOneDid) {
  MadeProduct product;
  product.Plugin("hangs.server", "init_hangs")
      .Plugin("behind.server", "well_behaved", DependsOn("hangs.server"));
  HubProcess hub(product.Arguments(""), RecordAs("run.jsonl"));
  EXPECT_TRUE(hub.AwaitEvent("init-begin", "hangs.server"));
  hub.RequestStop(StopKind::kInterrupt);
  EXPECT_EQ(4, hub.Wait().status);
  EXPECT_EQ(0, Replay().status);
  HubProcess again("run " + Bin(), RecordAs("replay.jsonl"));
  EXPECT_TRUE(again.AwaitEvent("init-begin", "hangs.server"));
  again.RequestStop(StopKind::kInterrupt);
  EXPECT_EQ(4, again.Wait().status);
  ExpectSameShape();
}

TEST_F(ReplayedProduct, CrashesWhereTheRecordedOneDid) {
  for (const std::string fixture : {"init_crashes", "init_aborts", "init_exits"}) {
    MadeProduct product;
    product.Plugin("bad.server", fixture);
    const HubResult run = product.RunUntilUp("", RecordAs("run.jsonl"));
    fs::remove_all(folder.Path() / "replay");
    EXPECT_EQ(0, Replay().status);
    const HubResult again = RunReplay();
    EXPECT_EQ(run.status, again.status) << fixture;
    EXPECT_EQ(run.signal, again.signal) << fixture;
    ExpectSameShape();
  }
}

TEST_F(ReplayedProduct, HasNoFindingThatTheRecordDoesNotExplain) {
  MadeProduct product;
  product.Element("<SubPlatforms><SubPlatform ID='sub' Version='1.0.0'/></SubPlatforms>")
      .Plugin("a.server", "well_behaved", "<Version>1.2.3</Version>")
      .Plugin("b.server", "well_behaved", "<Version>1.2.3</Version>" + DependsOn("a.server sub"));
  fs::copy_file(Fixture("well_behaved"), product.Site().Path("bin/sub.dll"));
  EXPECT_EQ(0, product.RunUntilUp("", RecordAs("run.jsonl")).status);
  EXPECT_EQ(0, Replay().status);
  const HubResult check = RunHub("check " + Bin() + " --fail-on note");
  EXPECT_EQ(0, check.status) << check.output;
  EXPECT_EQ(0, RunReplay().status);
  ExpectSameShape();
}

TEST_F(ReplayedProduct, GetsTheFaultsThatAreNamed) {
  MadeProduct product;
  product.Plugin("a.server").Plugin("b.server", "well_behaved", DependsOn("a.server"));
  product.RunUntilUp("", RecordAs("run.jsonl"));
  EXPECT_EQ(0, Replay("--fault a.server=fail --fault b.server=slow:1").status);
  const HubResult run = RunReplay();
  EXPECT_EQ(3, run.status);
  EXPECT_THAT(run.output, HasSubstr("a.server   INIT FAILED"));
}

TEST_F(ReplayedProduct, SaysThatAFaultIsInAPluginThatWasNotLoaded) {
  MadeProduct product;
  product.Plugin("a.server").BrokenLibrary("broken.server", "no library");
  product.RunUntilUp("", RecordAs("run.jsonl"));
  const HubResult replay = Replay("--fault a.server=slow:1 --fault broken.server=fail");
  EXPECT_EQ(0, replay.status);
  EXPECT_THAT(replay.output,
              AllOf(HasSubstr("A fault was put into a.server: slow:1.\n"),
                    HasSubstr("A fault was put into broken.server: fail; in the recorded run it "
                              "was not loaded.\n")));
}

TEST_F(ReplayedProduct, IsRefusedForAFaultThatNamesNothing) {
  MadeProduct product;
  product.Plugin("storage.server").RunUntilUp("", RecordAs("run.jsonl"));
  EXPECT_EQ(
      "HUB: --fault: the run has no plugin \"stroage.server\"; did you mean \"storage.server\"?\n",
      Refused("--fault stroage.server=fail"));
  EXPECT_EQ(
      "HUB: --fault: \"burn\" is no fault; there are fail, hang, crash and "
      "slow:MILLISECONDS\n",
      Refused("--fault storage.server=burn"));
  EXPECT_EQ(
      "HUB: --fault: \"storage.server\" names no fault: storage.server=fail, =hang, =crash "
      "or =slow:500\n",
      Refused("--fault storage.server"));
  EXPECT_EQ("HUB: --speed: \"0\" is no number above 0\n", Refused("--speed 0"));
  EXPECT_EQ("HUB: --output and --each: only one of them\n", Refused("--each fail"));
  EXPECT_FALSE(fs::exists(folder.Path() / "replay"));
  fs::create_directories(folder.Path() / "replay" / "x");
  EXPECT_EQ("HUB: --output: " + LocalFromPath(folder.Path() / "replay") +
                " is not empty; a replay needs a new or empty folder\n",
            Refused(""));
}

/// A record whose IDs would write outside of the folder, if they named files.
TEST_F(ReplayedProduct, WithHostileIdsStaysInItsFolder) {
  const std::string ids[] = {"../../up", "/abs",   "a/../b", "A.server", "a.server",
                             "",         "x\\\\y", "nul",    "a\\nb",    std::string(5000, 'l')};
  std::string record = R"({"record":"head","schema":1,"run":"r","ns":0})";
  for (const std::string& id : ids) {
    record += "\n{\"record\":\"plugin\",\"id\":\"" + id +
              R"(","kind":"server","version":"<1>","library":"","dependsOn":["/abs"]})";
  }
  fs::create_directories(folder.Path() / "deep");
  folder.Write("deep/run.jsonl", record + "\n");
  const fs::path replay = folder.Path() / "deep" / "replay";
  const HubResult result = RunHub("replay " + Quoted(folder.Path() / "deep" / "run.jsonl") +
                                  " --output " + Quoted(replay));
  EXPECT_EQ(0, result.status) << result.errors;
  std::size_t libraries = 0;
  for (const auto& entry : fs::recursive_directory_iterator(folder.Path())) {
    if (entry.is_directory() || entry.path().filename() == "run.jsonl") continue;
    const std::string relative = entry.path().lexically_relative(replay).generic_string();
    EXPECT_NE("..", relative.substr(0, 2)) << entry.path();
    libraries += entry.path().extension() == ".dll" ? 1 : 0;
  }
  EXPECT_EQ(std::size(ids), libraries);
  const HubResult model = RunHub("model --bin " + Quoted(replay / "bin"));
  EXPECT_EQ(0, model.status) << model.errors;
}

/// A record of a run with so many plugins, each but the first behind another one.
std::string RecordOfMany(std::size_t count) {
  std::string record = R"({"record":"head","schema":1,"run":"r","ns":0})";
  for (std::size_t i = 0; i < count; ++i) {
    record += "\n{\"record\":\"plugin\",\"id\":\"p" + std::to_string(i) +
              R"(.server","kind":"server","version":"1.0.0","library":"","dependsOn":[)" +
              (i == 0 ? "" : "\"p" + std::to_string(i / 2) + ".server\"") + "]}";
  }
  return record + "\n";
}

TEST_F(ReplayedProduct, OfManyPluginsIsWrittenWhole) {
  folder.Write("run.jsonl", RecordOfMany(900));
  EXPECT_EQ(0, Replay().status);
  const nlohmann::json model = RunHub("model " + Bin()).Json();
  EXPECT_EQ(900U, model["ProductModel"]["ServerPluginDescriptions"].size());
}

TEST_F(ReplayedProduct, OfManyPluginsStartsAndStopsThemAll) {
  folder.Write("run.jsonl", RecordOfMany(150));
  EXPECT_EQ(0, Replay().status);
  const HubResult run = RunReplay();
  EXPECT_EQ(0, run.status);
  EXPECT_THAT(run.output, HasSubstr("\nup: all 150 plugins started\n"));
}

TEST_F(ReplayedProduct, WithEachFaultShowsWhoSuffers) {
  MadeProduct product;
  product.Plugin("a.server").Plugin("b.server", "well_behaved", DependsOn("a.server"));
  product.RunUntilUp("", RecordAs("run.jsonl"));
  const std::string each = "replay " + Quoted(folder.Path() / "run.jsonl") + " --each ";
  const HubResult hang = RunHub(each + "hang");
  EXPECT_EQ(0, hang.status) << hang.errors;
  EXPECT_THAT(hang.output,
              AllOf(HasSubstr("\na.server hangs: never up; 1 plugin never starts: b.server; exit "
                              "status 4\n"),
                    HasSubstr("\nb.server hangs: never up; exit status 4\n"),
                    HasSubstr("\na.server          1            1")));
  const HubResult fail = RunHub(each + "fail");
  EXPECT_THAT(fail.output, AllOf(HasSubstr("1 plugin starts although it failed: b.server"),
                                 HasSubstr("b.server fails: up after"), Not(HasSubstr("never"))));
}

}  // namespace
