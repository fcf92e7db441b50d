#pragma once

#include <gtest/gtest.h>

#include <cstdint>
#include <string>
#include <vector>

#include "tests/system/MadeProduct.h"
#include "workbench/record/FlightRecord.h"

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
    const nlohmann::json run = result.Json();
    for (const nlohmann::json& phase : run["phases"]) {
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
