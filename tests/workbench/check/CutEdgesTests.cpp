#include "workbench/check/CutEdges.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <random>
#include <set>

using testing::ElementsAre;
using testing::IsEmpty;

namespace {

using Sets = std::vector<std::vector<std::size_t>>;

bool HasCycle(std::size_t nodes, const std::vector<CutEdge>& edges, unsigned long cut) {
  // Removes nodes that no edge leads to until none is left.
  std::vector<bool> gone(nodes);
  for (std::size_t round = 0; round < nodes; ++round) {
    std::vector<bool> reached(nodes);
    for (std::size_t edge = 0; edge < edges.size(); ++edge) {
      if (((cut >> edge) & 1U) == 0 && !gone[edges[edge].from]) reached[edges[edge].to] = true;
    }
    for (std::size_t node = 0; node < nodes; ++node) gone[node] = gone[node] || !reached[node];
  }
  return !std::all_of(gone.begin(), gone.end(), [](bool one) { return one; });
}

std::vector<std::size_t> Members(unsigned long cut) {
  std::vector<std::size_t> members;
  for (std::size_t edge = 0; cut >> edge != 0; ++edge) {
    if (((cut >> edge) & 1U) != 0) members.push_back(edge);
  }
  return members;
}

/// Every set of edges is tried.
std::set<std::vector<std::size_t>> SmallestByTrying(std::size_t nodes,
                                                    const std::vector<CutEdge>& edges) {
  std::set<std::vector<std::size_t>> smallest;
  std::size_t size = edges.size();
  for (unsigned long cut = 0; cut < 1UL << edges.size(); ++cut) {
    const std::vector<std::size_t> members = Members(cut);
    if (members.size() > size || HasCycle(nodes, edges, cut)) continue;
    if (members.size() < size) smallest.clear();
    size = members.size();
    smallest.insert(members);
  }
  return smallest;
}

std::vector<CutEdge> RandomEdges(std::mt19937& random, std::size_t nodes, std::size_t most) {
  std::vector<CutEdge> all;
  for (std::size_t from = 0; from < nodes; ++from) {
    for (std::size_t to = 0; to < nodes; ++to) {
      if (from != to) all.push_back({from, to, std::int64_t(random() % 5)});
    }
  }
  std::shuffle(all.begin(), all.end(), random);
  all.resize(std::min(all.size(), random() % (most + 1)));
  return all;
}

/// 0 -> 1 -> ... -> 0
std::vector<CutEdge> Ring(std::size_t nodes) {
  std::vector<CutEdge> edges;
  for (std::size_t node = 0; node < nodes; ++node) edges.push_back({node, (node + 1) % nodes, 0});
  return edges;
}

std::vector<CutEdge> EachToEach(std::size_t nodes) {
  std::vector<CutEdge> edges;
  for (std::size_t from = 0; from < nodes; ++from) {
    for (std::size_t to = 0; to < nodes; ++to) {
      if (from != to) edges.push_back({from, to, 0});
    }
  }
  return edges;
}

bool Cuts(std::size_t nodes, std::vector<CutEdge> edges, const std::vector<std::size_t>& cut) {
  for (auto at = cut.rbegin(); at != cut.rend(); ++at) {
    edges.erase(edges.begin() + static_cast<std::ptrdiff_t>(*at));
  }
  return FindCutSets(nodes, edges).sets == Sets{{}};
}

TEST(CutEdges, AGraphWithoutCycleNeedsNoCut) {
  const CutSets found = FindCutSets(3, {{0, 1}, {0, 2}, {1, 2}});
  EXPECT_THAT(found.sets, ElementsAre(IsEmpty()));
  EXPECT_TRUE(found.smallest);
  EXPECT_TRUE(found.complete);
}

TEST(CutEdges, OfTwoRingsWithOneCommonEdgeThatEdgeIsCut) {
  const CutSets found = FindCutSets(4, {{0, 1}, {1, 2}, {2, 0}, {1, 3}, {3, 0}});
  EXPECT_THAT(found.sets, ElementsAre(ElementsAre(0)));
}

TEST(CutEdges, EachEdgeOfARingIsASetRankedByPreference) {
  const CutSets found = FindCutSets(3, {{0, 1, 1}, {1, 2, 7}, {2, 0, 1}});
  EXPECT_THAT(found.sets, ElementsAre(ElementsAre(1), ElementsAre(0), ElementsAre(2)));
  EXPECT_TRUE(found.complete);
}

TEST(CutEdges, AllSmallestSetsAreFoundInRandomGraphs) {
  std::mt19937 random(20);
  for (int round = 0; round < 200; ++round) {
    const std::size_t nodes = 2 + random() % 5;
    const std::vector<CutEdge> edges = RandomEdges(random, nodes, 12);
    const CutSets found = FindCutSets(nodes, edges);
    const std::set<std::vector<std::size_t>> expected = SmallestByTrying(nodes, edges);
    ASSERT_EQ(expected, std::set<std::vector<std::size_t>>(found.sets.begin(), found.sets.end()));
    ASSERT_EQ(expected.size(), found.sets.size());
    ASSERT_TRUE(found.smallest && found.complete);
    ASSERT_EQ(found.sets.front().size(), found.atLeast);
  }
}

TEST(CutEdges, SetsOfRandomGraphsAreInTheOrderOfTheirSums) {
  std::mt19937 random(21);
  for (int round = 0; round < 100; ++round) {
    const std::vector<CutEdge> edges = RandomEdges(random, 5, 14);
    std::vector<std::int64_t> sums;
    for (const auto& set : FindCutSets(5, edges).sets) {
      sums.push_back(0);
      for (const std::size_t edge : set) sums.back() += edges[edge].preference;
    }
    ASSERT_TRUE(std::is_sorted(sums.rbegin(), sums.rend()));
  }
}

TEST(CutEdges, WithoutWorkOneSetIsFoundAndNotCalledSmallest) {
  const CutSets found = FindCutSets(6, EachToEach(6), {1, 500});
  ASSERT_EQ(1U, found.sets.size());
  EXPECT_TRUE(Cuts(6, EachToEach(6), found.sets.front()));
  EXPECT_FALSE(found.smallest);
  EXPECT_FALSE(found.complete);
  EXPECT_EQ(1U, found.atLeast);
}

TEST(CutEdges, AtTheLimitOfSetsTheyAreSmallestButNotAll) {
  const CutSets found = FindCutSets(4, Ring(4), {1000, 2});
  EXPECT_EQ(2U, found.sets.size());
  EXPECT_TRUE(found.smallest);
  EXPECT_FALSE(found.complete);
}

TEST(CutEdges, ALongRingIsProvenWithinTheLimit) {
  const CutSets found = FindCutSets(20000, Ring(20000));
  EXPECT_EQ(1U, found.sets.front().size());
  EXPECT_TRUE(found.smallest);
  EXPECT_LT(found.work, 3'000'000U);
}

TEST(CutEdges, ALargeDenseGraphIsCutByTheHeuristic) {
  const std::vector<CutEdge> edges = EachToEach(150);
  const CutSets found = FindCutSets(150, edges);
  ASSERT_EQ(1U, found.sets.size());
  EXPECT_EQ(150U * 149 / 2, found.sets.front().size());
  EXPECT_FALSE(found.complete);
  EXPECT_LT(found.work, 3'000'000U);
}

TEST(CutEdges, TheHeuristicLeavesNoEdgeThatMayStay) {
  std::mt19937 random(22);
  for (int round = 0; round < 100; ++round) {
    const std::vector<CutEdge> edges = RandomEdges(random, 6, 30);
    CutLimits limits;
    limits.work = 1'000'000;
    limits.sets = 0;  // the search ends at once
    const std::vector<std::size_t> cut = FindCutSets(6, edges, limits).sets.front();
    ASSERT_TRUE(Cuts(6, edges, cut));
    for (const std::size_t edge : cut) {
      std::vector<std::size_t> fewer = cut;
      fewer.erase(std::find(fewer.begin(), fewer.end(), edge));
      ASSERT_FALSE(Cuts(6, edges, fewer));
    }
  }
}

}  // namespace
