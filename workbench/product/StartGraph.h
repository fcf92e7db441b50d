#pragma once

#include <map>
#include <string>
#include <vector>

#include "src/model/ProductModel.h"

/// The dependencies by which the frame orders the start: which plugin waits for which.
struct StartGraph {
  /// Server plugins, then sub platforms, in the model's order, each once. An empty ID is an ID.
  std::vector<std::string> ids;

  /// For each of `ids`, the plugins that it waits for: each once, in the order of declaration.
  std::map<std::string, std::vector<std::string>> dependsOn;
};

StartGraph MakeStartGraph(const ProductModel& model);

/// The cycles because of which some plugins never start: {a} for each plugin that depends on itself
/// and, for each group of plugins that all wait for each other, the shortest cycle through the
/// group's first plugin, {a, b, c} for a → b → c → a. A cycle begins with its plugin that comes
/// first in the model; the cycles are in the order of these plugins.
std::vector<std::vector<std::string>> FindCycles(const StartGraph& graph);

/// The groups of two or more plugins that all wait for each other, directly or not: for each cycle
/// of FindCycles with two or more plugins the group that it goes through, in the same order. The
/// members are in the model's order.
std::vector<std::vector<std::string>> FindWaitingGroups(const StartGraph& graph);

/// The plugins outside `members` that depend on one of them, directly or not, in the model's order.
std::vector<std::string> WaitingBehind(const StartGraph& graph,
                                       const std::vector<std::string>& members);

/// A cycle as "a → b → a"; for a long one, the first members and how many more there are. An empty
/// ID is shown as "(no ID)".
std::string CycleText(const std::vector<std::string>& cycle);
