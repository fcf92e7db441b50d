// What HUB writes to standard output and standard error: only HUB writes to standard output, and
// output that cannot be written is reported.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <regex>
#include <set>
#include <string>
#include <vector>

#include "reference/os/LocalText.h"
#include "tests/system/MadeProduct.h"

using nlohmann::json;
using testing::EndsWith;
using testing::HasSubstr;
using testing::Not;
using testing::StartsWith;

namespace {

std::set<std::string> Keys(const json& object) {
  std::set<std::string> keys;
  for (const auto& item : object.items()) keys.insert(item.key());
  return keys;
}

/// The members that the object has however the run ended.
const std::set<std::string> kMembers = {
    "schema",         "product",   "status",  "sentence", "exitStatus", "Frame_Init",
    "Frame_Start",    "LoadState", "Handles", "Timing",   "Notified",   "phases",
    "CallbackResult", "plugins",   "record",  "findings", "totals"};

/// The number of plugin rows in the table at the end of `output`.
int Rows(const std::string& output) {
  const std::size_t table = output.find("\n\nPlugin ");
  if (table == std::string::npos) return -1;
  int rows = 0;
  for (std::size_t at = table; (at = output.find("\nplugin", at)) != std::string::npos; ++at) {
    ++rows;
  }
  return rows;
}

/// What HUB prints, without the lines on who is waited for, and with N for the milliseconds and WHO
/// for the request.
std::string WithoutTimes(const std::string& output) {
  const std::string lines =
      std::regex_replace(output, std::regex("  [^\n]*waiting for[^\n]*\n"), "");
  const std::string times = std::regex_replace(lines, std::regex(" +\\d+ ms"), " N ms");
  return std::regex_replace(times, std::regex("Stopping \\([^)]*\\)"), "Stopping (WHO)");
}

/// The texts of HUB's own lines in a log, each with its level.
std::vector<std::string> HostLines(const std::string& log) {
  std::vector<std::string> lines;
  const std::regex line(R"( \[(\d)\] \[\d+\] \[host\] ([^\n]*))");
  for (std::sregex_iterator found(log.begin(), log.end(), line), end; found != end; ++found) {
    const std::string text = WithoutTimes((*found)[2]);
    if (text.find("waiting for") == std::string::npos)
      lines.push_back((*found)[1].str() + " " + text);
  }
  return lines;
}

TEST(Run, PrintsAndLogsItsStepsInTheirOrder) {
  MadeProduct product;
  product.Plugin("a.server", "uninit_refuses");
  const std::string log = LocalFromPath(product.Site().Path("hub.log"));
  const HubResult result = product.RunUntilUp("--log \"" + log + "\"");
  EXPECT_EQ(3, result.status);
  EXPECT_EQ("", result.errors);
  EXPECT_EQ(
      "a.server                 started in N ms\n"
      "Up after N ms. Ctrl-C stops it.\n"
      "Stopping (WHO).\n"
      "a.server                 STOP REFUSED: its UnInit returned false; its library stays mapped\n"
      "\n"
      "Plugin    Start               Init   Stop              UnInit   Reason\n"
      "-----------------------------------------------------------------\n"
      "a.server  started N ms   STOP REFUSED N ms   its UnInit returned false\n"
      "-----------------------------------------------------------------\n"
      "1 plugin  total N ms   total N ms\n"
      "degraded: the one plugin started; a.server refused to stop\n",
      WithoutTimes(result.output));
  std::vector<std::string> lines = HostLines(product.Site().Read("hub.log"));
  ASSERT_FALSE(lines.empty());
  EXPECT_THAT(lines.front(), StartsWith("3 HUB "));
  lines.erase(lines.begin());
  EXPECT_EQ(
      (std::vector<std::string>{"3 Up after N ms. Ctrl-C stops it.", "3 Stopping (WHO).",
                                "5 degraded: the one plugin started; a.server refused to stop"}),
      lines);
}

TEST(RunJson, IsAWholeObjectAlthoughAPluginPrints) {
  MadeProduct product;
  const HubResult result = product.Plugin("prints.server", "init_prints").RunUntilUp("--json");
  EXPECT_EQ(0, result.status) << result.errors;
  EXPECT_EQ("up", result.Json()["status"]);
  EXPECT_THAT(result.output, StartsWith("{\n  \"schema\": 2,\n"));
  EXPECT_THAT(result.output, EndsWith("\n}\n"));
  EXPECT_THAT(result.errors, HasSubstr("printed by printf\n"));
  EXPECT_THAT(result.errors, HasSubstr("printed by cout\n"));
}

TEST(RunJson, HasTheSameMembersWhateverEndedTheRun) {
  MadeProduct good;
  EXPECT_EQ(kMembers, Keys(good.Plugin("a.server").RunUntilUp("--json").Json()));
  SiteCopy broken;
  broken.Remove("Product.xml");
  const HubResult failed = RunHub("run --json --bin " + broken.Bin());
  EXPECT_EQ(1, failed.status);
  EXPECT_EQ(kMembers, Keys(failed.Json()));
  EXPECT_EQ("failed", failed.Json()["status"]);
  EXPECT_EQ(nullptr, failed.Json()["Frame_Start"]);
  MadeProduct left;
  left.Plugin("a.server", "uninit_hangs");
  EXPECT_EQ(kMembers, Keys(left.RunUntilUp("--json --stop-timeout 1").Json()));
}

TEST(RunJson, IsAWholeObjectWithoutTheFramesLibrary) {
  const SiteCopy site;
  HubSettings settings;
  settings.program = CopyHubWithoutFrame(site.Path("bin"));
  const HubResult result = RunHub("run --json", settings);
  const std::string sentence =
      "the frame's library, which belongs beside HUB: " +
      LocalFromPath(site.Path("bin") / PathFromLocal(TEV_FRAME).filename()) + " does not exist";
  EXPECT_EQ(1, result.status);
  EXPECT_EQ("HUB: " + sentence + "\n", result.errors);
  const json run = result.Json();
  EXPECT_EQ(kMembers, Keys(run));
  EXPECT_EQ("failed", run["status"]);
  EXPECT_EQ("failed: " + sentence, run["sentence"]);
  EXPECT_EQ(1, run["exitStatus"]);
  EXPECT_EQ(nullptr, run["Frame_Init"]);
  EXPECT_EQ(json::array({{{"severity", "error"}, {"text", sentence}}}), run["findings"]);
}

TEST(RunJson, IsAWholeObjectAfterASecondStopRequest) {
  MadeProduct product;
  product.Plugin("a.server").Plugin("hangs.server", "uninit_hangs", DependsOn("a.server"));
  HubProcess hub(product.Arguments("--json"));
  ASSERT_TRUE(hub.AwaitUp());
  hub.RequestStop(StopKind::kInterrupt);
  ASSERT_TRUE(hub.AwaitRecord("\"event\":\"uninit-begin\""));
  hub.RequestStop(StopKind::kTerminate);
  const HubResult result = hub.Wait();
  EXPECT_EQ(4, result.status);
  EXPECT_THAT(result.errors, HasSubstr("a second request: left behind: "));
  const json run = result.Json();
  EXPECT_EQ(kMembers, Keys(run));
  EXPECT_EQ("left-behind", run["status"]);
  EXPECT_EQ(4, run["exitStatus"]);
  EXPECT_THAT(
      run["sentence"].get<std::string>(),
      StartsWith("left behind: hangs.server has not returned from its UnInit (stopped by "));
  EXPECT_EQ("in-uninit", run["plugins"][1]["state"]);
}

TEST(RunJson, HasWhatEachPluginWaitedForAndItsTimes) {
  MadeProduct product;
  product.Plugin("a.server").Plugin("b.server", "well_behaved", DependsOn("a.server"));
  const json plugin = product.RunUntilUp("--json").Json()["plugins"][1];
  EXPECT_EQ((std::set<std::string>{"id", "kind", "version", "dependsOn", "waitedFor", "state",
                                   "reason", "initMs", "uninitMs", "startedAt", "thread"}),
            Keys(plugin));
  EXPECT_EQ("b.server", plugin["id"]);
  EXPECT_EQ("server", plugin["kind"]);
  EXPECT_EQ(json({"a.server"}), plugin["dependsOn"]);
  EXPECT_EQ("a.server", plugin["waitedFor"]);
  EXPECT_EQ("stopped", plugin["state"]);
  EXPECT_EQ(nullptr, plugin["reason"]);
  EXPECT_TRUE(plugin["initMs"].is_number_unsigned());
  EXPECT_TRUE(plugin["thread"].is_number_unsigned());
}

TEST(RunEvents, AreOneObjectALineWithUpAmongThem) {
  MadeProduct product;
  const HubResult result = product.Plugin("a.server").RunUntilUp("--events");
  EXPECT_EQ(0, result.status) << result.errors;
  std::vector<std::string> events;
  for (const json& event : result.Events()) {
    events.push_back(event.value("event", event["record"].get<std::string>()));
  }
  const std::vector<std::string> expected = {
      "head",         "phase-begin", "phase-end",   "plugin",     "phase-begin", "phase-end",
      "phase-begin",  "ready",       "posted",      "task-begin", "load-begin",  "load-end",
      "init-begin",   "init-end",    "counted",     "task-end",   "phase-end",   "up",
      "stop-request", "phase-begin", "phase-begin", "ready",      "posted",      "task-begin",
      "uninit-begin", "uninit-end",  "counted",     "task-end",   "phase-end",   "phase-begin",
      "phase-end",    "phase-end",   "phase-begin", "phase-end",  "end"};
  EXPECT_EQ(expected, events);
}

TEST(RunEvents, OfTheRunItselfAreWhole) {
  MadeProduct product;
  std::vector<json> events =
      product.Plugin("a.server", "uninit_refuses").RunUntilUp("--events").Events();
  std::vector<json> ofTheRun;
  for (json& event : events) {
    const std::string kind = event.value("event", "");
    if (kind != "up" && kind != "stop-request" && kind != "end") continue;
    EXPECT_EQ(1U, event.erase("ns"));
    EXPECT_EQ(1U, event.erase("thread"));
    ofTheRun.push_back(event);
  }
  ASSERT_EQ(3U, ofTheRun.size());
  EXPECT_LE(0, ofTheRun[0].value("ms", -1));
  EXPECT_GT(10'000, ofTheRun[0].value("ms", -1));
  EXPECT_EQ((std::set<std::string>{"record", "event", "text"}), Keys(ofTheRun[1]));
  EXPECT_EQ(json::parse(R"({"record":"event","event":"end","status":"degraded","exitStatus":3,)"
                        R"("totals":{"plugins":1,"started":1,"initFailed":0,"notLoaded":0,)"
                        R"("stopped":0,"stopRefused":1},)"
                        R"("text":"degraded: the one plugin started; a.server refused to stop"})"),
            ofTheRun[2]);
}

TEST(RunEvents, ReachTheReaderAsTheyHappen) {
  MadeProduct product;
  HubProcess hub(product.Plugin("a.server").Arguments("--events"));
  EXPECT_TRUE(hub.AwaitOutput("\"event\":\"up\""));
  hub.RequestStop(StopKind::kTerminate);
  EXPECT_EQ(0, hub.Wait().status);
}

TEST(Table, HasColorsOnlyWhenAskedFor) {
  MadeProduct product;
  product.Plugin("a.server", "init_fails");
  EXPECT_THAT(product.RunUntilUp("").output, Not(HasSubstr("\x1b[")));
  EXPECT_THAT(product.RunUntilUp("--color never").output, Not(HasSubstr("\x1b[")));
  const HubResult colored = product.RunUntilUp("--color always");
  EXPECT_THAT(colored.output, HasSubstr("\x1b[31ma.server"));
  EXPECT_THAT(colored.output, Not(HasSubstr("\x1b[K")));
}

TEST(Table, OfManyPluginsIsFoldedUnlessAllAreAskedFor) {
  MadeProduct product;
  for (int i = 0; i < 60; ++i) product.Plugin("plugin" + std::to_string(i) + ".server");
  const HubResult folded = product.RunUntilUp("");
  EXPECT_EQ(0, folded.status) << folded.errors;
  EXPECT_EQ(40, Rows(folded.output));
  EXPECT_THAT(folded.output,
              HasSubstr("\nand 20 more plugins that need no attention (--all shows them)\n"));
  const HubResult all = product.RunUntilUp("--all");
  EXPECT_EQ(0, all.status) << all.errors;
  EXPECT_EQ(60, Rows(all.output));
  EXPECT_THAT(all.output, Not(HasSubstr("that need no attention")));
}

TEST(SecondHub, OnTheSameProductSaysSo) {
  RunningProduct first;
  const HubResult second = first.RunAgain(first.Site().Bin());
  EXPECT_EQ(0, second.status) << second.errors;
  EXPECT_THAT(second.output,
              HasSubstr("warning: another HUB runs this product at the same time; both use its "
                        "files\n"));
  EXPECT_EQ(0, first.Stop().status);
  EXPECT_THAT(first.RunAgain(first.Site().Bin()).output, Not(HasSubstr("another HUB")));
}

}  // namespace
