// What HUB writes where: standard output is its own, and what cannot be written is said.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <set>
#include <string>
#include <vector>

#include "reference/os/LocalText.h"
#include "tests/system/MadeProduct.h"

using nlohmann::json;
using testing::HasSubstr;
using testing::Not;

namespace {

std::set<std::string> Keys(const json& object) {
  std::set<std::string> keys;
  for (const auto& item : object.items()) keys.insert(item.key());
  return keys;
}

TEST(RunJson, IsAWholeObjectAlthoughAPluginPrints) {
  MadeProduct product;
  const HubResult result = product.Plugin("prints.server", "init_prints").Run("--json --seconds 1");
  EXPECT_EQ(0, result.status) << result.errors;
  EXPECT_EQ("up", result.Json()["status"]);
  EXPECT_THAT(result.errors, HasSubstr("printed by printf\n"));
  EXPECT_THAT(result.errors, HasSubstr("printed by cout\n"));
}

TEST(RunJson, HasTheSameMembersWhateverEndedTheRun) {
  const std::set<std::string> members = {
      "schema",         "product",   "status",  "sentence", "exitStatus", "Frame_Init",
      "Frame_Start",    "LoadState", "Handles", "Timing",   "Notified",   "phases",
      "CallbackResult", "plugins",   "record",  "findings", "totals"};
  MadeProduct good;
  EXPECT_EQ(members, Keys(good.Plugin("a.server").Run("--json --seconds 0.5").Json()));
  SiteCopy broken;
  broken.Remove("Product.xml");
  const HubResult failed = RunHub("run --json --bin " + broken.Bin());
  EXPECT_EQ(1, failed.status);
  EXPECT_EQ(members, Keys(failed.Json()));
  EXPECT_EQ("failed", failed.Json()["status"]);
  EXPECT_EQ(nullptr, failed.Json()["Frame_Start"]);
  MadeProduct left;
  left.Plugin("a.server", "uninit_hangs");
  EXPECT_EQ(members, Keys(left.Run("--json --seconds 0.5 --stop-timeout 1").Json()));
}

TEST(RunJson, TellsOfEachPluginWhatItWaitedForAndWhatItCost) {
  MadeProduct product;
  product.Plugin("a.server").Plugin("b.server", "well_behaved", DependsOn("a.server"));
  const json plugin = product.Run("--json --seconds 1").Json()["plugins"][1];
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
  const HubResult result = product.Plugin("a.server").Run("--events --seconds 1");
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

TEST(RunEvents, ReachTheReaderAsTheyHappen) {
  MadeProduct product;
  HubProcess hub(product.Plugin("a.server").Arguments("--events"));
  EXPECT_TRUE(hub.AwaitOutput("\"event\":\"up\""));
  hub.AskToStop(StopKind::kTerminate);
  EXPECT_EQ(0, hub.Wait().status);
}

TEST(Table, HasColorsOnlyWhenAskedFor) {
  MadeProduct product;
  product.Plugin("a.server", "init_fails");
  EXPECT_THAT(product.Run("--seconds 0.5").output, Not(HasSubstr("\x1b[")));
  EXPECT_THAT(product.Run("--seconds 0.5 --color never").output, Not(HasSubstr("\x1b[")));
  const HubResult colored = product.Run("--seconds 0.5 --color always");
  EXPECT_THAT(colored.output, HasSubstr("\x1b[31ma.server"));
  EXPECT_THAT(colored.output, Not(HasSubstr("\x1b[K")));
}

TEST(SecondHub, OnTheSameProductSaysSo) {
  TemporaryFolder state;
  HubSettings settings;
  settings.state = state.Path();
  MadeProduct product;
  HubProcess first(product.Plugin("a.server").Arguments(""), settings);
  ASSERT_TRUE(first.AwaitOutput("Up after"));
  const HubResult second = product.Run("--seconds 0.5", settings);
  EXPECT_EQ(0, second.status) << second.errors;
  EXPECT_THAT(second.output, HasSubstr("warning: another HUB runs this product"));
  first.AskToStop(StopKind::kTerminate);
  EXPECT_EQ(0, first.Wait().status);
  EXPECT_THAT(product.Run("--seconds 0.5", settings).output, Not(HasSubstr("another HUB")));
}

}  // namespace
