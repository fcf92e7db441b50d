#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "workbench/timeline/Timeline.h"

/// A time now and in earlier runs, in nanoseconds.
struct TimeChange {
  std::string what;  // a plugin's ID, or "start", "stop"
  std::int64_t now = 0;
  std::int64_t before = 0;  // median of the earlier runs
  std::int64_t low = 0;     // the noise band: least and greatest of the earlier runs
  std::int64_t high = 0;
  std::int64_t resolution = 0;  // of the coarsest clock

  std::int64_t Difference() const { return now - before; }
};

/// A plugin whose start ended otherwise than in the last of the earlier runs.
struct ResultChange {
  std::string plugin;
  PluginSpan::Result before = PluginSpan::Result::kNotBegun;
  PluginSpan::Result now = PluginSpan::Result::kNotBegun;
};

/// What differs between a run and earlier runs of the product. Plugins by their IDs.
struct Comparison {
  std::size_t runs = 0;                 // how many earlier ones
  bool sleepsDiffer = false;            // in an earlier run the frame slept otherwise between looks
  std::vector<TimeChange> phases;       // start and stop, where complete; whether changed or not
  std::vector<std::string> incomplete;  // the others of "start", "stop"
  std::vector<TimeChange> slower;  // work of plugins in the start, the greatest difference first
  std::vector<TimeChange> faster;
  std::vector<std::string> added;     // in no earlier run
  std::vector<std::string> gone;      // in the last earlier run, and not in this one
  std::vector<std::string> ontoPath;  // on the start's critical path now, and in no earlier run
  std::vector<std::string> offPath;   // not on it now, and in every earlier run
  std::vector<ResultChange> results;
};

/// Differences that are not beyond the noise band, and those of less than this or of less than a
/// twentieth of the time, are no changes: two starts are never equal.
constexpr std::int64_t kLeastChange = 2'000'000;

/// Whether the time changed by more than noise.
bool IsChange(const TimeChange& change);

/// Compares the start's plugins of a run with those of earlier runs, at least one; oldest first.
Comparison Compare(const Timeline& now, const std::vector<Timeline>& before);
