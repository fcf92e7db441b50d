#pragma once

#include <cstddef>
#include <optional>
#include <string>

#include "workbench/timeline/Timeline.h"

/// Which part of the graph is written.
struct DotOptions {
  std::optional<std::string> focus;  // ID of a plugin; none: the whole graph
  std::size_t depth = 2;             // dependencies from the focus, in both directions
};

/// Why a graph cannot have its focus at `id`, as a sentence; empty when it can.
std::string FocusFault(const Timeline& timeline, const std::string& id);

/// The start's dependencies as a graph in Graphviz' language, with a legend: each plugin with the
/// times and results of its start and stop, each edge from a plugin to one that waits for it, drawn
/// by whether it released it, lies on the critical path or in a cycle. The same for the same run.
///
/// Throws std::invalid_argument with the sentence of FocusFault.
std::string ReportDot(const Timeline& timeline, const DotOptions& options);
