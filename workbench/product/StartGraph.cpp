#include "workbench/product/StartGraph.h"

#include <algorithm>
#include <cstddef>
#include <deque>
#include <set>
#include <utility>

namespace {

constexpr std::int32_t kOrders = 1;     // a DependentType
constexpr std::size_t kMostShown = 10;  // members of a cycle
constexpr char kArrow[] = " \xE2\x86\x92 ";

/// The same rule as the frame's: see OrdersTheStart there.
bool OrdersTheStart(const PluginDependency& dependency) {
  const bool onPlugin = dependency.Category == DependencyCategory::kPlugin ||
                        dependency.Category == DependencyCategory::kOther;
  return onPlugin && dependency.DependentType == kOrders;
}

/// The graph's edges, as indices into `ids`.
using Edges = std::vector<std::vector<std::size_t>>;

std::map<std::string, std::size_t> Positions(const StartGraph& graph) {
  std::map<std::string, std::size_t> positions;
  for (std::size_t i = 0; i < graph.ids.size(); ++i) positions.emplace(graph.ids[i], i);
  return positions;
}

Edges EdgesOf(const StartGraph& graph) {
  const auto positions = Positions(graph);
  Edges edges(graph.ids.size());
  for (const auto& [id, others] : graph.dependsOn) {
    for (const std::string& other : others) {
      edges[positions.at(id)].push_back(positions.at(other));
    }
  }
  return edges;
}

Edges Reversed(const Edges& edges) {
  Edges reversed(edges.size());
  for (std::size_t from = 0; from < edges.size(); ++from) {
    for (const std::size_t to : edges[from]) reversed[to].push_back(from);
  }
  return reversed;
}

/// The strongly connected components: maps each node to the first node of its component.
///
/// Kosaraju's algorithm, without recursion: a chain of dependencies may contain every plugin.
class Groups {
 public:
  explicit Groups(const Edges& edges) : m_group(edges.size(), kNone) {
    const std::vector<std::size_t> finished = FinishingOrder(edges);
    const Edges reversed = Reversed(edges);
    for (auto node = finished.rbegin(); node != finished.rend(); ++node) {
      if (m_group[*node] == kNone) Collect(reversed, *node);
    }
  }

  std::size_t operator[](std::size_t node) const { return m_group[node]; }

 private:
  static constexpr std::size_t kNone = static_cast<std::size_t>(-1);

  static std::vector<std::size_t> FinishingOrder(const Edges& edges) {
    struct Visit {
      std::size_t node;
      std::size_t next;
    };
    std::vector<std::size_t> finished;
    std::vector<bool> seen(edges.size());
    for (std::size_t start = 0; start < edges.size(); ++start) {
      if (seen[start]) continue;
      seen[start] = true;
      std::vector<Visit> visits = {{start, 0}};
      while (!visits.empty()) {
        Visit& visit = visits.back();
        if (visit.next == edges[visit.node].size()) {
          finished.push_back(visit.node);
          visits.pop_back();
          continue;
        }
        const std::size_t to = edges[visit.node][visit.next++];
        if (seen[to]) continue;
        seen[to] = true;
        visits.push_back({to, 0});
      }
    }
    return finished;
  }

  /// Makes a group of `root` and all nodes without a group that reach it.
  void Collect(const Edges& reversed, std::size_t root) {
    std::vector<std::size_t> members = {root};
    m_group[root] = root;
    for (std::size_t i = 0; i < members.size(); ++i) {
      for (const std::size_t from : reversed[members[i]]) {
        if (m_group[from] != kNone) continue;
        m_group[from] = root;
        members.push_back(from);
      }
    }
    const std::size_t first = *std::min_element(members.begin(), members.end());
    for (const std::size_t member : members) m_group[member] = first;
  }

  std::vector<std::size_t> m_group;
};

/// The shortest cycle of two or more nodes through `first`, whose group has at least two.
std::vector<std::size_t> ShortestCycle(const Edges& edges, std::size_t first) {
  std::map<std::size_t, std::size_t> cameFrom;
  std::deque<std::size_t> queue = {first};
  while (!queue.empty()) {
    const std::size_t node = queue.front();
    queue.pop_front();
    for (const std::size_t to : edges[node]) {
      if (to == first && node != first) {
        std::vector<std::size_t> cycle;
        for (std::size_t at = node; at != first; at = cameFrom.at(at)) cycle.push_back(at);
        cycle.push_back(first);
        std::reverse(cycle.begin(), cycle.end());
        return cycle;
      }
      if (to != first && cameFrom.emplace(to, node).second) queue.push_back(to);
    }
  }
  return {};
}

}  // namespace

StartGraph MakeStartGraph(const ProductModel& model) {
  StartGraph graph;
  const auto add = [&](const std::string& id) {
    if (graph.dependsOn.emplace(id, std::vector<std::string>()).second) graph.ids.push_back(id);
  };
  for (const PluginDescription& plugin : model.ServerPluginDescriptions) add(plugin.ID);
  for (const SubPlatformEntry& subPlatform : model.SubPlatforms) add(subPlatform.ID);

  std::set<std::pair<std::string, std::string>> known;
  for (const PluginDescription& plugin : model.ServerPluginDescriptions) {
    for (const PluginDependency& dependency : plugin.Dependencies) {
      if (!OrdersTheStart(dependency) || graph.dependsOn.count(dependency.ID) == 0) continue;
      if (!known.emplace(plugin.ID, dependency.ID).second) continue;
      graph.dependsOn[plugin.ID].push_back(dependency.ID);
    }
  }
  return graph;
}

std::vector<std::vector<std::string>> FindCycles(const StartGraph& graph) {
  const Edges edges = EdgesOf(graph);
  const Groups groups(edges);
  std::vector<std::size_t> sizes(edges.size());
  for (std::size_t node = 0; node < edges.size(); ++node) ++sizes[groups[node]];

  std::vector<std::vector<std::string>> cycles;
  for (std::size_t node = 0; node < edges.size(); ++node) {
    if (std::count(edges[node].begin(), edges[node].end(), node) > 0) {
      cycles.push_back({graph.ids[node]});
    }
    if (sizes[node] < 2) continue;  // counted at each group's first member
    std::vector<std::string> cycle;
    for (const std::size_t member : ShortestCycle(edges, node)) cycle.push_back(graph.ids[member]);
    cycles.push_back(std::move(cycle));
  }
  return cycles;
}

std::vector<std::vector<std::string>> FindWaitingGroups(const StartGraph& graph) {
  const Edges edges = EdgesOf(graph);
  const Groups groups(edges);
  std::map<std::size_t, std::vector<std::string>> byFirst;
  for (std::size_t node = 0; node < edges.size(); ++node) {
    byFirst[groups[node]].push_back(graph.ids[node]);
  }
  std::vector<std::vector<std::string>> found;
  for (auto& [first, members] : byFirst) {
    if (members.size() > 1) found.push_back(std::move(members));
  }
  return found;
}

std::vector<std::string> WaitingBehind(const StartGraph& graph,
                                       const std::vector<std::string>& members) {
  const auto positions = Positions(graph);
  const Edges waiting = Reversed(EdgesOf(graph));
  std::vector<bool> reached(waiting.size());
  std::vector<std::size_t> queue;
  for (const std::string& member : members) {
    const auto found = positions.find(member);
    if (found != positions.end()) queue.push_back(found->second);
  }
  for (std::size_t i = 0; i < queue.size(); ++i) {
    for (const std::size_t node : waiting[queue[i]]) {
      if (reached[node]) continue;
      reached[node] = true;
      queue.push_back(node);
    }
  }
  const std::set<std::string> inside(members.begin(), members.end());
  std::vector<std::string> behind;
  for (std::size_t node = 0; node < reached.size(); ++node) {
    const std::string& id = graph.ids[node];
    if (reached[node] && inside.count(id) == 0) behind.push_back(id);
  }
  return behind;
}

std::string CycleText(const std::vector<std::string>& cycle) {
  const auto shown = [](const std::string& id) { return id.empty() ? "(no ID)" : id; };
  std::string text;
  const std::size_t most = std::min(cycle.size(), kMostShown);
  for (std::size_t i = 0; i < most; ++i) text += shown(cycle[i]) + kArrow;
  if (most < cycle.size()) text += "(" + std::to_string(cycle.size() - most) + " more)" + kArrow;
  return text + shown(cycle.front());
}
