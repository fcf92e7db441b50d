#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

/// An edge of a directed graph whose nodes are numbers from 0.
struct CutEdge {
  std::size_t from = 0;
  std::size_t to = 0;
  std::int64_t preference = 0;  // of two sets of edges the one with the greater sum comes first
};

/// How much a search may cost.
struct CutLimits {
  std::size_t work = 1'000'000;  // edges and nodes visited
  std::size_t sets = 500;        // sets found, before they are ranked
};

/// Sets of edges without which a graph has no cycle.
struct CutSets {
  /// Indices of edges, ascending; sets of equal size, the preferred ones first. At least one set,
  /// which is empty when the graph has no cycle.
  std::vector<std::vector<std::size_t>> sets;
  bool smallest = false;    // no smaller set exists
  bool complete = false;    // and `sets` has all of that size
  std::size_t atLeast = 0;  // as many edges must be cut, as far as is proven
  std::size_t work = 0;     // edges and nodes visited
};

/// The smallest sets of edges to cut, so that the graph of `nodes` nodes has no cycle. Exact, by
/// branch and bound, until a limit is reached; then one set that a heuristic finds, which is not
/// proven smallest unless a lower bound says so. No edge leads from a node to itself. Takes time in
/// proportion to the graph, O((nodes + edges) log nodes), beside the limited search.
CutSets FindCutSets(std::size_t nodes, const std::vector<CutEdge>& edges,
                    const CutLimits& limits = CutLimits());
