// Products whose start or stop never ends by itself: which plugins HUB waits for, and how long.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <chrono>
#include <cstddef>
#include <filesystem>
#include <regex>
#include <string>

#include "reference/os/LocalText.h"
#include "tests/system/MadeProduct.h"

using nlohmann::json;
using testing::AllOf;
using testing::HasSubstr;
using testing::StartsWith;

namespace {

constexpr char kCycle[] = "a.server \u2192 b.server \u2192 a.server";

MadeProduct& Cycle(MadeProduct& product) {
  return product.Plugin("a.server", "well_behaved", DependsOn("b.server"))
      .Plugin("b.server", "well_behaved", DependsOn("a.server"))
      .Plugin("behind.server", "well_behaved", DependsOn("b.server"))
      .Plugin("free.server");
}

/// Runs the product with a cycle, and stops it once the only plugin that can start has started.
HubResult RunCycle(MadeProduct& product, const std::string& arguments,
                   const HubSettings& settings = {}) {
  HubProcess hub(Cycle(product).Arguments(arguments), settings);
  EXPECT_TRUE(hub.AwaitRecord(R"("event":"task-end")"));
  hub.RequestStop(StopKind::kInterrupt);
  return hub.Wait();
}

TEST(CycleOfDependencies, IsNamedBeforeTheStartWithWhoDeclaresIt) {
  MadeProduct product;
  const HubResult result = RunCycle(product, "--stop-timeout 1");
  EXPECT_EQ(4, result.status);
  EXPECT_THAT(result.output, HasSubstr("error: "));
  EXPECT_THAT(result.output, HasSubstr(kCycle));
  EXPECT_THAT(result.output, HasSubstr("behind.server"));
  EXPECT_THAT(result.output, HasSubstr("a.server.xml:4"));
  EXPECT_THAT(result.output, HasSubstr("b.server.xml:4"));
}

TEST(CycleOfDependencies, IsWaitedForAndTheStopLeavesAfterItsLimit) {
  MadeProduct product;
  HubSettings settings;
  settings.record = product.Site().Path("run.jsonl");
  const HubResult result = RunCycle(product, "--json --stop-timeout 1", settings);
  EXPECT_EQ(4, result.status);
  EXPECT_THAT(result.errors,
              HasSubstr("what is left can never stop, and 1 s have passed: left behind: "));
  EXPECT_THAT(result.output, HasSubstr(kCycle));
  const json run = result.Json();
  EXPECT_EQ("left-behind", run["status"]);
  EXPECT_THAT(run["sentence"].get<std::string>(),
              StartsWith("left behind: a.server never started: it waits for b.server; b.server "
                         "never started: it waits for a.server (stopped by "));
  EXPECT_EQ("waiting", run["plugins"][0]["state"]);
  const std::string lines = product.Site().Read("run.jsonl");
  EXPECT_THAT(lines.substr(lines.rfind('\n', lines.size() - 2)),
              AllOf(HasSubstr("\"event\":\"end\""), HasSubstr("left-behind")));
}

TEST(CycleOfDependencies, IsShownAsWhatIsWaitedFor) {
  MadeProduct product;
  HubProcess hub(Cycle(product).Arguments("--stop-timeout 1"));
  EXPECT_TRUE(hub.AwaitOutput(std::string("1 of 4 started; waiting for the cycle ") + kCycle));
  hub.RequestStop(StopKind::kTerminate);
  EXPECT_EQ(4, hub.Wait().status);
}

TEST(CycleOfDependencies, LeavesTheStopAfterFiveSecondsByItself) {
  MadeProduct product;
  const HubResult result = RunCycle(product, "");
  EXPECT_EQ(4, result.status);
  EXPECT_THAT(result.errors,
              HasSubstr("what is left can never stop, and 5 s have passed: left behind: "));
}

TEST(PluginThatDependsOnItself, IsNamedBeforeTheStart) {
  MadeProduct product;
  product.Plugin("a.server", "well_behaved", DependsOn("a.server"));
  const HubResult result = product.Run("--start-timeout 1 --stop-timeout 1");
  EXPECT_EQ(4, result.status);
  EXPECT_THAT(result.output, HasSubstr("\"a.server\" depends on itself: it waits for ever"));
  EXPECT_THAT(result.output, HasSubstr("a.server \u2192 a.server"));
}

TEST(SubPlatformWithoutAnId, IsNamedAndNeverCountedInTheStop) {
  MadeProduct product;
  product.Element("<SubPlatforms>\n<SubPlatform/></SubPlatforms>").Plugin("a.server");
  const HubResult result = product.RunUntilUp("--stop-timeout 1");
  EXPECT_EQ(4, result.status);
  EXPECT_THAT(result.output, HasSubstr("Product.xml:2"));
  EXPECT_THAT(result.output,
              HasSubstr("the stop of a sub platform without an ID is never counted"));
}

TEST(PluginThatHangs, InInitIsNamedAndLeftBehindAfterTheStopsLimit) {
  MadeProduct product;
  product.Plugin("hangs.server", "init_hangs").Plugin("a.server");
  HubProcess hub(product.Arguments("--stop-timeout 1"));
  EXPECT_TRUE(hub.AwaitOutput("1 of 2 started; waiting for hangs.server ("));
  hub.RequestStop(StopKind::kInterrupt);
  const HubResult result = hub.Wait();
  EXPECT_EQ(4, result.status);
  EXPECT_THAT(result.output, HasSubstr("NOT RETURNED"));
  EXPECT_TRUE(std::regex_search(
      result.output,
      std::regex(R"(\n  1 of 2 started; waiting for hangs\.server \(\d+\.\d s\)\n)")))
      << result.output;
  EXPECT_THAT(result.output, HasSubstr("\nleft behind: hangs.server has not returned from its Init "
                                       "(stopped by "));
}

TEST(PluginThatHangs, IsNamedOnceASecondAtMost) {
  using std::chrono::steady_clock;
  MadeProduct product;
  product.Plugin("hangs.server", "init_hangs");
  const steady_clock::time_point begin = steady_clock::now();
  HubProcess hub(product.Arguments("--stop-timeout 0.1"));
  const std::string line = "waiting for hangs.server (";
  EXPECT_TRUE(hub.AwaitOutput(line));
  hub.RequestStop(StopKind::kInterrupt);
  const std::string output = hub.Wait().output;
  const auto seconds = std::chrono::floor<std::chrono::seconds>(steady_clock::now() - begin);
  int lines = 0;
  for (std::size_t at = output.find(line); at != std::string::npos;
       at = output.find(line, at + 1)) {
    ++lines;
  }
  EXPECT_LE(lines, seconds.count());
}

TEST(PluginThatHangs, IsNamedInTheLogToo) {
  MadeProduct product;
  product.Plugin("hangs.server", "init_hangs");
  const std::filesystem::path log = product.Site().Path("hub.log");
  HubProcess hub(product.Arguments("--stop-timeout 0.5 --log \"" + LocalFromPath(log) + "\""));
  EXPECT_TRUE(hub.AwaitFile(log, "[host] 0 of 1 started; waiting for hangs.server ("));
  hub.RequestStop(StopKind::kInterrupt);
  EXPECT_EQ(4, hub.Wait().status);
}

TEST(PluginThatHangs, InUnInitIsNamedAndLeftBehindAfterTheStopsLimit) {
  MadeProduct product;
  product.Plugin("a.server").Plugin("hangs.server", "uninit_hangs", DependsOn("a.server"));
  const HubResult result = product.RunUntilUp("--json --stop-timeout 1");
  EXPECT_EQ(4, result.status);
  const json run = result.Json();
  EXPECT_THAT(
      run["sentence"].get<std::string>(),
      StartsWith("left behind: hangs.server has not returned from its UnInit (stopped by "));
  EXPECT_EQ("in-uninit", run["plugins"][1]["state"]);
  EXPECT_EQ("started", run["plugins"][0]["state"]);
}

TEST(StopTimeout, OfNoTimeLeavesBeforeAnyPluginIsStopped) {
  MadeProduct product;
  const HubResult result = product.Plugin("a.server").RunUntilUp("--json --stop-timeout 0");
  EXPECT_EQ(4, result.status);
  EXPECT_THAT(result.Json()["sentence"].get<std::string>(),
              StartsWith("left behind: the stop of a.server was not counted (stopped by "));
}

TEST(StartTimeout, StopsAProductThatIsNotUpInTime) {
  MadeProduct product;
  product.Plugin("hangs.server", "init_hangs").Plugin("a.server");
  const HubResult result = product.Run("--json --start-timeout 1 --stop-timeout 1");
  EXPECT_EQ(4, result.status);
  EXPECT_THAT(result.Json()["sentence"].get<std::string>(),
              HasSubstr("(stopped by --start-timeout 1)"));
}

TEST(StartTimeout, LeavesAProductAloneThatIsUpInTime) {
  MadeProduct product;
  product.Plugin("a.server");
  const HubResult result = product.Run("--start-timeout 10 --seconds 11");
  EXPECT_EQ(0, result.status) << result.output;
  EXPECT_THAT(result.output, HasSubstr("\nStopping (--seconds 11).\n"));
}

TEST(StopRequest, BeforeTheProductIsUpCutsItShort) {
  MadeProduct product;
  product.Plugin("level0.server");
  for (int i = 1; i < 15; ++i) {
    product.Plugin("level" + std::to_string(i) + ".server", "well_behaved",
                   DependsOn("level" + std::to_string(i - 1) + ".server"));
  }
  HubProcess hub(product.Arguments("--json --full-sleep"));  // a level every 200 ms
  ASSERT_TRUE(hub.AwaitRecord("init-end"));
  hub.RequestStop(StopKind::kTerminate);
  const HubResult result = hub.Wait();
  EXPECT_EQ(4, result.status) << result.errors;
  EXPECT_EQ("cut-short", result.Json()["status"]);
}

TEST(StopRequest, DoesNotWaitForAPluginInItsInit) {
  MadeProduct product;
  product.Plugin("hangs.server", "init_hangs");
  HubProcess hub(product.Arguments("--json"));
  ASSERT_TRUE(hub.AwaitRecord("init-begin"));
  hub.RequestStop(StopKind::kTerminate);
  const HubResult result = hub.Wait();
  EXPECT_EQ(4, result.status) << result.errors;
  EXPECT_EQ("left behind: hangs.server has not returned from its Init",
            result.Json()["sentence"].get<std::string>().substr(0, 56));
}

TEST(StopRequest, ASecondOneLeavesAtOnceWithTheTableAndTheObject) {
  MadeProduct product;
  product.Plugin("hangs.server", "uninit_hangs");
  HubProcess table(product.Arguments(""));
  ASSERT_TRUE(table.AwaitOutput("Up after"));
  table.RequestStop(StopKind::kInterrupt);
  ASSERT_TRUE(table.AwaitOutput("0 of 1 stopped; waiting for hangs.server"));
  table.RequestStop(StopKind::kTerminate);
  const HubResult shown = table.Wait();
  EXPECT_EQ(4, shown.status);
  EXPECT_THAT(shown.errors, HasSubstr("a second request: left behind: "));
  EXPECT_THAT(shown.output,
              HasSubstr("\nleft behind: hangs.server has not returned from its UnInit"));
}

TEST(StopRequest, AfterTheTimeIsUpIsAFirstOne) {
  MadeProduct product;
  product.Plugin("hangs.server", "uninit_hangs");
  HubProcess hub(product.Arguments("--seconds 10"));
  ASSERT_TRUE(hub.AwaitOutput("Stops by itself; Ctrl-C stops it now.\n"));
  ASSERT_TRUE(hub.AwaitOutput("0 of 1 stopped; waiting for hangs.server"));
  hub.RequestStop(StopKind::kInterrupt);
  ASSERT_TRUE(hub.AwaitOutput(" again ends it at once.\n"));
  EXPECT_TRUE(hub.AwaitOutput("\nIt is stopping already; "));
  hub.RequestStop(StopKind::kInterrupt);
  const HubResult result = hub.Wait();
  EXPECT_EQ(4, result.status);
  EXPECT_THAT(result.errors, HasSubstr("a second request: left behind: "));
}

}  // namespace
