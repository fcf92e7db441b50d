#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

/// A run that is to be made.
struct PlannedRun {
  std::vector<std::string> options;  // of HUB run, that delay the starts; empty: none
  std::string alone;                 // the only plugin that is delayed; empty when it is not one

  bool operator==(const PlannedRun& other) const;
};

/// The longest delay in milliseconds for a product whose start takes `startMs` without delays: long
/// enough that a plugin that is not delayed is up before one that is.
std::int64_t LongestDelay(std::int64_t startMs);

/// Runs in different orders of these plugins' starts, `delay` milliseconds at most. In half of them
/// every plugin is delayed by a seed, from `firstSeed` on: two seeds after each other give opposite
/// orders. In the others each plugin is, once, among those that begin after all the rest; it is
/// there alone when there are enough runs. Both kinds alternate.
std::vector<PlannedRun> PlanRuns(const std::vector<std::string>& plugins, std::size_t runs,
                                 std::uint64_t firstSeed, std::int64_t delay);

/// A run in which only this plugin is delayed.
PlannedRun DelayAlone(const std::string& plugin, std::int64_t delay);

/// The options as a command line has them: in quotes where a shell needs them.
std::string CommandText(const std::vector<std::string>& options);
