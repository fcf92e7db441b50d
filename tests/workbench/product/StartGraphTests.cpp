#include <gmock/gmock.h>

#include <algorithm>
#include <random>
#include <set>
#include <sstream>

#include "src/PluginFrame/PluginGraph.h"
#include "workbench/product/StartGraph.h"

using PluginFrame::FramePluginData;
using testing::ElementsAre;
using testing::IsEmpty;

namespace {

using Names = std::vector<std::string>;

/// The graph described by `words`: "a:b,c d:" (a depends on b and c).
StartGraph Graph(const std::string& words) {
  ProductModel model;
  std::istringstream list(words);
  for (std::string word; list >> word;) {
    PluginDescription plugin;
    plugin.ID = word.substr(0, word.find(':'));
    std::istringstream others(word.substr(word.find(':') + 1));
    for (std::string other; std::getline(others, other, ',');) {
      PluginDependency dependency;
      dependency.ID = other;
      plugin.Dependencies.push_back(dependency);
    }
    model.ServerPluginDescriptions.push_back(plugin);
  }
  return MakeStartGraph(model);
}

/// The frame's graph of a model.
class FrameGraph {
 public:
  explicit FrameGraph(const ProductModel& model) {
    PluginFrame::AddPluginKeys(m_keys, model);
    PluginFrame::AddPluginData(m_data, m_keys, model);
  }
  ~FrameGraph() { PluginFrame::DisconnectPluginData(m_data); }
  FrameGraph(const FrameGraph&) = delete;
  FrameGraph& operator=(const FrameGraph&) = delete;

  /// Each plugin with the plugins that it waits for, without duplicates, in the order of
  /// declaration.
  std::map<std::string, Names> DependsOn() const {
    std::map<std::string, Names> all;
    for (const auto& entry : m_data) {
      Names& names = all[entry.second->name];
      for (const auto& other : entry.second->depends_on) {
        if (std::count(names.begin(), names.end(), other->name) == 0) names.push_back(other->name);
      }
    }
    return all;
  }

  /// The plugins that never start.
  std::set<std::string> NeverStarted() {
    bool moved = true;
    while (moved) {
      moved = false;
      for (auto& entry : m_data) {
        FramePluginData& plugin = *entry.second;
        if (plugin.state != PluginFrame::kPending || !PluginFrame::ReadyToStart(plugin)) continue;
        plugin.state = PluginFrame::kInitSucceeded;
        moved = true;
      }
    }
    std::set<std::string> left;
    for (const auto& entry : m_data) {
      if (entry.second->state == PluginFrame::kPending) left.insert(entry.second->name);
    }
    return left;
  }

 private:
  PluginFrame::PluginKeys m_keys;
  PluginFrame::PluginDataMap m_data;
};

/// A random model with few different IDs, so that some are listed twice, are empty, name both a
/// plugin and a sub platform, or are unknown; with dependencies of every category and type.
ProductModel RandomModel(std::mt19937& random) {
  const auto below = [&](unsigned bound) { return static_cast<unsigned>(random() % bound); };
  const unsigned names = 2 + below(12);
  const auto name = [&] {
    const unsigned number = below(names);
    return number == 0 ? std::string() : "p" + std::to_string(number);
  };
  ProductModel model;
  for (unsigned i = below(12); i > 0; --i) {
    PluginDescription plugin;
    plugin.ID = name();
    for (unsigned k = below(4); k > 0; --k) {
      constexpr std::int32_t categories[] = {1, 1, 1, 2, 3, 4};
      constexpr std::int32_t types[] = {1, 1, 1, 0, 2};
      PluginDependency dependency;
      dependency.ID = name();
      dependency.Category = categories[below(6)];
      dependency.DependentType = types[below(5)];
      plugin.Dependencies.push_back(dependency);
    }
    model.ServerPluginDescriptions.push_back(plugin);
  }
  for (unsigned i = below(4); i > 0; --i) model.SubPlatforms.push_back({name(), ""});
  return model;
}

Names NamesInOrder(const ProductModel& model) {
  Names names;
  const auto add = [&](const std::string& name) {
    if (std::count(names.begin(), names.end(), name) == 0) names.push_back(name);
  };
  for (const PluginDescription& plugin : model.ServerPluginDescriptions) add(plugin.ID);
  for (const SubPlatformEntry& subPlatform : model.SubPlatforms) add(subPlatform.ID);
  return names;
}

TEST(StartGraph, OfRandomModelsIsTheFramesOwn) {
  std::mt19937 random(1);
  for (int run = 0; run < 1000; ++run) {
    const ProductModel model = RandomModel(random);
    const StartGraph graph = MakeStartGraph(model);
    ASSERT_EQ(NamesInOrder(model), graph.ids) << "run " << run;
    ASSERT_EQ(FrameGraph(model).DependsOn(), graph.dependsOn) << "run " << run;
  }
}

TEST(StartGraph, CyclesAndWhoWaitsBehindThemAreWhoNeverStarts) {
  std::mt19937 random(2);
  int stuckRuns = 0;
  int freeRuns = 0;
  for (int run = 0; run < 1000; ++run) {
    const ProductModel model = RandomModel(random);
    const StartGraph graph = MakeStartGraph(model);
    std::set<std::string> stuck;
    for (const Names& cycle : FindCycles(graph)) {
      for (std::size_t i = 0; i < cycle.size(); ++i) {
        const Names& others = graph.dependsOn.at(cycle[i]);
        ASSERT_TRUE(std::count(others.begin(), others.end(), cycle[(i + 1) % cycle.size()]) == 1)
            << "run " << run << ": no edge after " << cycle[i];
      }
      const Names behind = WaitingBehind(graph, cycle);
      stuck.insert(cycle.begin(), cycle.end());
      stuck.insert(behind.begin(), behind.end());
    }
    ASSERT_EQ(FrameGraph(model).NeverStarted(), stuck) << "run " << run;
    ++(stuck.empty() ? freeRuns : stuckRuns);
  }
  EXPECT_GT(stuckRuns, 100);
  EXPECT_GT(freeRuns, 100);
}

TEST(FindCycles, BeginsWithTheMemberThatStandsFirst) {
  EXPECT_THAT(FindCycles(Graph("x: b:c c:a a:b")), ElementsAre(Names{"b", "c", "a"}));
}

TEST(FindCycles, NamesTheShortestThroughTheFirstMember) {
  EXPECT_THAT(FindCycles(Graph("a:b,d b:c c:a d:a")), ElementsAre(Names{"a", "d"}));
}

TEST(FindCycles, NamesEachGroupOnceInTheModelsOrder) {
  EXPECT_THAT(FindCycles(Graph("a:d b:c c:b d:a,c")),
              ElementsAre(Names{"a", "d"}, Names{"b", "c"}));
}

TEST(FindCycles, NamesSelfDependencyBesideTheCycleOfItsGroup) {
  EXPECT_THAT(FindCycles(Graph("a:a,b b:a c:c")),
              ElementsAre(Names{"a"}, Names{"a", "b"}, Names{"c"}));
}

TEST(FindCycles, FindsNoneWithoutOne) {
  EXPECT_THAT(FindCycles(Graph("a:b,c b:c c:")), IsEmpty());
}

TEST(FindWaitingGroups, NamesAllMembersInTheModelsOrder) {
  EXPECT_THAT(FindWaitingGroups(Graph("x:a a:b,d b:c c:a d:a e:e f:g g:f,e")),
              ElementsAre(Names{"a", "b", "c", "d"}, Names{"f", "g"}));
}

TEST(FindWaitingGroups, AreThoseOfTheCyclesInTheSameOrder) {
  const StartGraph graph = Graph("a:d b:c c:b d:a,c");
  EXPECT_EQ(FindCycles(graph), FindWaitingGroups(graph));
}

TEST(WaitingBehind, AreDirectAndIndirectOnesInTheModelsOrder) {
  EXPECT_THAT(WaitingBehind(Graph("z:y a:b b:a y:a,q q: m:q"), {"a", "b"}), ElementsAre("z", "y"));
}

TEST(StartGraph, TakesAChainLongerThanAStackOfCallsCouldBe) {
  std::string words;
  constexpr int kCount = 50000;
  for (int i = 0; i < kCount; ++i) {
    words += "p" + std::to_string(i) + ":p" + std::to_string((i + 1) % kCount) + " ";
  }
  const auto cycles = FindCycles(Graph(words));
  ASSERT_EQ(1U, cycles.size());
  EXPECT_EQ(static_cast<std::size_t>(kCount), cycles[0].size());
  EXPECT_EQ("p0", cycles[0][0]);
  EXPECT_EQ(static_cast<std::size_t>(kCount) - 1, WaitingBehind(Graph(words), {"p7"}).size());
}

}  // namespace
