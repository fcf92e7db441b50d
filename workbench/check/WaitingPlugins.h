#pragma once

#include <cstddef>
#include <map>
#include <string>
#include <vector>

#include "workbench/product/StartGraph.h"

/// Finds who waits behind plugins that never start. Reads the graph once; a product may have many
/// such plugins with many behind each, so what all questions together may cost is limited.
class WaitingPlugins {
 public:
  /// `most` edges are followed for all questions together.
  explicit WaitingPlugins(const StartGraph& graph, std::size_t most = 2'000'000);

  /// "; 2 others wait behind it: "a.server" and "b.server"": the plugins outside `members` that
  /// depend on one of them, directly or not. Empty for none, and when the limit is reached.
  std::string Clause(const std::vector<std::string>& members);

 private:
  std::vector<std::size_t> Behind(const std::vector<std::string>& members);

  const StartGraph& m_graph;
  std::map<std::string, std::size_t> m_positions;   // in the graph's `ids`
  std::vector<std::vector<std::size_t>> m_waiting;  // for each plugin, who depends on it
  std::vector<std::size_t> m_reachedBy;             // the last question that reached each
  std::size_t m_questions = 0;
  std::size_t m_left;
};
