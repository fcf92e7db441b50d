// The flight record that every run leaves, and where.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <set>
#include <string>
#include <vector>

#include "reference/os/LocalText.h"
#include "tests/system/MadeProduct.h"
#include "workbench/record/FlightRecord.h"
#include "workbench/record/RunState.h"

namespace fs = std::filesystem;
using testing::EndsWith;
using testing::HasSubstr;
using testing::StartsWith;

namespace {

TEST(Record, LiesInTheUsersStateFolderAndIsNamedInTheObject) {
  TemporaryFolder state;
  HubSettings settings;
  settings.state = state.Path();
  MadeProduct product;
  const HubResult result = product.Plugin("a.server").RunUntilUp("--json", settings);
  EXPECT_EQ(0, result.status) << result.errors;
  const std::vector<fs::path> records = RecordsBelow(state.Path());
  ASSERT_EQ(1U, records.size());
  EXPECT_EQ(LocalFromPath(records[0]), result.Json()["record"].get<std::string>());
  std::set<fs::path> beside;
  for (const auto& entry : fs::directory_iterator(records[0].parent_path())) {
    if (entry.path() != records[0]) beside.insert(entry.path().filename());
  }
  EXPECT_EQ(std::set<fs::path>{"lock"}, beside);
}

TEST(Record, HasTheStopRequestWhenItsSecondsHavePassed) {
  MadeProduct product;
  HubSettings settings;
  settings.record = product.Site().Path("run.jsonl");
  product.Plugin("a.server").Run("--seconds 1.5", settings);
  std::int64_t initialised = 0;
  std::int64_t requested = 0;
  for (const RunEvent& event : ReadFlightRecord(settings.record).events) {
    const bool ends = event.kind == RunEvent::Kind::kPhaseEnd;
    if (ends && event.phase == RunPhase::kFrameInit) initialised = event.nanoseconds;
    if (event.kind == RunEvent::Kind::kStopRequest) {
      EXPECT_EQ("--seconds 1.5", event.text);
      requested = event.nanoseconds;
    }
  }
  EXPECT_LT(0, initialised);
  EXPECT_LE(initialised + 1'500'000'000, requested);
}

TEST(Record, ReadsAsTheRunThatItIsOf) {
  MadeProduct product;
  product.Plugin("a.server").Plugin("b.server", "init_fails", DependsOn("a.server"));
  HubSettings settings;
  settings.record = product.Site().Path("run.jsonl");
  EXPECT_EQ(3, product.RunUntilUp("", settings).status);
  const FlightRecord record = ReadFlightRecord(settings.record);
  EXPECT_EQ(0U, record.unreadableLines);
  EXPECT_EQ("NVX", record.head.product);
  EXPECT_EQ("2.6.0", record.head.productVersion);
  ASSERT_EQ(2U, record.plugins.size());
  EXPECT_EQ("server", record.plugins[1].kind);
  EXPECT_EQ(std::vector<std::string>{"a.server"}, record.plugins[1].dependsOn);
  EXPECT_EQ(static_cast<std::int64_t>(fs::file_size(Fixture("init_fails"))),
            record.plugins[1].librarySize);
  RunState state;
  for (const PluginHead& plugin : record.plugins) state.AddPlugin(plugin);
  std::int64_t last = record.head.nanoseconds;
  for (const RunEvent& event : record.events) {
    EXPECT_GE(event.nanoseconds, last);
    last = event.nanoseconds;
    state.Apply(event);
  }
  EXPECT_EQ("a.server", state.Plugins()[1].waitedFor);
  EXPECT_EQ(PluginRun::State::kInitFailed, state.Plugins()[1].started);
  EXPECT_TRUE(state.Up());
  ASSERT_TRUE(state.End());
  EXPECT_EQ("degraded", state.End()->status);
  EXPECT_EQ(3, state.End()->number);
}

TEST(Record, OfTheLastTwentyRunsIsKept) {
  TemporaryFolder state;
  HubSettings settings;
  settings.state = state.Path();
  MadeProduct product;
  SiteCopy broken;
  broken.Remove("Product.xml");
  for (int i = 0; i < 22; ++i) RunHub("run --bin " + broken.Bin(), settings);
  EXPECT_EQ(20U, RecordsBelow(state.Path()).size());
}

TEST(Record, IsNotWrittenWhenNobodyWantsIt) {
  TemporaryFolder state;
  HubSettings settings;
  settings.state = state.Path();
  MadeProduct product;
  const fs::path log = product.Plugin("a.server").Site().Path("hub.log");
  HubProcess hub(product.Arguments("--json --no-record --log \"" + LocalFromPath(log) + "\""),
                 settings);
  EXPECT_TRUE(hub.AwaitFile(log, "[host] Up after"));
  hub.RequestStop(StopKind::kTerminate);
  const HubResult result = hub.Wait();
  EXPECT_EQ(0, result.status) << result.errors;
  EXPECT_TRUE(RecordsBelow(state.Path()).empty());
  EXPECT_EQ(nullptr, result.Json()["record"]);
}

TEST(Record, ThatHasNoFolderIsReportedAndDegradesTheRun) {
  MadeProduct product;
  HubSettings settings;
  settings.state = product.Plugin("a.server").Site().Path("Product.xml");
  const HubResult result = product.RunUntilUp("--events", settings);
  EXPECT_EQ(3, result.status);
  EXPECT_THAT(result.errors, StartsWith("HUB: error: no flight record: "));
  EXPECT_THAT(result.errors, EndsWith("; --no-record runs without one, --record FILE writes "
                                      "elsewhere\n"));
}

TEST(Record, ThatWasAskedForAndCannotBeWrittenIsWrongUse) {
  MadeProduct product;
  const HubResult result = product.Run("--record no-such-folder/run.jsonl");
  EXPECT_EQ(2, result.status);
  EXPECT_THAT(result.errors, HasSubstr("no-such-folder"));
}

}  // namespace
