#pragma once

#include <map>
#include <string>
#include <vector>

#include "src/model/ProductModel.h"

/// Which plugin's start waits for which: what the frame orders its start by.
struct StartGraph {
  /// Server plugins, then sub platforms, in the model's order, each once. An empty ID is an ID.
  std::vector<std::string> ids;

  /// For each of `ids`, those that it waits for: each once, in the order declared.
  std::map<std::string, std::vector<std::string>> dependsOn;
};

StartGraph MakeStartGraph(const ProductModel& model);

/// Why some plugins never start: each plugin that depends on itself as {a}, and of each group of
/// plugins that all wait for each other one cycle, {a, b, c} for a → b → c → a: the shortest one
/// through the group's first member. Each begins with its member that stands first in the model,
/// and they are in the order of these members.
std::vector<std::vector<std::string>> FindCycles(const StartGraph& graph);

/// Who depends on one of `members`, directly or not, and is none of them, in the model's order.
std::vector<std::string> WaitingBehind(const StartGraph& graph,
                                       const std::vector<std::string>& members);
