#include "workbench/check/WaitingPlugins.h"

#include <algorithm>
#include <iterator>

#include "workbench/check/Words.h"

WaitingPlugins::WaitingPlugins(const StartGraph& graph, std::size_t most)
    : m_graph(graph), m_waiting(graph.ids.size()), m_reachedBy(graph.ids.size()), m_left(most) {
  for (const std::string& id : graph.ids) m_positions.emplace(id, m_positions.size());
  for (const auto& [id, others] : graph.dependsOn) {
    const std::size_t position = m_positions.at(id);
    for (const std::string& other : others) m_waiting[m_positions.at(other)].push_back(position);
  }
}

std::string WaitingPlugins::Clause(const std::vector<std::string>& members) {
  std::vector<std::size_t> behind = Behind(members);
  if (behind.empty() || m_left == 0) return std::string();
  std::sort(behind.begin(), behind.end());
  std::vector<std::string> names;
  std::transform(behind.begin(), behind.end(), std::back_inserter(names),
                 [&](std::size_t position) { return m_graph.ids[position]; });
  return "; " + Counted(names.size(), "other") + (names.size() == 1 ? " waits" : " wait") +
         " behind " + (members.size() == 1 ? "it: " : "them: ") + QuotedList(names);
}

std::vector<std::size_t> WaitingPlugins::Behind(const std::vector<std::string>& members) {
  ++m_questions;
  std::vector<std::size_t> reached;
  const auto reach = [&](std::size_t position) {
    if (m_reachedBy[position] == m_questions) return;
    m_reachedBy[position] = m_questions;
    reached.push_back(position);
  };
  for (const std::string& member : members) reach(m_positions.at(member));
  for (std::size_t i = 0; i < reached.size() && m_left > 0; ++i) {
    for (const std::size_t position : m_waiting[reached[i]]) reach(position);
    m_left -= std::min(m_left, m_waiting[reached[i]].size());
  }
  reached.erase(reached.begin(), reached.begin() + static_cast<std::ptrdiff_t>(members.size()));
  return reached;
}
