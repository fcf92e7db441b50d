#include <algorithm>
#include <new>
#include <stdexcept>
#include <thread>
#include <utility>

#include "src/PluginFrame/PluginManager.h"
#include "tests/support/FrameTest.h"

using PluginFrame::CPluginManager;
using testing::_;
using testing::ElementsAre;
using testing::InSequence;
using testing::Return;
using testing::SetArgReferee;
using testing::UnorderedElementsAre;

namespace {

class PluginStart : public FrameTest {
 protected:
  /// Initialises this product, with a library for every plugin that records its Init.
  void Product(const std::string& words, const std::vector<std::string>& names) {
    tree.Product(words);
    for (const std::string& name : names) {
      seam.libraries[name].init = [this, name] {
        inits.push_back(name);
        return true;
      };
    }
    ASSERT_TRUE(manager.Init());
    Log::Instance().Clear();
  }

  CPluginManager manager;
  StartedPluginMap started;
  std::vector<std::string> inits;
};

TEST_F(PluginStart, BeforeInitDoesNothingAndLogsNothing) {
  EXPECT_CALL(seam.threads, Grant).Times(0);
  EXPECT_TRUE(manager.Start(&started));
  EXPECT_THAT(log.Brief(), ElementsAre());
}

TEST_F(PluginStart, LogsEveryStepAndEveryCost) {
  Product("a:", {"a"});
  seam.libraries["a"].init = [this] {
    seam.now += 30;
    return true;
  };
  {
    InSequence order;
    EXPECT_CALL(seam.threads, Grant("platform.PluginFrame", 1, 1, 0)).WillOnce(Return(1U));
    EXPECT_CALL(seam.platform, TakeTime("Plugins need to init:\n[a] ", -1));
    EXPECT_CALL(seam.threads, Post("platform.PluginFrame", false));
    EXPECT_CALL(seam.platform, TakeTime("[a] Init OK", 30));
    EXPECT_CALL(seam.threads, Release("platform.PluginFrame", false));
    EXPECT_CALL(seam.platform, UpdatePluginsLoadState(std::map<std::string, bool>{{"a", true}}));
    EXPECT_CALL(seam.lpc, Notify(""));
  }
  EXPECT_TRUE(manager.Start(&started));
  EXPECT_EQ((StartedPluginMap{{"a", &seam.libraries["a"]}}), started);
  EXPECT_THAT(seam.sleeps, ElementsAre(200));
  const std::string path = tree.ExeDirectory() + "a.dll";
  EXPECT_THAT(
      log.Brief(),
      ElementsAre("3 Start: [PluginManager start]----PluginManager start----",
                  "3 Start: [PluginManager start]Plugins init start...",
                  "3 SinglePluginLoad: [Plugin Load]Plugin [a] SinglePluginLoad Begin.",
                  "3 Load: [Plugin]start frame plugin Being path= [" + path + "]",
                  "3 Load: [Plugin]start frame plugin end success.path= [" + path + "]",
                  "3 SinglePluginLoad: [Plugin Load]Plugin Init begin.[a]",
                  "3 SinglePluginLoad: [Plugin Load]Plugin Init end. [a] cost time [30]ms",
                  "3 SinglePluginLoad: [Plugin Load]Plugin [a] SinglePluginLoad End. count[1].",
                  "3 Start: [PluginManager start]Plugins init end. Total cost time [230]ms.",
                  "3 Start: [PluginManager start]Notify plugin start by LPC.",
                  "3 Start: [PluginManager start]----PluginManager Start success----"));
}

TEST_F(PluginStart, WithoutThreadsFailsAndPostsNothing) {
  Product("a:", {"a"});
  EXPECT_CALL(seam.threads, Grant).WillOnce(Return(0U));
  EXPECT_CALL(seam.threads, Post).Times(0);
  EXPECT_CALL(seam.threads, Release).Times(0);
  EXPECT_FALSE(manager.Start(&started));
  EXPECT_THAT(log.BriefFrom(6),
              ElementsAre("6 Start: [PluginManager start]----PluginManager start failed.Get thread "
                          "for platform.PluginFrame failed.----"));
}

TEST_F(PluginStart, WithoutPluginsAsksForNoThreadsAndEndsAtOnce) {
  Product("", {});
  EXPECT_CALL(seam.threads, Grant("platform.PluginFrame", 1, 0, 0)).WillOnce(Return(1U));
  EXPECT_CALL(seam.threads, Release("platform.PluginFrame", false));
  EXPECT_TRUE(manager.Start(&started));
  EXPECT_THAT(seam.sleeps, ElementsAre());
}

TEST_F(PluginStart, PluginsStartLevelByLevelInTheProductsOrder) {
  Product("d:b,c b:a c:a a:", {"a", "b", "c", "d"});
  EXPECT_TRUE(manager.Start(&started));
  EXPECT_THAT(inits, ElementsAre("a", "b", "c", "d"));
  EXPECT_THAT(seam.sleeps, ElementsAre(200, 200, 200));
}

TEST_F(PluginStart, DependentOfAFailedPluginStartsAfterIt) {
  Product("b:a a:", {"a", "b"});
  seam.libraries["a"].init = [this] {
    inits.emplace_back("a fails");
    return false;
  };
  EXPECT_TRUE(manager.Start(&started));
  EXPECT_THAT(inits, ElementsAre("a fails", "b"));
}

TEST_F(PluginStart, FailedInitLeavesThePluginLoadedAndNotReported) {
  Product("a: b:", {"a", "b"});
  seam.libraries["a"].init = [this] {
    seam.now += 5;
    return false;
  };
  EXPECT_CALL(seam.platform, TakeTime).Times(testing::AnyNumber());
  EXPECT_CALL(seam.platform, TakeTime("[a] Init Failed", 5));
  EXPECT_CALL(seam.platform, UpdatePluginsLoadState(std::map<std::string, bool>{{"b", true}}));
  EXPECT_TRUE(manager.Start(&started));
  EXPECT_EQ(2U, started.size());
  EXPECT_EQ(1, seam.libraries["a"].handles);
  EXPECT_THAT(log.BriefFrom(5),
              ElementsAre("5 SinglePluginLoad: [Plugin Load]Plugin Init end (failed). [a] cost "
                          "time [5]ms.",
                          "5 SinglePluginLoad: [Plugin Load]Plugin [a] SinglePluginLoad End. "
                          "count[1]."));
}

TEST_F(PluginStart, PluginThatCannotBeLoadedIsCountedAndNotHandedOver) {
  Product("a:", {});
  EXPECT_CALL(seam.platform, TakeTime).Times(testing::AnyNumber());
  EXPECT_CALL(seam.platform, TakeTime("[a] Load Failed", -1));
  EXPECT_CALL(seam.platform, UpdatePluginsLoadState(std::map<std::string, bool>{}));
  EXPECT_TRUE(manager.Start(&started));
  EXPECT_TRUE(started.empty());
  EXPECT_THAT(log.BriefFrom(5),
              ElementsAre("5 Load: [Plugin]Get dynamic library handle failed.path= " +
                              tree.ExeDirectory() + "a.dll,errorcode=126",
                          "5 SinglePluginLoad: [Plugin Load]Plugin a load failed, InitFailed, "
                          "count[1]."));
}

TEST_F(PluginStart, DependentOfAPluginThatCannotBeLoadedStarts) {
  Product("b:a a:", {"b"});
  EXPECT_TRUE(manager.Start(&started));
  EXPECT_THAT(inits, ElementsAre("b"));
}

TEST_F(PluginStart, TaskThatThrowsIsCountedAndDependentsStart) {
  Product("c:a,b a: b:", {"a", "b", "c"});
  seam.libraries["a"].onLoad = [] { throw std::bad_alloc(); };
  seam.libraries["b"].onLoad = [] { throw 7; };
  EXPECT_CALL(seam.platform, UpdatePluginsLoadState(std::map<std::string, bool>{{"c", true}}));
  EXPECT_TRUE(manager.Start(&started));
  EXPECT_THAT(inits, ElementsAre("c"));
  EXPECT_EQ(1U, started.size());
  EXPECT_THAT(
      log.BriefFrom(5),
      ElementsAre(
          std::string("5 SinglePluginLoad: [Plugin Load]Plugin [a] SinglePluginLoad End (") +
              std::bad_alloc().what() + "). count[1].",
          "5 SinglePluginLoad: [Plugin Load]Plugin [b] SinglePluginLoad End (something "
          "that is no exception object). count[2]."));
}

TEST_F(PluginStart, TimingRowThatThrowsIsLostAndNothingElse) {
  Product("b:a a:", {"a", "b"});
  EXPECT_CALL(seam.platform, TakeTime("Plugins need to init:\n[a] [b] ", -1))
      .WillOnce(testing::Throw(std::bad_alloc()));
  EXPECT_CALL(seam.platform, TakeTime("[a] Init OK", _)).WillOnce(testing::Throw(7));
  EXPECT_CALL(seam.platform, TakeTime("[b] Init OK", _));
  EXPECT_CALL(seam.platform,
              UpdatePluginsLoadState(std::map<std::string, bool>{{"a", true}, {"b", true}}));
  EXPECT_TRUE(manager.Start(&started));
  EXPECT_THAT(log.BriefFrom(4),
              ElementsAre("4 Start: a row of the timing table is lost",
                          "4 SinglePluginLoad: a row of the timing table is lost"));
}

TEST_F(PluginStart, PluginWhoseTaskIsRefusedIsCountedAndOthersStart) {
  Product("b:a a:", {"a", "b"});
  EXPECT_CALL(seam.threads, Post).WillOnce(Return(false)).WillOnce(Return(true));
  EXPECT_CALL(seam.platform, UpdatePluginsLoadState(std::map<std::string, bool>{{"b", true}}));
  EXPECT_TRUE(manager.Start(&started));
  EXPECT_THAT(inits, ElementsAre("b"));
  EXPECT_THAT(log.BriefFrom(5),
              ElementsAre("5 SinglePluginLoad: [Plugin Load]Plugin a not loaded (the thread pool "
                          "refused its task), count[1]."));
}

TEST_F(PluginStart, ExceptionInItsLoopLeavesNoCountForTheStop) {
  Product("a: b:", {"a", "b"});
  seam.onSleep = [this] {
    seam.RunTasks();
    throw std::runtime_error("no");
  };
  EXPECT_THROW(manager.Start(&started), std::runtime_error);
  seam.onSleep = [this] { seam.RunTasks(); };
  manager.Uninit();
  EXPECT_EQ(0, seam.libraries["a"].handles);
  EXPECT_EQ(0, seam.libraries["b"].handles);
}

TEST_F(PluginStart, ExceptionInThePoolsReleaseLeavesNoCountForTheStop) {
  Product("a: b:", {"a", "b"});
  EXPECT_CALL(seam.threads, Release)
      .WillOnce(testing::Throw(std::runtime_error("no")))
      .WillRepeatedly(Return());
  EXPECT_THROW(manager.Start(&started), std::runtime_error);
  manager.Uninit();
  EXPECT_EQ(0, seam.libraries["a"].handles);
  EXPECT_EQ(0, seam.libraries["b"].handles);
}

TEST_F(PluginStart, TaskQueuedUntilItsPluginWasStoppedLoadsNothing) {
  Product("a:", {"a"});
  std::thread stop;
  seam.onSleep = [&] {
    if (!stop.joinable()) {
      stop = std::thread([&] { manager.Uninit(); });
    } else if (seam.tasks.size() == 2) {
      std::reverse(seam.tasks.begin(), seam.tasks.end());  // the unload overtakes the load
      seam.RunTasks();
    }
    std::this_thread::yield();
  };
  EXPECT_TRUE(manager.Start(&started));
  stop.join();
  EXPECT_THAT(inits, ElementsAre());
  EXPECT_THAT(seam.loadedPaths, ElementsAre());
  EXPECT_THAT(log.Brief("SinglePluginLoad"),
              ElementsAre("3 SinglePluginLoad: [Plugin Load]Plugin [a] SinglePluginLoad Begin.",
                          "5 SinglePluginLoad: [Plugin Load]Plugin a not loaded (the stop came "
                          "first), count[2]."));
}

TEST_F(PluginStart, AddonsPluginIsLoadedFromItsPath) {
  AddonModel addon;
  PluginDescription plugin;
  plugin.ID = "extra";
  plugin.Path = "/addons/Extra/";
  addon.ServerPluginDescriptions = {plugin};
  EXPECT_CALL(seam.platform, GetInstalledAddonModel)
      .WillOnce(SetArgReferee<0>(std::vector<AddonModel>{addon}));
  Product("a:", {"a", "extra"});
  EXPECT_TRUE(manager.Start(&started));
  EXPECT_THAT(seam.loadedPaths,
              UnorderedElementsAre(tree.ExeDirectory() + "a.dll", "/addons/Extra/extra.dll"));
}

TEST_F(PluginStart, ADescriptionWithAnEmptyPathNamesNoDirectory) {
  AddonModel addon;
  PluginDescription plugin;
  plugin.ID = "extra";
  addon.ServerPluginDescriptions = {plugin};
  EXPECT_CALL(seam.platform, GetInstalledAddonModel)
      .WillOnce(SetArgReferee<0>(std::vector<AddonModel>{addon}));
  Product("", {"extra"});
  EXPECT_TRUE(manager.Start(&started));
  EXPECT_THAT(seam.loadedPaths, ElementsAre("extra.dll"));
}

TEST_F(PluginStart, ReleasesThePoolAfterTheLastPluginAndBeforeItsEnd) {
  Product("a:", {"a"});
  std::vector<std::string> logged;
  EXPECT_CALL(seam.threads, Release).WillOnce([&](auto&&...) { logged = log.Brief(); });
  EXPECT_TRUE(manager.Start(&started));
  EXPECT_EQ("3 SinglePluginLoad: [Plugin Load]Plugin [a] SinglePluginLoad End. count[1].",
            logged.back());
}

TEST_F(PluginStart, ReleasesThePoolWhenItThrows) {
  Product("a:", {"a"});
  seam.onSleep = [] { throw std::runtime_error("no"); };
  EXPECT_CALL(seam.threads, Release("platform.PluginFrame", false)).Times(1);
  EXPECT_THROW(manager.Start(&started), std::runtime_error);
}

TEST_F(PluginStart, WhoseLoopThrowsThrowsThatThoughThePoolsReleaseThrowsToo) {
  Product("a:", {"a"});
  seam.onSleep = [] { throw std::runtime_error("in the loop"); };
  EXPECT_CALL(seam.threads, Release).WillOnce(testing::Throw(std::runtime_error("no")));
  EXPECT_THAT([this] { manager.Start(&started); },
              testing::ThrowsMessage<std::runtime_error>("in the loop"));
}

TEST_F(PluginStart, NotifiesTheFrameworkBeforeItLogsThat) {
  Product("", {});
  std::vector<std::string> logged;
  EXPECT_CALL(seam.lpc, Notify("")).WillOnce([&](auto&&...) { logged = log.Brief(); });
  EXPECT_TRUE(manager.Start(&started));
  EXPECT_EQ("3 Start: [PluginManager start]Plugins init end. Total cost time [0]ms.",
            logged.back());
}

TEST_F(PluginStart, ChangesNoStateWhileItPosts) {
  Product("a: b:", {"a", "b"});
  std::thread worker;
  EXPECT_CALL(seam.threads, Post).WillOnce(Return(true)).WillOnce([&](auto&&...) {
    worker = std::thread([task = std::exchange(seam.tasks, {}).at(0)] { task->Exec(); });
    // Begin, begin and end of its Init; its end follows when its state is set.
    EXPECT_TRUE(log.StaysAt("SinglePluginLoad", 3));
    return true;
  });
  EXPECT_TRUE(manager.Start(&started));
  worker.join();
  EXPECT_THAT(inits, ElementsAre("a", "b"));
}

TEST_F(PluginStart, EndsAfterTheLastPluginsLine) {
  Product("a:", {"a"});
  std::thread worker;
  seam.onSleep = [&] {
    if (!worker.joinable()) worker = std::thread([task = seam.tasks.at(0)] { task->Exec(); });
    std::this_thread::yield();
  };
  Log::Instance().AtLine(
      "3 SinglePluginLoad: [Plugin Load]Plugin [a] SinglePluginLoad End. count[1].",
      [this] { EXPECT_TRUE(log.StaysAt("Start", 2)); });
  EXPECT_TRUE(manager.Start(&started));
  worker.join();
}

TEST_F(PluginStart, WithoutAMapForHandlesStartsAndNotifies) {
  Product("a:", {"a"});
  EXPECT_CALL(seam.lpc, Notify("")).Times(1);
  EXPECT_TRUE(manager.Start(nullptr));
  EXPECT_THAT(inits, ElementsAre("a"));
}

TEST_F(PluginStart, AsksForAThreadForEachPluginAndSubPlatform) {
  Product("a: sub", {"a", "sub"});
  EXPECT_CALL(seam.threads, Grant("platform.PluginFrame", 1, 2, 0)).WillOnce(Return(1U));
  EXPECT_TRUE(manager.Start(&started));
}

TEST_F(PluginStart, SubPlatformsAreLoadedFromTheExecutablesDirectory) {
  Product("sub", {"sub"});
  EXPECT_TRUE(manager.Start(&started));
  EXPECT_THAT(seam.loadedPaths, ElementsAre(tree.ExeDirectory() + "sub.dll"));
  EXPECT_THAT(inits, ElementsAre("sub"));
}

TEST_F(PluginStart, HandlesThatAreInTheMapAlreadyAreKept) {
  Product("a:", {"a"});
  int marker = 0;
  started["a"] = &marker;
  manager.Start(&started);
  EXPECT_EQ(&marker, started["a"]);
}

TEST_F(PluginStart, PluginThatThrowsCountsAsFailed) {
  Product("a:", {"a"});
  seam.libraries["a"].init = []() -> bool { throw std::runtime_error("boom"); };
  EXPECT_CALL(seam.platform, UpdatePluginsLoadState(std::map<std::string, bool>{}));
  EXPECT_TRUE(manager.Start(&started));
}

TEST_F(PluginStart, SecondStartHoldsEachLibraryOnce) {
  Product("a:", {"a"});
  manager.Start(&started);
  EXPECT_TRUE(manager.Start(&started));
  EXPECT_EQ(1, seam.libraries["a"].handles);
  EXPECT_THAT(inits, ElementsAre("a", "a"));
}

TEST_F(PluginStart, SecondStartThatCannotLoadAPluginForgetsIt) {
  Product("a:", {"a"});
  manager.Start(&started);
  seam.libraries["a"].loads = false;
  started.clear();
  EXPECT_TRUE(manager.Start(&started));
  EXPECT_TRUE(started.empty());
  manager.Uninit();
  EXPECT_THAT(log.Brief("SinglePluginUnload").back(),
              "5 SinglePluginUnload: [Plugin Unload]Plugin a is null, UninitSuccess, count[1].");
}

TEST_F(PluginStart, StopEndsAStartThatWaitsForACycle) {
  Product("a:b b:a", {"a", "b"});
  int sleeps = 0;
  EXPECT_CALL(seam.lpc, UnInit).WillOnce(Return(1));
  std::thread stop;
  seam.onSleep = [&] {
    if (++sleeps == 2) stop = std::thread([&] { manager.Uninit(); });
    std::this_thread::yield();
  };
  EXPECT_CALL(seam.platform, UpdatePluginsLoadState(std::map<std::string, bool>{}));
  EXPECT_TRUE(manager.Start(&started));
  stop.join();
  EXPECT_THAT(inits, ElementsAre());
}

}  // namespace
