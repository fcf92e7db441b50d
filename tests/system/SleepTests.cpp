// A start and a stop with sleeps that end early, and with full ones.

#include <gtest/gtest.h>

#include <string>

#include "tests/system/MadeProduct.h"
#include "workbench/record/FlightRecord.h"

using nlohmann::json;

namespace {

constexpr int kTwoSleeps = 400;  // milliseconds

/// A run of three plugins, each of which waits for the one before it and takes no time.
struct ChainOfThree {
  explicit ChainOfThree(const std::string& arguments) {
    MadeProduct product;
    product.Plugin("a.server")
        .Plugin("b.server", "well_behaved", DependsOn("a.server"))
        .Plugin("c.server", "well_behaved", DependsOn("b.server"));
    HubSettings settings;
    settings.record = product.Site().Path("run.jsonl");
    const HubResult result = product.RunUntilUp("--json " + arguments, settings);
    EXPECT_EQ(0, result.status) << result.errors;
    const json run = result.Json();
    for (const json& phase : run["phases"]) {
      if (phase["name"] == RunPhase::kStart) start = phase["ms"];
      if (phase["name"] == RunPhase::kStop) stop = phase["ms"];
    }
    sleep = ReadFlightRecord(settings.record).head.sleep;
  }

  int start = -1;  // milliseconds
  int stop = -1;
  std::string sleep;
};

TEST(Sleep, EndsEarlyUnlessAskedOtherwise) {
  const ChainOfThree run("");
  EXPECT_LT(run.start, kTwoSleeps);
  EXPECT_LT(run.stop, kTwoSleeps);
  EXPECT_EQ("early", run.sleep);
}

TEST(Sleep, LastsItsWholeTimeWithFullSleep) {
  const ChainOfThree run("--full-sleep");
  EXPECT_GE(run.start, kTwoSleeps);
  EXPECT_GE(run.stop, kTwoSleeps);
  EXPECT_EQ("full", run.sleep);
}

}  // namespace
