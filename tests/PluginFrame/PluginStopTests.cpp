#include <algorithm>
#include <chrono>
#include <condition_variable>
#include <mutex>
#include <stdexcept>
#include <thread>

#include "src/PluginFrame/PluginManager.h"
#include "tests/support/FrameTest.h"

using PluginFrame::CPluginManager;
using testing::Contains;
using testing::ElementsAre;
using testing::Return;
using testing::StartsWith;

namespace {

class PluginStop : public FrameTest {
 protected:
  /// Starts this product, with a library for every plugin that notes its UnInit.
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

TEST_F(PluginStop, TellsEveryStepAndFreesTheLibrary) {
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
          "3 Uninit: [PluginManager Uninit]]Uninit all plugins end.cost time [7]ms.",
          "3 Uninit: [PluginManager Uninit]CPluginManager::Uninit end."));
}

TEST_F(PluginStop, GoesAgainstTheDependencies) {
  Started("a: b:a c:b", {"a", "b", "c"});
  manager.Uninit();
  EXPECT_THAT(uninits, ElementsAre("c", "b", "a"));
  EXPECT_THAT(seam.sleeps, ElementsAre(200, 200, 200));
}

TEST_F(PluginStop, FrameworkThatRefusesLeavesThePluginsAsTheyAre) {
  Started("a:", {"a"});
  EXPECT_CALL(seam.lpc, UnInit).WillOnce(Return(1));
  EXPECT_CALL(seam.threads, Grant).Times(0);
  manager.Uninit();
  EXPECT_EQ(1, seam.libraries["a"].handles);
  EXPECT_THAT(log.BriefFrom(4),
              ElementsAre("4 Uninit: [PluginManager Uninit]Uninit lpc frame end, failed."));
}

TEST_F(PluginStop, FrameworkThatRefusesWithANegativeCodeIsTheSame) {
  Started("a:", {"a"});
  EXPECT_CALL(seam.lpc, UnInit).WillOnce(Return(-1));
  manager.Uninit();
  EXPECT_EQ(1, seam.libraries["a"].handles);
}

TEST_F(PluginStop, ThreadsAreGivenBackBeforeTheEndIsLogged) {
  Started("", {});
  std::vector<std::string> logged;
  EXPECT_CALL(seam.threads, Release).WillOnce([&](auto&&...) { logged = log.Brief(); });
  manager.Uninit();
  EXPECT_EQ("3 Uninit: [PluginManager Uninit]Uninit all plugins start.", logged.back());
}

TEST_F(PluginStop, ThreadsAreGivenBackWhenItThrows) {
  Started("a:", {"a"});
  seam.onSleep = [] { throw std::runtime_error("no"); };
  EXPECT_CALL(seam.threads, Release("platform.PluginFrame", false)).Times(1);
  EXPECT_THROW(manager.Uninit(), std::runtime_error);
}

TEST_F(PluginStop, WithoutThreadsLeavesThePluginsAsTheyAre) {
  Started("a:", {"a"});
  EXPECT_CALL(seam.threads, Grant).WillOnce(Return(0U));
  EXPECT_CALL(seam.threads, Release).Times(0);
  manager.Uninit();
  EXPECT_EQ(1, seam.libraries["a"].handles);
  EXPECT_THAT(
      log.BriefFrom(4),
      ElementsAre("5 Uninit: [PluginManager Uninit]Get threads for uninit plugins end, failed."));
}

TEST_F(PluginStop, APluginThatRefusesKeepsItsLibraryAndHoldsNothingBack) {
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
  EXPECT_EQ(1, seam.libraries["b"].handles);  // even without the manager
  EXPECT_THAT(log.BriefFrom(4),
              ElementsAre("5 SinglePluginUnload: [Plugin Unload]Plugin [b] SinglePluginUnload End. "
                          "count[1]."));
  EXPECT_THAT(log.Brief("SinglePluginUnload")[2],
              "3 SinglePluginUnload: [Plugin Unload]Plugin UnInit end. [b] cost time [0] ms.");
}

TEST_F(PluginStop, APluginWithoutTheEntryOrThatThrowsCountsAsRefused) {
  Started("a: b:", {"a", "b"});
  seam.libraries["a"].hasUnInit = false;
  seam.libraries["b"].uninit = []() -> bool { throw std::runtime_error("boom"); };
  manager.Uninit();
  EXPECT_EQ(1, seam.libraries["a"].handles);
  EXPECT_EQ(1, seam.libraries["b"].handles);
}

TEST_F(PluginStop, APluginWhoseTaskThePoolRefusesStaysLoadedAndHoldsNothingBack) {
  Started("a: b:a", {"a", "b"});
  EXPECT_CALL(seam.threads, Post).WillOnce(Return(false)).WillOnce(Return(true));
  manager.Uninit();
  EXPECT_THAT(uninits, ElementsAre("a"));
  EXPECT_EQ(1, seam.libraries["b"].handles);
  EXPECT_THAT(log.BriefFrom(5),
              ElementsAre("5 SinglePluginUnload: [Plugin Unload]Plugin b not unloaded (the thread "
                          "pool refused its task), count[1]."));
}

TEST_F(PluginStop, AThrowInItsLoopLeavesNoCountForTheNextStop) {
  Started("a: b:a c:b", {"a", "b", "c"});
  seam.onSleep = [this] {
    seam.RunTasks();
    throw std::runtime_error("no");
  };
  EXPECT_THROW(manager.Uninit(), std::runtime_error);
  EXPECT_THAT(uninits, ElementsAre("c"));
  seam.onSleep = [this] { seam.RunTasks(); };
  manager.Uninit();
  EXPECT_THAT(uninits, ElementsAre("c", "b", "a"));
}

TEST_F(PluginStop, APluginThatWasNeverLoadedIsCounted) {
  Started("a:", {});
  manager.Uninit();
  EXPECT_THAT(log.BriefFrom(5),
              ElementsAre("5 SinglePluginUnload: [Plugin Unload]Plugin a is null, UninitSuccess, "
                          "count[1]."));
}

TEST_F(PluginStop, APluginWhoseInitFailedIsStoppedAndFreed) {
  tree.Product("a:");
  seam.libraries["a"].init = [] { return false; };
  seam.libraries["a"].uninit = [this] {
    uninits.push_back("a");
    return true;
  };
  manager.Init();
  manager.Start(nullptr);
  manager.Uninit();
  EXPECT_THAT(uninits, ElementsAre("a"));
  EXPECT_EQ(0, seam.libraries["a"].handles);
}

TEST_F(PluginStop, OfAProductWithoutPluginsEndsAtOnce) {
  Started("", {});
  manager.Uninit();
  EXPECT_THAT(seam.sleeps, ElementsAre());
  EXPECT_THAT(log.Brief("Uninit").back(),
              "3 Uninit: [PluginManager Uninit]CPluginManager::Uninit end.");
}

TEST_F(PluginStop, AStartAfterTheStopDoesNothing) {
  Started("a:", {"a"});
  manager.Uninit();
  Log::Instance().Clear();
  EXPECT_TRUE(manager.Start(nullptr));
  EXPECT_THAT(log.Brief(), ElementsAre());
}

TEST_F(PluginStop, ASubPlatformWithoutAnIdIsNeverCounted) {
  tree.Product("a:");
  tree.Write(
      "Product.xml",
      "<ProductDescription><SubPlatforms><SubPlatform/></SubPlatforms></ProductDescription>");
  manager.Init();
  manager.Start(nullptr);
  int sleeps = 0;
  seam.onSleep = [&] {
    seam.RunTasks();
    if (++sleeps == 5) throw std::runtime_error("it would wait for ever");
  };
  EXPECT_THROW(manager.Uninit(), std::runtime_error);
  EXPECT_THAT(log.Brief("SinglePluginUnload").back(),
              "5 SinglePluginUnload: [Plugin Unload]Plugin  instance not found.");
}

/// A place where a plugin waits inside its Init until the test lets it go on.
class Gate {
 public:
  bool Pass() {
    std::unique_lock<std::mutex> lock(m_mutex);
    m_reached = true;
    m_changed.notify_all();
    return m_changed.wait_for(lock, std::chrono::seconds(30), [this] { return m_open; });
  }

  bool AwaitReached() {
    std::unique_lock<std::mutex> lock(m_mutex);
    return m_changed.wait_for(lock, std::chrono::seconds(30), [this] { return m_reached; });
  }

  void Open() {
    const std::lock_guard<std::mutex> lock(m_mutex);
    m_open = true;
    m_changed.notify_all();
  }

 private:
  std::mutex m_mutex;
  std::condition_variable m_changed;
  bool m_reached = false;
  bool m_open = false;
};

/// A product whose plugin `late` hangs in Init while the stop runs.
class LateFinisher : public PluginStop {
 protected:
  /// Starts it on a thread, and runs each task on a thread of its own.
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

  void AwaitLines(const std::string& function, std::size_t count) const {
    while (log.Brief(function).size() < count) std::this_thread::yield();
  }

  void End() {
    for (std::thread& worker : workers) worker.join();
  }

  Gate gate;
  std::thread starter;
  std::vector<std::thread> workers;
};

TEST_F(LateFinisher, CountsForTheStopWhichMayEndBeforeItsUnload) {
  Begin("late:");
  EXPECT_CALL(seam.lpc, UnInit).WillOnce(testing::Invoke([this] {
    starter.join();  // the start was called off
    gate.Open();
    AwaitLines("SinglePluginLoad", 4);
    return 0;
  }));
  manager.Uninit();
  End();
  EXPECT_EQ(1, seam.libraries["late"].handles);
  EXPECT_THAT(log.Brief("SinglePluginUnload"), ElementsAre());
}

TEST_F(LateFinisher, IsCountedOnlyAfterTheEndOfTheStartThatLeftIt) {
  Begin("late:");
  EXPECT_CALL(seam.platform, UpdatePluginsLoadState).WillOnce(testing::Invoke([this](const auto&) {
    gate.Open();
    AwaitLines("SinglePluginLoad", 3);
    // Long enough for a plugin that does not wait to be counted.
    std::this_thread::sleep_for(std::chrono::milliseconds(50));
  }));
  EXPECT_CALL(seam.lpc, UnInit).WillOnce(Return(1));
  manager.Uninit();
  starter.join();
  End();
  const std::vector<std::string> lines = log.Brief();
  const auto end = std::find(lines.begin(), lines.end(),
                             "3 Start: [PluginManager start]----PluginManager Start success----");
  EXPECT_NE(lines.end(),
            std::find(end, lines.end(),
                      "3 SinglePluginLoad: [Plugin Load]Plugin [late] SinglePluginLoad End. "
                      "count[1]."));
}

TEST_F(LateFinisher, BeyondTheCountDoesNotHoldTheStop) {
  Begin("late: other:");
  EXPECT_CALL(seam.lpc, UnInit).WillOnce(testing::Invoke([this] {
    starter.join();
    seam.onSleep = [this] {
      seam.RunTasks();  // both unloads are counted, the one of `late` finds nothing
      gate.Open();
      AwaitLines("SinglePluginLoad", 6);  // and `late` is counted once more
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

TEST_F(LateFinisher, ThatIsStoppedAlreadyDoesNotHoldBackThoseBelowIt) {
  seam.libraries["base"];
  seam.libraries["mid"];
  Begin("base: mid:base late:mid");
  EXPECT_CALL(seam.lpc, UnInit).WillOnce(testing::Invoke([this] {
    starter.join();
    seam.onSleep = [this] {
      seam.RunTasks();  // first the unload of `late`, which finds nothing
      gate.Open();
      AwaitLines("SinglePluginLoad", 12);  // `late` comes up after all, stopped as it is
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
    std::this_thread::sleep_for(std::chrono::milliseconds(1));
  };
  EXPECT_CALL(seam.platform,
              UpdatePluginsLoadState(std::map<std::string, bool>{{"a", true}, {"b", true}}));
  EXPECT_TRUE(manager.Start(nullptr));
  for (std::thread& worker : workers) worker.join();
}

}  // namespace
