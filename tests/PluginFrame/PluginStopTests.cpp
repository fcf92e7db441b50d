#include <algorithm>
#include <stdexcept>
#include <thread>

#include "src/PluginFrame/PluginManager.h"
#include "tests/support/FrameTest.h"
#include "tests/support/Gate.h"

using PluginFrame::CPluginManager;
using testing::Contains;
using testing::ElementsAre;
using testing::Return;
using testing::StartsWith;

namespace {

const std::string kStartEnd = "3 Start: [PluginManager start]----PluginManager Start success----";
const std::string kStopBegin =
    "3 Uninit: [PluginManager Uninit]----CPluginManager::Uninit start.----";
const std::string kStopEnd = "3 Uninit: [PluginManager Uninit]CPluginManager::Uninit end.";

class PluginStop : public FrameTest {
 protected:
  /// Starts this product, with a library for every plugin that records its UnInit.
  void Started(const std::string& words, const std::vector<std::string>& names) {
    tree.Product(words);
    for (const std::string& name : names) {
      seam.libraries[name].uninit = [this, name] {
        uninits.push_back(name);
        return true;
      };
    }
    ASSERT_TRUE(manager.Init());
    ASSERT_TRUE(manager.Start(nullptr));
    Log::Instance().Clear();
    seam.sleeps.clear();
  }

  CPluginManager manager;
  std::vector<std::string> uninits;
};

TEST_F(PluginStop, LogsEveryStepAndFreesTheLibrary) {
  Started("a:", {"a"});
  seam.libraries["a"].uninit = [this] {
    seam.now += 7;
    return true;
  };
  EXPECT_CALL(seam.threads, Grant("platform.PluginFrame", 1, 1, 0)).WillOnce(Return(1U));
  EXPECT_CALL(seam.threads, Release("platform.PluginFrame", false));
  manager.Uninit();
  EXPECT_EQ(0, seam.libraries["a"].handles);
  EXPECT_THAT(
      log.Brief(),
      ElementsAre(
          "3 Uninit: [PluginManager Uninit]----CPluginManager::Uninit start.----",
          "3 Uninit: [PluginManager Uninit]Uninit lpc frame start.",
          "3 Uninit: [PluginManager Uninit]Uninit lpc frame end, success.",
          "3 Uninit: [PluginManager Uninit]Get threads for uninit plugins start.",
          "3 Uninit: [PluginManager Uninit]Get threads for uninit plugins end, success(threads "
          "num = 1). ",
          "3 Uninit: [PluginManager Uninit]Uninit all plugins start.",
          "3 SinglePluginUnload: [Plugin Unload]Plugin [a] SinglePluginUnload Begin.",
          "3 SinglePluginUnload: [Plugin Unload]Plugin UnInit begin.[a]",
          "3 SinglePluginUnload: [Plugin Unload]Plugin UnInit end. [a] cost time [7] ms.",
          "3 ~CPlugin: [Plugin]FreeLibrary Begin", "3 ~CPlugin: [Plugin]FreeLibrary End",
          "3 SinglePluginUnload: [Plugin Unload]Plugin [a] SinglePluginUnload End. count[1].",
          "3 Uninit: [PluginManager Uninit]]Uninit all plugins end.cost time [207]ms.",
          "3 Uninit: [PluginManager Uninit]CPluginManager::Uninit end."));
}

TEST_F(PluginStop, StopsDependentsFirst) {
  Started("a: b:a c:b", {"a", "b", "c"});
  manager.Uninit();
  EXPECT_THAT(uninits, ElementsAre("c", "b", "a"));
  EXPECT_THAT(seam.sleeps, ElementsAre(200, 200, 200));
}

TEST_F(PluginStop, FrameworkThatRefusesLeavesThePluginsLoaded) {
  Started("a:", {"a"});
  EXPECT_CALL(seam.lpc, UnInit).WillOnce(Return(1));
  EXPECT_CALL(seam.threads, Grant).Times(0);
  manager.Uninit();
  EXPECT_EQ(1, seam.libraries["a"].handles);
  EXPECT_THAT(log.BriefFrom(4),
              ElementsAre("4 Uninit: [PluginManager Uninit]Uninit lpc frame end, failed."));
}

TEST_F(PluginStop, FrameworkThatRefusesWithANegativeCodeToo) {
  Started("a:", {"a"});
  EXPECT_CALL(seam.lpc, UnInit).WillOnce(Return(-1));
  manager.Uninit();
  EXPECT_EQ(1, seam.libraries["a"].handles);
}

TEST_F(PluginStop, ReleasesThePoolAfterTheLastPluginAndBeforeItsEnd) {
  Started("a:", {"a"});
  std::vector<std::string> logged;
  EXPECT_CALL(seam.threads, Release).WillOnce([&](auto&&...) { logged = log.Brief(); });
  manager.Uninit();
  EXPECT_EQ("3 SinglePluginUnload: [Plugin Unload]Plugin [a] SinglePluginUnload End. count[1].",
            logged.back());
}

TEST_F(PluginStop, ReleasesThePoolWhenItThrows) {
  Started("a:", {"a"});
  seam.onSleep = [] { throw std::runtime_error("no"); };
  EXPECT_CALL(seam.threads, Release("platform.PluginFrame", false)).Times(1);
  EXPECT_THROW(manager.Uninit(), std::runtime_error);
}

TEST_F(PluginStop, WithoutThreadsLeavesThePluginsLoaded) {
  Started("a:", {"a"});
  EXPECT_CALL(seam.threads, Grant).WillOnce(Return(0U));
  EXPECT_CALL(seam.threads, Release).Times(0);
  manager.Uninit();
  EXPECT_EQ(1, seam.libraries["a"].handles);
  EXPECT_THAT(
      log.BriefFrom(4),
      ElementsAre("5 Uninit: [PluginManager Uninit]Get threads for uninit plugins end, failed."));
}

TEST_F(PluginStop, PluginThatRefusesStaysMappedAndOthersStop) {
  {
    CPluginManager other;
    tree.Product("a: b:a");
    for (const char* name : {"a", "b"}) seam.libraries[name];
    seam.libraries["b"].uninit = [] { return false; };
    other.Init();
    other.Start(nullptr);
    Log::Instance().Clear();
    other.Uninit();
  }
  EXPECT_EQ(0, seam.libraries["a"].handles);
  EXPECT_EQ(1, seam.libraries["b"].handles);  // also after the manager has been destroyed
  EXPECT_THAT(log.BriefFrom(4),
              ElementsAre("5 SinglePluginUnload: [Plugin Unload]Plugin [b] SinglePluginUnload End. "
                          "count[1]."));
  EXPECT_THAT(log.Brief("SinglePluginUnload")[2],
              "3 SinglePluginUnload: [Plugin Unload]Plugin UnInit end. [b] cost time [0] ms.");
}

TEST_F(PluginStop, PluginWithoutTheEntryOrThatThrowsCountsAsRefused) {
  Started("a: b:", {"a", "b"});
  seam.libraries["a"].hasUnInit = false;
  seam.libraries["b"].uninit = []() -> bool { throw std::runtime_error("boom"); };
  manager.Uninit();
  EXPECT_EQ(1, seam.libraries["a"].handles);
  EXPECT_EQ(1, seam.libraries["b"].handles);
}

TEST_F(PluginStop, PluginWhoseTaskIsRefusedStaysLoadedAndOthersStop) {
  Started("a: b:a", {"a", "b"});
  EXPECT_CALL(seam.threads, Post).WillOnce(Return(false)).WillOnce(Return(true));
  manager.Uninit();
  EXPECT_THAT(uninits, ElementsAre("a"));
  EXPECT_EQ(1, seam.libraries["b"].handles);
  EXPECT_THAT(log.BriefFrom(5),
              ElementsAre("5 SinglePluginUnload: [Plugin Unload]Plugin b not unloaded (the thread "
                          "pool refused its task), count[1]."));
}

TEST_F(PluginStop, ExceptionInItsLoopLeavesNoCountForTheNextStop) {
  Started("a: b:a c:b", {"a", "b", "c"});
  seam.onSleep = [this] {
    seam.RunTasks();
    throw std::runtime_error("no");
  };
  EXPECT_THROW(manager.Uninit(), std::runtime_error);
  EXPECT_THAT(uninits, ElementsAre("c"));
  seam.onSleep = [this] { seam.RunTasks(); };
  EXPECT_CALL(seam.lpc, UnInit).WillOnce(Return(0));  // though it is down already
  manager.Uninit();
  EXPECT_THAT(uninits, ElementsAre("c", "b", "a"));
}

TEST_F(PluginStop, ExceptionInThePoolsReleaseLeavesNoCountForTheNextStop) {
  Started("a: b:a", {"a", "b"});
  EXPECT_CALL(seam.threads, Release)
      .WillOnce(testing::Throw(std::runtime_error("no")))
      .WillRepeatedly(Return());
  EXPECT_THROW(manager.Uninit(), std::runtime_error);
  Log::Instance().Clear();
  EXPECT_CALL(seam.lpc, UnInit).WillOnce(Return(0));  // though it is down already
  manager.Uninit();
  EXPECT_THAT(log.BriefFrom(5),
              ElementsAre("5 SinglePluginUnload: [Plugin Unload]Plugin a is null, UninitSuccess, "
                          "count[1].",
                          "5 SinglePluginUnload: [Plugin Unload]Plugin b is null, UninitSuccess, "
                          "count[2]."));
}

TEST_F(PluginStop, PluginThatWasNeverLoadedIsCounted) {
  Started("a:", {});
  manager.Uninit();
  EXPECT_THAT(log.BriefFrom(5),
              ElementsAre("5 SinglePluginUnload: [Plugin Unload]Plugin a is null, UninitSuccess, "
                          "count[1]."));
}

TEST_F(PluginStop, PluginWhoseInitFailedIsStoppedAndFreed) {
  tree.Product("a:");
  seam.libraries["a"].init = [] { return false; };
  seam.libraries["a"].uninit = [this] {
    uninits.emplace_back("a");
    return true;
  };
  manager.Init();
  manager.Start(nullptr);
  manager.Uninit();
  EXPECT_THAT(uninits, ElementsAre("a"));
  EXPECT_EQ(0, seam.libraries["a"].handles);
}

TEST_F(PluginStop, WithoutPluginsEndsAtOnce) {
  Started("", {});
  manager.Uninit();
  EXPECT_THAT(seam.sleeps, ElementsAre());
  EXPECT_THAT(log.Brief("Uninit").back(),
              "3 Uninit: [PluginManager Uninit]CPluginManager::Uninit end.");
}

TEST_F(PluginStop, SecondStopFindsAllPluginsCounted) {
  Started("a: b:a", {"a", "b"});
  manager.Uninit();
  Log::Instance().Clear();
  seam.sleeps.clear();
  EXPECT_CALL(seam.lpc, UnInit).WillOnce(Return(0));  // though it is down already
  manager.Uninit();
  EXPECT_THAT(uninits, ElementsAre("b", "a"));
  EXPECT_THAT(seam.sleeps, ElementsAre());
  EXPECT_THAT(
      log.Brief(),
      ElementsAre(
          "3 Uninit: [PluginManager Uninit]----CPluginManager::Uninit start.----",
          "3 Uninit: [PluginManager Uninit]Uninit lpc frame start.",
          "3 Uninit: [PluginManager Uninit]Uninit lpc frame end, success.",
          "3 Uninit: [PluginManager Uninit]Get threads for uninit plugins start.",
          "3 Uninit: [PluginManager Uninit]Get threads for uninit plugins end, success(threads "
          "num = 2). ",
          "3 Uninit: [PluginManager Uninit]Uninit all plugins start.",
          "3 Uninit: [PluginManager Uninit]]Uninit all plugins end.cost time [0]ms.", kStopEnd));
}

TEST_F(PluginStop, StartAfterTheStopDoesNothing) {
  Started("a:", {"a"});
  manager.Uninit();
  Log::Instance().Clear();
  EXPECT_TRUE(manager.Start(nullptr));
  EXPECT_THAT(log.Brief(), ElementsAre());
}

TEST_F(PluginStop, SubPlatformWithoutAnIdIsNeverCounted) {
  tree.Product("a:");
  tree.Write(
      "Product.xml",
      "<ProductDescription><SubPlatforms><SubPlatform/></SubPlatforms></ProductDescription>");
  manager.Init();
  manager.Start(nullptr);
  int sleeps = 0;
  seam.onSleep = [&] {
    seam.RunTasks();
    if (++sleeps == 5) throw std::runtime_error("the loop does not end");
  };
  EXPECT_THROW(manager.Uninit(), std::runtime_error);
  EXPECT_THAT(log.Brief("SinglePluginUnload").back(),
              "5 SinglePluginUnload: [Plugin Unload]Plugin  instance not found.");
}

TEST_F(PluginStop, AsksForAThreadForEachPluginAndSubPlatform) {
  Started("a: sub", {"a", "sub"});
  EXPECT_CALL(seam.threads, Grant("platform.PluginFrame", 1, 2, 0)).WillOnce(Return(1U));
  manager.Uninit();
  EXPECT_THAT(log.Brief("Uninit"),
              Contains("3 Uninit: [PluginManager Uninit]Get threads for uninit plugins end, "
                       "success(threads num = 2). "));
}

TEST_F(PluginStop, FreesALibraryBeforeItStopsItsDependencies) {
  Started("base: user:base", {"base", "user"});
  Gate freeing;
  seam.libraries["user"].onFree = [&] {
    EXPECT_TRUE(freeing.Pass());
    seam.Record("user is freed");
  };
  seam.libraries["base"].uninit = [this] {
    seam.Record("UnInit of base");
    return true;
  };
  std::thread worker;
  int sleeps = 0;
  seam.onSleep = [&] {
    if (!worker.joinable()) {
      worker = std::thread([task = seam.tasks.at(0)] { task->Exec(); });
      seam.tasks.clear();
    }
    seam.RunTasks();
    // Between two sleeps the stop has looked at every record.
    if (freeing.Reached() && ++sleeps == 2) freeing.Open();
    std::this_thread::yield();
  };
  manager.Uninit();
  worker.join();
  const std::vector<std::string> calls = seam.Calls();
  EXPECT_THAT(std::vector<std::string>(calls.end() - 2, calls.end()),
              ElementsAre("user is freed", "UnInit of base"));
}

TEST_F(PluginStop, LeavesItsLoopWhenInitialisedAgain) {
  Started("a:", {"a"});
  seam.onSleep = [this] { EXPECT_TRUE(seam.sleeps.size() > 1 || manager.Init()); };
  EXPECT_CALL(seam.threads, Release("platform.PluginFrame", false));
  manager.Uninit();
  EXPECT_THAT(uninits, ElementsAre());
  EXPECT_EQ(kStopEnd, log.Brief().back());
}

TEST_F(PluginStop, LogsItsFirstLineBeforeItEndsAStart) {
  Started("a:", {"a"});
  StartedPluginMap started;
  Log::Instance().AtLine(kStopBegin, [&] { EXPECT_TRUE(manager.Start(&started)); });
  manager.Uninit();
  EXPECT_EQ((StartedPluginMap{{"a", &seam.libraries["a"]}}), started);
}

TEST_F(PluginStop, WaitsForTheLastLineOfAStart) {
  tree.Product("a:");
  ASSERT_TRUE(manager.Init());
  std::thread stop;
  Log::Instance().AtLine(kStartEnd, [&] {
    stop = std::thread([this] { manager.Uninit(); });
    EXPECT_TRUE(log.StaysAt("Uninit", 1));
  });
  EXPECT_TRUE(manager.Start(nullptr));
  stop.join();
  EXPECT_EQ(kStopEnd, log.Brief().back());
}

TEST_F(PluginStop, WaitsForTheLastLineOfAnotherStop) {
  Started("a:", {"a"});
  ON_CALL(seam.lpc, UnInit).WillByDefault(Return(0));  // the second time as well
  std::thread second;
  Log::Instance().AtLine(kStopEnd, [&] {
    second = std::thread([this] { manager.Uninit(); });
    EXPECT_TRUE(log.StaysAt("Uninit", 9));  // the first stop's eight and one of the second
  });
  manager.Uninit();
  second.join();
  EXPECT_EQ(16U, log.Brief("Uninit").size());
}

/// A product whose plugin `late` is in its Init when the stop begins.
class LateFinisher : public PluginStop {
 protected:
  /// Starts the product on one thread and runs each task on another.
  void Begin(const std::string& words) {
    tree.Product(words);
    seam.libraries["late"].init = [this] { return gate.Pass(); };
    manager.Init();
    seam.onSleep = [this] {
      RunOnThreads();
      std::this_thread::yield();
    };
    starter = std::thread([this] { EXPECT_TRUE(manager.Start(nullptr)); });
    ASSERT_TRUE(gate.AwaitReached());
  }

  void RunOnThreads() {
    std::vector<std::shared_ptr<CTMTask>> tasks;
    tasks.swap(seam.tasks);
    for (const auto& task : tasks) workers.emplace_back([task] { task->Exec(); });
  }

  void End() {
    for (std::thread& worker : workers) worker.join();
  }

  Gate gate;
  std::thread starter;
  std::vector<std::thread> workers;
};

TEST_F(LateFinisher, CountsForTheStopAndMayEndItBeforeItsUnload) {
  Begin("late:");
  EXPECT_CALL(seam.lpc, UnInit).WillOnce(testing::Invoke([this] {
    starter.join();  // the stop has ended the start
    gate.Open();
    EXPECT_TRUE(log.Await("SinglePluginLoad", 4));
    return 0;
  }));
  manager.Uninit();
  End();
  EXPECT_EQ(1, seam.libraries["late"].handles);
  EXPECT_THAT(log.Brief("SinglePluginUnload"), ElementsAre());
}

TEST_F(LateFinisher, IsNotCountedBeforeTheLastLineOfItsStart) {
  Begin("late:");
  Log::Instance().AtLine(kStartEnd, [this] {
    gate.Open();
    EXPECT_TRUE(log.StaysAt("SinglePluginLoad", 3));  // the fourth has the count
  });
  EXPECT_CALL(seam.lpc, UnInit).WillOnce(Return(1));
  manager.Uninit();
  starter.join();
  End();
  EXPECT_THAT(
      log.Brief("SinglePluginLoad"),
      ElementsAre(
          "3 SinglePluginLoad: [Plugin Load]Plugin [late] SinglePluginLoad Begin.",
          "3 SinglePluginLoad: [Plugin Load]Plugin Init begin.[late]",
          // The time depends on how often the start has slept.
          StartsWith("3 SinglePluginLoad: [Plugin Load]Plugin Init end. [late] cost time ["),
          "3 SinglePluginLoad: [Plugin Load]Plugin [late] SinglePluginLoad End. count[1]."));
}

TEST_F(LateFinisher, CountedTwiceDoesNotKeepTheStopWaiting) {
  Begin("late: other:");
  EXPECT_CALL(seam.lpc, UnInit).WillOnce(testing::Invoke([this] {
    starter.join();
    seam.onSleep = [this] {
      seam.RunTasks();  // both unloads are counted; `late` is not among the loaded yet
      gate.Open();
      EXPECT_TRUE(log.Await("SinglePluginLoad", 6));  // and `late` is counted once more
    };
    return 0;
  }));
  manager.Uninit();
  End();
  EXPECT_EQ(1, seam.libraries["late"].handles);
  EXPECT_THAT(log.Brief("SinglePluginLoad"),
              Contains(StartsWith("3 SinglePluginLoad: [Plugin Load]Plugin [late] "
                                  "SinglePluginLoad End. count[")));
}

TEST_F(LateFinisher, StaysStoppedSoThatItsDependenciesStop) {
  seam.libraries["base"];
  seam.libraries["mid"];
  Begin("base: mid:base late:mid");
  EXPECT_CALL(seam.lpc, UnInit).WillOnce(testing::Invoke([this] {
    starter.join();
    seam.onSleep = [this] {
      seam.RunTasks();  // first the unload of `late`, which is not among the loaded yet
      gate.Open();
      EXPECT_TRUE(log.Await("SinglePluginLoad", 12));  // the Init of `late` ends after its unload
      seam.onSleep = [this] { seam.RunTasks(); };
    };
    return 0;
  }));
  manager.Uninit();
  End();
  EXPECT_EQ(0, seam.libraries["mid"].handles);
}

TEST_F(PluginStop, TwoPluginsOverlapInsideInit) {
  tree.Product("a: b:");
  Gate left;
  Gate right;
  seam.libraries["a"].init = [&] {
    left.Open();
    return right.Pass();
  };
  seam.libraries["b"].init = [&] {
    right.Open();
    return left.Pass();
  };
  manager.Init();
  std::vector<std::thread> workers;
  seam.onSleep = [&] {
    std::vector<std::shared_ptr<CTMTask>> tasks;
    tasks.swap(seam.tasks);
    for (const auto& task : tasks) workers.emplace_back([task] { task->Exec(); });
    std::this_thread::yield();
  };
  EXPECT_CALL(seam.platform,
              UpdatePluginsLoadState(std::map<std::string, bool>{{"a", true}, {"b", true}}));
  EXPECT_TRUE(manager.Start(nullptr));
  for (std::thread& worker : workers) worker.join();
}

}  // namespace
