#include "workbench/report/StartEdges.h"

#include <boost/graph/adjacency_list.hpp>
#include <boost/graph/strong_components.hpp>
#include <set>
#include <utility>

DependencyLists WithoutRepetitions(const DependencyLists& lists) {
  DependencyLists result(lists.size());
  for (std::size_t i = 0; i < lists.size(); ++i) {
    std::set<std::size_t> seen;
    for (const std::size_t other : lists[i]) {
      if (seen.insert(other).second) result[i].push_back(other);
    }
  }
  return result;
}

DependencyLists Reversed(const DependencyLists& lists) {
  DependencyLists reversed(lists.size());
  for (std::size_t i = 0; i < lists.size(); ++i) {
    for (const std::size_t other : lists[i]) reversed[other].push_back(i);
  }
  return reversed;
}

std::vector<std::size_t> CycleNumbers(const DependencyLists& lists) {
  boost::adjacency_list<boost::vecS, boost::vecS, boost::directedS> graph(lists.size());
  for (std::size_t i = 0; i < lists.size(); ++i) {
    for (const std::size_t other : lists[i]) boost::add_edge(i, other, graph);
  }
  std::vector<std::size_t> numbers(lists.size());
  if (!lists.empty()) boost::strong_components(graph, numbers.data());
  return numbers;
}

void MarkWithin(const DependencyLists& lists, std::size_t from, std::size_t depth,
                std::vector<bool>& marks) {
  std::vector<bool> seen(lists.size());
  std::vector<std::pair<std::size_t, std::size_t>> queue = {{from, 0}};  // plugin, distance
  seen[from] = true;
  for (std::size_t next = 0; next < queue.size(); ++next) {
    const auto [plugin, distance] = queue[next];
    marks[plugin] = true;
    if (distance == depth) continue;
    for (const std::size_t other : lists[plugin]) {
      if (seen[other]) continue;
      seen[other] = true;
      queue.emplace_back(other, distance + 1);
    }
  }
}
