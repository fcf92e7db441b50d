// A start and a stop with sleeps that end early, and with full ones.

#include <gtest/gtest.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

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
    const FlightRecord record = ReadFlightRecord(settings.record);
    sleep = record.head.sleep;
    events = record.events;
  }

  /// The milliseconds from the first event of this kind and phase to the one of the other kind.
  double Between(RunEvent::Kind first, const char* phase, RunEvent::Kind second) const {
    std::int64_t from = 0;
    std::int64_t to = 0;
    for (const RunEvent& event : events) {
      if (event.kind == first && event.phase == phase) from = event.nanoseconds;
      if (event.kind == second) to = event.nanoseconds;
    }
    return static_cast<double>(to - from) * 1e-6;
  }

  int start = -1;  // milliseconds
  int stop = -1;
  std::string sleep;
  std::vector<RunEvent> events;
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

double Median(std::vector<double> values) {
  std::nth_element(values.begin(), values.begin() + static_cast<std::ptrdiff_t>(values.size() / 2),
                   values.end());
  return values[values.size() / 2];
}

TEST(Sleep, OfHubIsEndedByTheStartsAndTheStopsEnd) {
  using Kind = RunEvent::Kind;
  constexpr int kRuns = 15;
  constexpr double kMost = 15;  // milliseconds; HUB looks every 50 ms by itself
  std::vector<double> up;
  std::vector<double> end;
  for (int i = 0; i < kRuns; ++i) {
    const ChainOfThree run("");
    up.push_back(run.Between(Kind::kPhaseEnd, RunPhase::kPlatformStart, Kind::kUp));
    end.push_back(run.Between(Kind::kPhaseEnd, RunPhase::kFrameUnInit, Kind::kEnd));
  }
  EXPECT_LT(Median(up), kMost);
  EXPECT_LT(Median(end), kMost);
}

}  // namespace
