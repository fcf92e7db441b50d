#pragma once

#include <cstddef>
#include <set>
#include <string>

#include "workbench/report/ReportDot.h"

// How the graph's plugins and edges look, and the legend that says so.

enum class DotNodeLook { kOk, kFailed, kUnfinished, kNotStarted };
enum class DotEdgeLook { kCritical, kReleased, kOther, kBlocked, kCycle };

/// The attributes of a node or an edge.
std::string DotAttributes(DotNodeLook look, bool isCritical);
std::string DotAttributes(DotEdgeLook look);

/// What is in a graph.
struct DotContent {
  std::size_t plugins = 0;
  std::set<DotNodeLook> nodes;
  std::set<DotEdgeLook> edges;
  std::size_t foreign = 0;  // dependencies on plugins that the run does not have
};

/// The title and the legend of what the graph has, as an HTML-like label.
std::string DotLegend(const Timeline& timeline, const DotOptions& options,
                      const DotContent& content);
