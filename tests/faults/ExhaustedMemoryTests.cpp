// Memory that is exhausted while a plugin starts or stops, from its load, its Init or its UnInit on
// until its task ends: the plugin is counted, and a library that may still run stays mapped.

#include <gtest/gtest.h>

#include <map>
#include <optional>
#include <string>
#include <vector>

#include "src/PluginFrame/PluginManager.h"
#include "tests/faults/FailingMemory.h"
#include "tests/load/LibraryDoubles.h"
#include "tests/support/ProductTree.h"

namespace {

using Counts = std::vector<int>;
using LoadState = std::map<std::string, bool>;

class ExhaustedMemory : public testing::Test {
 protected:
  ExhaustedMemory() {
    // A copy of so long a name allocates.
    plugin.name += ".with_a_name_that_no_string_holds_in_itself";
    tree.Product(doubles.Words());
    doubles.exePath = tree.ExePath();
    doubles.onTaskEnd = [] { Memory().exhausted = false; };
  }

  /// Starts the product; `started` is what the frame says is loaded.
  void Start() {
    ASSERT_TRUE(manager->Init());
    EXPECT_TRUE(manager->Start(&started));
    doubles.AwaitTasks();
  }

  void Stop() {
    manager->Uninit();
    doubles.AwaitTasks();
    manager.reset();
  }

  static void Exhaust() { Memory().exhausted = true; }

  ProductTree tree;
  LibraryDoubles doubles{1};
  WatchedPlugin& plugin = doubles.Add({});
  StartedPluginMap started;
  std::optional<PluginFrame::CPluginManager> manager{std::in_place};
};

TEST_F(ExhaustedMemory, AfterTheLoadIsAFailedStartThatLeavesNothingLoaded) {
  plugin.onLoad = &Exhaust;
  Start();
  EXPECT_EQ(StartedPluginMap(), started);
  EXPECT_EQ(LoadState(), doubles.loadState);
  EXPECT_EQ(Counts{1}, doubles.counts);
  EXPECT_EQ(0, plugin.inits);
  EXPECT_EQ(0, plugin.handles);
}

TEST_F(ExhaustedMemory, AfterAnInitThatSucceededLosesOnlyItsRow) {
  plugin.onInit = &Exhaust;
  Start();
  EXPECT_EQ((StartedPluginMap{{plugin.name, &plugin}}), started);
  EXPECT_EQ((LoadState{{plugin.name, true}}), doubles.loadState);
  EXPECT_EQ(Counts{1}, doubles.counts);
  EXPECT_EQ(1, plugin.handles);
  EXPECT_EQ(0U, doubles.timing.count("[" + plugin.name + "] Init OK"));
}

TEST_F(ExhaustedMemory, AfterAnInitThatFailedKeepsThePluginForTheStop) {
  plugin.succeeds = false;
  plugin.onInit = &Exhaust;
  Start();
  EXPECT_EQ((StartedPluginMap{{plugin.name, &plugin}}), started);
  EXPECT_EQ(LoadState(), doubles.loadState);
  EXPECT_EQ(Counts{1}, doubles.counts);
  Stop();
  EXPECT_EQ(1, plugin.uninits);
  EXPECT_EQ(0, plugin.handles);
}

TEST_F(ExhaustedMemory, AfterAnUnInitThatRefusedKeepsTheLibraryMapped) {
  plugin.stops = false;
  plugin.onUnInit = &Exhaust;
  Start();
  Stop();
  EXPECT_EQ((Counts{1, 1}), doubles.counts);
  EXPECT_EQ(1, plugin.uninits);
  EXPECT_EQ(1, plugin.handles);
}

TEST_F(ExhaustedMemory, AfterAnUnInitThatStoppedFreesTheLibrary) {
  plugin.onUnInit = &Exhaust;
  Start();
  Stop();
  EXPECT_EQ((Counts{1, 1}), doubles.counts);
  EXPECT_EQ(1, plugin.uninits);
  EXPECT_EQ(0, plugin.handles);
}

}  // namespace
