#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <iterator>
#include <map>
#include <numeric>
#include <optional>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "workbench/check/CutEdges.h"
#include "workbench/check/DeclaredDependencies.h"
#include "workbench/check/JudgedDependency.h"
#include "workbench/check/Rule.h"
#include "workbench/check/WaitingPlugins.h"
#include "workbench/check/Words.h"
#include "workbench/product/StartGraph.h"

namespace {

constexpr std::size_t kMostSets = 3;
constexpr std::size_t kMostInSet = 5;

/// One group of plugins that wait for each other.
struct Group {
  std::vector<std::string> members;
  std::vector<std::string> chain;  // the shortest cycle through the first member
  std::vector<CutEdge> edges;      // of positions in `members`
  std::vector<Place> places;       // of the edges, where they are declared
};

/// Which dependencies of a cycle are likelier to be mistakes.
class Likelihood {
 public:
  explicit Likelihood(const CheckedProduct& product) : m_product(product) {
    for (const PluginEntry& entry : product.entries) m_listed.emplace(&entry, m_listed.size());
    for (const auto& [id, others] : product.graph.dependsOn) {
      for (const std::string& other : others) ++m_users[other];
    }
  }

  /// Greater for a dependency on a plugin that is listed later, then for one of a plugin that many
  /// depend on, on one that few depend on.
  std::int64_t Of(const std::string& from, const std::string& to) const {
    const std::int64_t byUsers = Users(from) - Users(to);
    return Listed(from) < Listed(to) ? kListedLater + byUsers : byUsers;
  }

 private:
  static constexpr std::int64_t kListedLater = std::int64_t{1} << 32;

  std::int64_t Users(const std::string& id) const {
    const auto found = m_users.find(id);
    return found == m_users.end() ? 0 : found->second;
  }

  std::size_t Listed(const std::string& id) const {
    const Description* description = m_product.Kept(id);
    return description == nullptr ? 0 : m_listed.at(description->entries.front());
  }

  const CheckedProduct& m_product;
  std::map<const PluginEntry*, std::size_t> m_listed;
  std::map<std::string, std::int64_t> m_users;
};

void AddEdges(const CheckedProduct& product, const Likelihood& likelihood, Group& group) {
  std::map<std::string, std::size_t> positions;
  for (const std::string& member : group.members) positions.emplace(member, positions.size());
  for (const std::string& from : group.members) {
    const std::map<std::string, Place> places = DeclaredDependencies(product, from);
    for (const std::string& to : product.graph.dependsOn.at(from)) {
      const auto position = positions.find(to);
      if (position == positions.end() || from == to) continue;  // TEV306 reports from == to
      group.edges.push_back({positions.at(from), position->second, likelihood.Of(from, to)});
      const auto place = places.find(to);
      group.places.push_back(place == places.end() ? PlaceOf(product.File(FileKind::kProduct))
                                                   : place->second);
    }
  }
}

std::vector<Group> GroupsOf(const CheckedProduct& product) {
  std::vector<Group> groups;
  for (std::vector<std::string>& members : FindWaitingGroups(product.graph)) {
    groups.push_back({std::move(members), {}, {}, {}});
  }
  if (groups.empty()) return groups;
  std::size_t next = 0;
  for (std::vector<std::string>& cycle : FindCycles(product.graph)) {
    if (cycle.size() > 1) groups[next++].chain = std::move(cycle);
  }
  const Likelihood likelihood(product);
  for (Group& group : groups) AddEdges(product, likelihood, group);
  return groups;
}

std::string WhoWaits(const Group& group) {
  std::string text = ": these wait for each other for ever";
  std::vector<std::string> others;
  const std::set<std::string> inChain(group.chain.begin(), group.chain.end());
  std::copy_if(group.members.begin(), group.members.end(), std::back_inserter(others),
               [&](const std::string& member) { return inChain.count(member) == 0; });
  if (!others.empty()) {
    text = ": these and " + QuotedList(others) + " wait for each other for ever";
  }
  return text + ", and the start never ends";
}

std::string EdgeText(const Group& group, std::size_t edge) {
  return "that of " + Quoted(group.members[group.edges[edge].from]) + " on " +
         Quoted(group.members[group.edges[edge].to]);
}

/// "that of "a" on "b" and that of "c" on "d""
std::string SetText(const Group& group, const std::vector<std::size_t>& set) {
  std::string text;
  const std::size_t shown = std::min(set.size(), kMostInSet);
  for (std::size_t i = 0; i < shown; ++i) {
    const bool last = i > 0 && i + 1 == set.size();
    text += (i == 0 ? "" : last ? " and " : ", ") + EdgeText(group, set[i]);
  }
  if (shown < set.size()) text += " and " + std::to_string(set.size() - shown) + " more";
  return text;
}

/// Which dependencies to remove: up to three sets of one or two, or one larger set.
std::string CutText(const Group& group, const CutSets& cut) {
  const std::size_t size = cut.sets.front().size();
  const bool one = size == 1;
  const std::size_t shown = std::min(cut.sets.size(), size > 2 ? 1 : kMostSets);
  const bool isRing = group.edges.size() == group.members.size();
  std::string text = std::string("; to break the ") + (isRing ? "cycle" : "cycles") + ", remove " +
                     (one ? "one dependency: " : std::to_string(size) + " dependencies: ");
  for (std::size_t i = 0; i < shown; ++i) {
    text += (i == 0 ? "" : one ? ", or " : "; or ") + SetText(group, cut.sets[i]);
  }
  if (!cut.smallest) {
    return text + "; whether fewer than " + std::to_string(size) + " are enough is not known" +
           (cut.atLeast > 1 ? ", but at least " + std::to_string(cut.atLeast) + " are needed" : "");
  }
  const std::size_t more = cut.sets.size() - shown;
  if (!cut.complete) return text + "; there are other choices";
  return more == 0
             ? text
             : text + "; there " + (more == 1 ? "is " : "are ") + Counted(more, "other choice");
}

/// Ranks the edges: those of `set`, then those of the chain from there on, then the others.
class EdgeRank {
 public:
  EdgeRank(const Group& group, const std::vector<std::size_t>& set) : m_group(group), m_set(set) {
    const std::vector<std::string>& chain = group.chain;
    for (std::size_t i = 0; i < chain.size(); ++i) m_positions.emplace(chain[i], i);
    for (std::size_t i = 0; i < set.size() && m_first == 0; ++i) {
      m_first = PositionInChain(set[i]).value_or(0);
    }
  }

  std::size_t operator()(std::size_t edge) const {
    if (std::binary_search(m_set.begin(), m_set.end(), edge)) return 0;
    const std::size_t size = m_group.chain.size();
    const auto position = PositionInChain(edge);
    return position ? 1 + (*position + size - m_first) % size : 1 + size;
  }

 private:
  std::optional<std::size_t> PositionInChain(std::size_t edge) const {
    const auto from = m_positions.find(m_group.members[m_group.edges[edge].from]);
    if (from == m_positions.end()) return std::nullopt;
    const std::string& next = m_group.chain[(from->second + 1) % m_group.chain.size()];
    if (next != m_group.members[m_group.edges[edge].to]) return std::nullopt;
    return from->second;
  }

  const Group& m_group;
  const std::vector<std::size_t>& m_set;
  std::map<std::string, std::size_t> m_positions;  // in the chain
  std::size_t m_first = 0;                         // of the set's first edge in the chain
};

std::vector<std::size_t> EdgesInOrder(const Group& group, const std::vector<std::size_t>& set) {
  const EdgeRank rank(group, set);
  std::vector<std::size_t> order(group.edges.size());
  std::iota(order.begin(), order.end(), std::size_t{0});
  std::vector<std::size_t> ranks;
  std::transform(order.begin(), order.end(), std::back_inserter(ranks), rank);
  std::stable_sort(order.begin(), order.end(),
                   [&](std::size_t a, std::size_t b) { return ranks[a] < ranks[b]; });
  return order;
}

/// Adds every edge as a related place, and the sets to remove.
void AddPlaces(RuleFinding& finding, const Group& group, const CutSets& cut) {
  const std::vector<std::size_t>& set = cut.sets.front();
  const std::string removed = set.size() == 1
                                  ? "; the first choice to remove"
                                  : "; one of the " + std::to_string(set.size()) + " to remove";
  std::vector<std::size_t> positions(group.edges.size());
  for (const std::size_t edge : EdgesInOrder(group, set)) {
    positions[edge] = finding.related.size();
    const bool isCut = std::binary_search(set.begin(), set.end(), edge);
    finding.related.push_back({group.places[edge], Quoted(group.members[group.edges[edge].from]) +
                                                       " depends on " +
                                                       Quoted(group.members[group.edges[edge].to]) +
                                                       (isCut ? removed : "")});
  }
  for (const std::vector<std::size_t>& edges : cut.sets) {
    std::vector<std::size_t>& choice = finding.choices.emplace_back();
    for (const std::size_t edge : edges) choice.push_back(positions[edge]);
    std::sort(choice.begin(), choice.end());
  }
}

void Check(const CheckedProduct& product, RuleFindings& findings) {
  CutLimits limits;
  std::optional<WaitingPlugins> waiting;
  for (const Group& group : GroupsOf(product)) {
    if (!waiting) waiting.emplace(product.graph);
    const CutSets cut = FindCutSets(group.members.size(), group.edges, limits);
    limits.work -= std::min(limits.work, cut.work);
    RuleFinding finding;
    finding.place = group.places[cut.sets.front().front()];
    finding.message = CycleText(group.chain) + WhoWaits(group) + waiting->Clause(group.members) +
                      CutText(group, cut);
    AddPlaces(finding, group, cut);
    finding.plugin = group.chain.front();
    finding.subject = CycleText(group.chain);
    findings.push_back(std::move(finding));
  }
}

}  // namespace

TEV_RULE(DependencyCycle) = {
    "TEV307",
    Severity::kError,
    "Plugins depend on each other in a cycle and are never started",
    "The frame starts a plugin when all that it depends on have finished. Plugins that depend on "
    "each other never do, nor do those that depend on them; the start never ends by itself, and "
    "neither does the stop. There is one finding for each group of plugins that wait for each "
    "other. It names the smallest sets of dependencies without which the group has no cycle, "
    "first the one whose dependencies are most likely wrong: those on a plugin that is listed "
    "later, then those of a plugin that many depend on, on one that few depend on. For large "
    "groups the search is limited; then the finding says "
    "that fewer may be enough. JSON and SARIF have every dependency of the group as a related "
    "place, and up to 500 of the smallest sets that were found, ranked, as the "
    "member choices.",
    R"(<Plugin ID="b.server"/> in a.server, and <Plugin ID="a.server"/> in b.server)",
    "Remove one of the dependencies that the message names, or move what both plugins need into a "
    "third one.",
    &Check};
