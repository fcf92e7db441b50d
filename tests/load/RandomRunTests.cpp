// Thousands of runs of random products; each checks the order of starts and stops. A failure names
// the seed; TEV_LOAD_SEED repeats the run with that seed.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <numeric>
#include <set>

#include "src/PluginFrame/PluginManager.h"
#include "tests/load/LibraryDoubles.h"
#include "tests/support/ProductTree.h"
#include "tests/support/TimeLimit.h"

using PluginFrame::CPluginManager;
using testing::IsEmpty;

namespace {

/// Adds plugins whose dependencies have one of several shapes.
void AddPlugins(LibraryDoubles& doubles, std::mt19937& random, std::size_t count) {
  const auto shape = random() % 6;
  for (std::size_t i = 0; i < count; ++i) {
    std::set<std::size_t> needs;
    switch (shape) {
      case 0:  // mostly independent, a few depend on one other plugin
        if (i > 0 && random() % 8 == 0) needs.insert(random() % i);
        break;
      case 1:  // one chain
        if (i > 0) needs.insert(i - 1);
        break;
      case 2:  // a chain of diamonds
        if (i > 0) needs.insert(i % 3 == 1 || i < 3 ? (i - 1) / 3 * 3 : i - 1);
        if (i % 3 == 0 && i > 1) needs.insert(i - 2);
        break;
      case 3:  // several components that do not depend on each other
        if (i >= 7) needs.insert(i - 7);
        if (i >= 14) needs.insert(i - 14);
        break;
      case 4:  // all depend on the first one, and the last one depends on all
        if (i > 0) needs.insert(0);
        if (i + 1 == count) {
          for (std::size_t k = 0; k < i; ++k) needs.insert(k);
        }
        break;
      default:  // anything
        for (unsigned k = 0; i > 0 && k < random() % 6; ++k) needs.insert(random() % i);
        break;
    }
    WatchedPlugin& plugin = doubles.Add({needs.begin(), needs.end()});
    plugin.succeeds = random() % 7 != 0;
    plugin.loads = random() % 11 != 0;
  }
}

std::vector<int> OneToCount(std::size_t count) {
  std::vector<int> numbers(count);
  std::iota(numbers.begin(), numbers.end(), 1);
  return numbers;
}

class RandomRuns : public testing::Test {
 protected:
  void Run(unsigned seed, std::size_t most) {
    SCOPED_TRACE("TEV_LOAD_SEED=" + std::to_string(seed));
    std::mt19937 random(seed);
    LibraryDoubles doubles(seed);
    AddPlugins(doubles, random, 1 + random() % most);
    Run(doubles);
  }

  void Run(LibraryDoubles& doubles) {
    doubles.exePath = m_tree.ExePath();
    m_tree.Product(doubles.Words());
    CPluginManager manager;
    ASSERT_TRUE(manager.Init());
    Start(manager, doubles);
    Stop(manager, doubles);
    EXPECT_THAT(doubles.faults, IsEmpty());
  }

  void Start(CPluginManager& manager, LibraryDoubles& doubles) {
    StartedPluginMap started;
    EXPECT_TRUE(manager.Start(&started));
    EXPECT_EQ(OneToCount(doubles.plugins.size()), doubles.counts);
    std::set<std::string> handles;
    for (const auto& entry : started) handles.insert(entry.first);
    for (const WatchedPlugin& plugin : doubles.plugins) {
      EXPECT_EQ(plugin.loads ? 1 : 0, plugin.inits) << plugin.name;
      EXPECT_EQ(plugin.loads ? 1U : 0U, handles.count(plugin.name)) << plugin.name;
      EXPECT_EQ(plugin.loads && plugin.succeeds ? 1U : 0U, doubles.loadState.count(plugin.name));
      const std::string outcome = !plugin.loads     ? "Load Failed"
                                  : plugin.succeeds ? "Init OK"
                                                    : "Init Failed";
      EXPECT_EQ(1, doubles.timing["[" + plugin.name + "] " + outcome]) << plugin.name;
    }
    EXPECT_EQ(doubles.plugins.size(), PluginLines(doubles));
    doubles.counts.clear();
  }

  void Stop(CPluginManager& manager, LibraryDoubles& doubles) {
    manager.Uninit();
    EXPECT_EQ(OneToCount(doubles.plugins.size()), doubles.counts);
    for (const WatchedPlugin& plugin : doubles.plugins) {
      EXPECT_EQ(plugin.loads ? 1 : 0, plugin.uninits) << plugin.name;
      EXPECT_EQ(0, plugin.handles) << plugin.name;
    }
  }

  static std::size_t PluginLines(const LibraryDoubles& doubles) {
    std::size_t lines = 0;
    for (const auto& line : doubles.timing) {
      if (line.first[0] == '[') lines += static_cast<std::size_t>(line.second);
    }
    return lines;
  }

  ProductTree m_tree;
};

constexpr unsigned kFirstBigSeed = 10000;

std::size_t MostPlugins(unsigned seed) {
  return seed < kFirstBigSeed ? 60 : 900;
}

/// The runs with 500 seeds, which begin at the parameter.
class FiveHundredRandomRuns : public RandomRuns, public testing::WithParamInterface<unsigned> {};

TEST_P(FiveHundredRandomRuns, KeepTheOrderOfTheirPlugins) {
  if (const char* seed = std::getenv("TEV_LOAD_SEED")) {
    const auto number = static_cast<unsigned>(std::atoi(seed));
    return Run(number, MostPlugins(number));
  }
  for (unsigned seed = GetParam(); seed < GetParam() + 500 && !HasFailure(); ++seed) {
    Run(seed, MostPlugins(seed));
  }
}

INSTANTIATE_TEST_SUITE_P(From, FiveHundredRandomRuns, testing::Range(0U, 2500U, 500U),
                         testing::PrintToStringParamName());

TEST_F(RandomRuns, OfManyPluginsKeepTheirOrder) {
  for (unsigned seed = kFirstBigSeed; seed < kFirstBigSeed + 12 && !HasFailure(); ++seed) {
    Run(seed, MostPlugins(seed));
  }
}

TEST_F(RandomRuns, OfAProductOfNineHundredPluginsInOneChainAndInNone) {
  for (const bool chain : {false, true}) {
    LibraryDoubles doubles(1);
    for (std::size_t i = 0; i < 900; ++i) {
      doubles.Add(chain && i > 0 ? std::vector<std::size_t>{i - 1} : std::vector<std::size_t>());
    }
    Run(doubles);
  }
}

enum class Finisher { kDuringTheStop, kAfterTheStop };

/// Runs a product and stops it while the `stage`-th plugin is in its Init, which returns when the
/// stop has checked the plugins a few times, or after the stop.
void StopAtStage(const ProductTree& tree, unsigned seed, int stage, Finisher finisher) {
  SCOPED_TRACE("seed " + std::to_string(seed) + ", stage " + std::to_string(stage));
  std::mt19937 random(seed);
  LibraryDoubles doubles(seed);
  doubles.exePath = tree.ExePath();
  AddPlugins(doubles, random, 12);
  std::atomic<int> begun{0};
  std::atomic<bool> reached{false};
  std::atomic<int> restsOfTheStart{-1};
  std::atomic<bool> stopped{false};
  for (WatchedPlugin& plugin : doubles.plugins) {
    plugin.loads = true;
    plugin.onInit = [&] {
      if (++begun != stage) return;
      reached = true;
      AwaitThat("the stop does not end the start", [&] { return restsOfTheStart >= 0; });
      AwaitThat("the stop does not end", [&] {
        return stopped ||
               (finisher == Finisher::kDuringTheStop && doubles.rests > restsOfTheStart + 2);
      });
    };
  }
  tree.Product(doubles.Words());
  CPluginManager manager;
  ASSERT_TRUE(manager.Init());
  std::thread starter([&] {
    EXPECT_TRUE(manager.Start(nullptr));
    restsOfTheStart = doubles.rests.load();
  });
  AwaitThat("the start does not reach the stage", [&] { return reached.load(); });
  manager.Uninit();
  stopped = true;
  starter.join();
  doubles.AwaitTasks();

  EXPECT_GE(doubles.counts.size(), doubles.plugins.size());
  // Faults in the order of the start are not allowed; UnInit may come too early for the plugin
  // whose Init ends after the stop has begun.
  for (const std::string& fault : doubles.faults) EXPECT_NE(0U, fault.find("Init of")) << fault;
  for (const WatchedPlugin& plugin : doubles.plugins) {
    EXPECT_LE(plugin.inits, 1) << plugin.name;
    EXPECT_LE(plugin.uninits, plugin.inits) << plugin.name;
    const int loaded = plugin.inits - plugin.uninits;  // 1: its Init ended too late for the stop
    EXPECT_EQ(loaded, plugin.handles) << plugin.name;
  }
}

TEST(StopWhileStarting, AtEachStageEndsAndStopsWhatIsUp) {
  const ProductTree tree;
  for (unsigned seed = 0; seed < 12; ++seed) {
    for (int stage = 1; stage <= 12; ++stage)
      StopAtStage(tree, seed, stage, Finisher::kDuringTheStop);
  }
}

TEST(StopWhileStarting, WithALateFinisherEndsAllTheSame) {
  const ProductTree tree;
  for (unsigned seed = 0; seed < 12; ++seed) {
    for (int stage = 1; stage <= 12; ++stage)
      StopAtStage(tree, seed, stage, Finisher::kAfterTheStop);
  }
}

}  // namespace
