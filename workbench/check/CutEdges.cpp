#include "workbench/check/CutEdges.h"

#include <algorithm>
#include <numeric>
#include <set>
#include <tuple>
#include <utility>

namespace {

using Indices = std::vector<std::size_t>;

constexpr std::size_t kNone = static_cast<std::size_t>(-1);

/// A graph from which edges are taken out and put back.
class Graph {
 public:
  Graph(std::size_t nodes, const std::vector<CutEdge>& edges)
      : m_edges(edges), m_leaving(nodes), m_isOut(edges.size()) {
    for (std::size_t edge = 0; edge < edges.size(); ++edge) {
      m_leaving[edges[edge].from].push_back(edge);
    }
  }

  void TakeOut(std::size_t edge) { m_isOut[edge] = true; }
  void PutBack(std::size_t edge) { m_isOut[edge] = false; }
  std::size_t Work() const { return m_work; }

  /// The edges of a cycle; empty when there is none.
  Indices FindCycle() {
    const std::size_t node = NodeOnACycle();
    return node == kNone ? Indices() : ShortestPath(node, node);
  }

  /// The edges of a shortest path of one or more edges; empty when there is none.
  Indices ShortestPath(std::size_t from, std::size_t to) {
    Indices arrival(m_leaving.size(), kNone);
    m_work += m_leaving.size();
    Indices queue = {from};
    for (std::size_t i = 0; i < queue.size() && arrival[to] == kNone; ++i) {
      for (const std::size_t edge : m_leaving[queue[i]]) {
        ++m_work;
        const std::size_t next = m_edges[edge].to;
        if (m_isOut[edge] || arrival[next] != kNone) continue;
        arrival[next] = edge;
        queue.push_back(next);
      }
    }
    if (arrival[to] == kNone) return {};
    Indices path = {arrival[to]};
    while (m_edges[path.back()].from != from) path.push_back(arrival[m_edges[path.back()].from]);
    std::reverse(path.begin(), path.end());
    return path;
  }

 private:
  enum class Mark : char { kNew, kOpen, kDone };
  struct Visit {
    std::size_t node;
    std::size_t next;
  };

  std::size_t NodeOnACycle() {
    std::vector<Mark> marks(m_leaving.size(), Mark::kNew);
    m_work += m_leaving.size();
    std::size_t node = kNone;
    for (std::size_t start = 0; start < m_leaving.size() && node == kNone; ++start) {
      if (marks[start] == Mark::kNew) node = NodeOnACycleBelow(start, marks);
    }
    return node;
  }

  std::size_t NodeOnACycleBelow(std::size_t start, std::vector<Mark>& marks) {
    std::vector<Visit> visits = {{start, 0}};
    marks[start] = Mark::kOpen;
    while (!visits.empty()) {
      Visit& visit = visits.back();
      if (visit.next == m_leaving[visit.node].size()) {
        marks[visit.node] = Mark::kDone;
        visits.pop_back();
        continue;
      }
      const std::size_t edge = m_leaving[visit.node][visit.next++];
      ++m_work;
      const std::size_t to = m_edges[edge].to;
      if (m_isOut[edge] || marks[to] == Mark::kDone) continue;
      if (marks[to] == Mark::kOpen) return to;
      marks[to] = Mark::kOpen;
      visits.push_back({to, 0});
    }
    return kNone;
  }

  const std::vector<CutEdge>& m_edges;
  std::vector<Indices> m_leaving;
  std::vector<bool> m_isOut;
  std::size_t m_work = 0;
};

/// Orders the nodes so that few edges lead backwards, and returns each node's position: sinks go to
/// the end, sources to the front, of the others first the one with the most edges leaving over
/// those arriving (the heuristic of Eades, Lin and Smyth).
class NodeOrder {
 public:
  NodeOrder(std::size_t nodes, const std::vector<CutEdge>& edges)
      : m_neighbours(nodes), m_leaving(nodes), m_arriving(nodes), m_positions(nodes, kNone) {
    for (const CutEdge& edge : edges) {
      ++m_leaving[edge.from];
      ++m_arriving[edge.to];
      m_neighbours[edge.from].push_back({edge.to, true});
      m_neighbours[edge.to].push_back({edge.from, false});
    }
    for (std::size_t node = 0; node < nodes; ++node) m_queue.insert(KeyOf(node));
    Place();
  }

  std::size_t operator[](std::size_t node) const { return m_positions[node]; }

 private:
  enum class Rank : char { kSink, kSource, kOther };
  struct Key {
    Rank rank;
    std::int64_t surplus;  // of edges that arrive
    std::size_t node;
    bool operator<(const Key& other) const {
      return std::tie(rank, surplus, node) < std::tie(other.rank, other.surplus, other.node);
    }
  };
  struct Neighbour {
    std::size_t node;
    bool arrives;  // the edge leads there
  };

  Key KeyOf(std::size_t node) const {
    const Rank rank = m_leaving[node] == 0    ? Rank::kSink
                      : m_arriving[node] == 0 ? Rank::kSource
                                              : Rank::kOther;
    return {rank, m_arriving[node] - m_leaving[node], node};
  }

  void Place() {
    std::size_t front = 0;
    std::size_t back = m_positions.size();
    while (!m_queue.empty()) {
      const Key key = *m_queue.begin();
      m_queue.erase(m_queue.begin());
      m_positions[key.node] = key.rank == Rank::kSink ? --back : front++;
      for (const Neighbour& neighbour : m_neighbours[key.node]) Loosen(neighbour);
    }
  }

  void Loosen(const Neighbour& neighbour) {
    if (m_positions[neighbour.node] != kNone) return;
    m_queue.erase(KeyOf(neighbour.node));
    --(neighbour.arrives ? m_arriving : m_leaving)[neighbour.node];
    m_queue.insert(KeyOf(neighbour.node));
  }

  std::vector<std::vector<Neighbour>> m_neighbours;
  std::vector<std::int64_t> m_leaving;
  std::vector<std::int64_t> m_arriving;
  std::vector<std::size_t> m_positions;
  std::set<Key> m_queue;
};

/// Iterative deepening: all sets of the smallest size that a lower bound allows, then of the next.
///
/// A set is extended by each edge of one cycle in turn, and the edges tried before must stay, so
/// that each set is found once.
class Search {
 public:
  Search(std::size_t nodes, const std::vector<CutEdge>& edges, const CutLimits& limits)
      : m_nodes(nodes),
        m_edges(edges),
        m_limits(limits),
        m_graph(nodes, edges),
        m_mustStay(edges.size()) {}

  CutSets Run() {
    const Indices some = CutSomehow();
    CutSets result;
    result.atLeast = BoundFor(some.size()).cycles;
    for (; result.atLeast <= some.size(); ++result.atLeast) {
      Extend(result.atLeast);
      if (m_stopped || !m_sets.empty()) break;
    }
    result.smallest = !m_sets.empty() || result.atLeast == some.size();
    result.complete = !m_stopped;
    if (m_sets.empty()) m_sets.push_back(some);
    Rank();
    result.sets = std::move(m_sets);
    result.work = m_graph.Work();
    return result;
  }

 private:
  struct Bound {
    std::size_t cycles = 0;   // so many edges must be cut at least
    bool isAcyclic = false;   // nothing needs to be cut
    bool impossible = false;  // a cycle has no edge that may be cut
    Indices choices;          // edges of a cycle, of which one must be cut
  };

  /// A set that need not be a smallest one. An edge that may stay is left in it only when the
  /// limit is reached.
  Indices CutSomehow() {
    const NodeOrder order(m_nodes, m_edges);
    Indices cut;
    for (std::size_t edge = 0; edge < m_edges.size(); ++edge) {
      if (order[m_edges[edge].from] > order[m_edges[edge].to]) cut.push_back(edge);
    }
    for (const std::size_t edge : cut) m_graph.TakeOut(edge);
    Indices needed;
    for (const std::size_t edge : cut) {
      const bool mayStay = m_graph.Work() < m_limits.work / 2 &&
                           m_graph.ShortestPath(m_edges[edge].to, m_edges[edge].from).empty();
      if (mayStay) {
        m_graph.PutBack(edge);
      } else {
        needed.push_back(edge);
      }
    }
    for (const std::size_t edge : needed) m_graph.PutBack(edge);
    return needed;
  }

  /// Counts cycles that share no edge that may be cut, up to one more than `most`.
  Bound BoundFor(std::size_t most) {
    Bound bound;
    Indices out;
    while (bound.cycles <= most && m_graph.Work() < m_limits.work) {
      Indices cycle = m_graph.FindCycle();
      bound.isAcyclic = cycle.empty() && out.empty();
      if (cycle.empty()) break;
      cycle.erase(std::remove_if(cycle.begin(), cycle.end(),
                                 [&](std::size_t edge) { return m_mustStay[edge]; }),
                  cycle.end());
      bound.impossible = cycle.empty();
      if (bound.impossible) break;
      if (bound.cycles++ == 0) bound.choices = cycle;
      for (const std::size_t edge : cycle) m_graph.TakeOut(edge);
      out.insert(out.end(), cycle.begin(), cycle.end());
    }
    for (const std::size_t edge : out) m_graph.PutBack(edge);
    return bound;
  }

  /// Finds every set that has the edges that are cut now, none that must stay, and `more` others.
  void Extend(std::size_t more) {
    m_stopped = m_stopped || m_graph.Work() >= m_limits.work || m_sets.size() >= m_limits.sets;
    if (m_stopped) return;
    const Bound bound = BoundFor(more);
    if (bound.isAcyclic) {
      m_sets.push_back(m_cut);
      std::sort(m_sets.back().begin(), m_sets.back().end());
    }
    if (bound.impossible || bound.cycles > more) return;
    for (const std::size_t edge : bound.choices) {
      m_graph.TakeOut(edge);
      m_cut.push_back(edge);
      Extend(more - 1);
      m_cut.pop_back();
      m_graph.PutBack(edge);
      m_mustStay[edge] = true;
    }
    for (const std::size_t edge : bound.choices) m_mustStay[edge] = false;
  }

  void Rank() {
    const auto preference = [&](const Indices& set) {
      return std::accumulate(
          set.begin(), set.end(), std::int64_t{0},
          [&](std::int64_t sum, std::size_t edge) { return sum + m_edges[edge].preference; });
    };
    std::sort(m_sets.begin(), m_sets.end(), [&](const Indices& a, const Indices& b) {
      const std::int64_t ofA = preference(a);
      const std::int64_t ofB = preference(b);
      return ofA != ofB ? ofA > ofB : a < b;
    });
  }

  const std::size_t m_nodes;
  const std::vector<CutEdge>& m_edges;
  const CutLimits& m_limits;
  Graph m_graph;
  std::vector<bool> m_mustStay;
  Indices m_cut;
  std::vector<Indices> m_sets;
  bool m_stopped = false;
};

}  // namespace

CutSets FindCutSets(std::size_t nodes, const std::vector<CutEdge>& edges, const CutLimits& limits) {
  return Search(nodes, edges, limits).Run();
}
