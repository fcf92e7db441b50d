#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include "workbench/record/RunEvent.h"
#include "workbench/shake/ShakeRun.h"

/// In how many runs a plugin failed that began before another one was up, and in how many it was
/// well that began after it. A plugin that is well although the other one came up during its start
/// counts in neither.
struct OrderEvidence {
  std::size_t before = 0;
  std::size_t failedBefore = 0;
  std::size_t after = 0;
  std::size_t wellAfter = 0;

  bool operator==(const OrderEvidence& other) const;
};

/// A plugin that fails when it starts before another one is up.
struct MissingDependency {
  std::string plugin;
  StartOutcome::Kind kind = StartOutcome::Kind::kFailed;
  std::string reason;
  std::vector<std::string> others;  // one of these must be up first; the runs do not say which
  bool isShown = false;  // by runs in which only the other one was delayed; then there is just one
  OrderEvidence evidence;  // for the first of `others`
  std::string options;     // of HUB run, with which it fails
};

/// A plugin of which no order of two starts explains how it ended.
struct PluginNote {
  std::string plugin;
  StartOutcome::Kind kind = StartOutcome::Kind::kFailed;
  std::string reason;
  std::size_t times = 0;  // runs in which it ended so
  std::size_t runs = 0;   // in which its end is known
  std::string because;    // a dependency that failed in each of these runs; empty for none
  std::string options;    // of HUB run, with which it failed once

  bool operator==(const PluginNote& other) const;
};

/// What the runs of a product in several orders show.
struct ShakeAnalysis {
  std::vector<MissingDependency> missing;
  std::vector<PluginNote> unexplained;   // its result changes
  std::vector<PluginNote> consequences;  // of a dependency that fails
  std::vector<PluginNote> always;        // it ends in this way in every run

  /// Plugins to delay alone, in this order: runs in which only one plugin is late tell whether it
  /// is the one that must be up, or one that is late at the same time.
  std::vector<std::string> experiments;
};

/// How many runs with one plugin delayed alone must agree.
constexpr std::size_t kExperimentRuns = 2;

/// Compares runs of one product. `plugins`: of its record, in the model's order; a pair that they
/// order, directly or not, is never missing.
ShakeAnalysis Analyse(const std::vector<PluginHead>& plugins, const std::vector<ShakeRun>& runs);
