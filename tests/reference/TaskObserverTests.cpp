// The events that the task observer receives, and when.

#include <gmock/gmock.h>

#include <atomic>
#include <cstdint>
#include <cstdlib>
#include <map>
#include <memory>
#include <mutex>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

#include "tests/reference/ThreadPoolTest.h"
#include "tests/support/Latch.h"

namespace {

using testing::ElementsAre;

std::string Name(TaskEvent::Kind kind) {
  switch (kind) {
    case TaskEvent::Kind::kPosted:
      return "posted";
    case TaskEvent::Kind::kBegun:
      return "begun";
    case TaskEvent::Kind::kEnded:
      return "ended";
  }
  return "?";
}

using TaskObservation = ThreadPool;

TEST_F(TaskObservation, EachStepComesWithItsPoolOnTheThreadWhereItHappens) {
  std::vector<std::string> events;
  std::vector<std::thread::id> threads;
  std::uint64_t number = 0;
  SetTaskObserver([&](const TaskEvent& event) {
    if (number == 0) number = event.task;
    events.push_back(Name(event.kind) + " " + std::to_string(event.task - number) + " " +
                     event.pool);
    threads.push_back(std::this_thread::get_id());
  });
  ASSERT_TRUE(Grant(1, 1));
  std::thread::id worker;
  for (int i = 0; i < 2; ++i) {
    ASSERT_TRUE(Post([&] {
      worker = std::this_thread::get_id();
      events.emplace_back("runs");
    }));
    ASSERT_TRUE(EverythingIsDone());
  }
  SetTaskObserver({});
  EXPECT_THAT(events, ElementsAre("posted 0 pool", "begun 0 pool", "runs", "ended 0 pool",
                                  "posted 1 pool", "begun 1 pool", "runs", "ended 1 pool"));
  const std::thread::id poster = std::this_thread::get_id();
  EXPECT_THAT(threads, ElementsAre(poster, worker, worker, poster, worker, worker));
}

TEST_F(TaskObservation, NoTaskBeginsBeforeItIsReportedAsPosted) {
  std::mutex mutex;
  std::map<std::uint64_t, std::string> events;
  SetTaskObserver([&](const TaskEvent& event) {
    if (event.kind == TaskEvent::Kind::kPosted) std::this_thread::yield();
    const std::lock_guard<std::mutex> lock(mutex);
    events[event.task] += Name(event.kind) + " ";
  });
  ASSERT_TRUE(Grant(4, 4));
  for (int i = 0; i < 1000; ++i) ASSERT_TRUE(Post([] {}));
  Release(true);
  SetTaskObserver({});
  EXPECT_EQ(1000U, events.size());
  for (const auto& [task, steps] : events) EXPECT_EQ("posted begun ended ", steps) << task;
}

TEST_F(TaskObservation, FirstTaskOfTheProcessIsNumberOne) {
  testing::FLAGS_gtest_death_test_style = "threadsafe";  // in a new process
  EXPECT_EXIT(
      {
        std::atomic<int> number{0};
        SetTaskObserver([&](const TaskEvent& event) { number = static_cast<int>(event.task); });
        Grant(1, 1);
        Post([] {});
        Release(true);
        std::_Exit(number);
      },
      testing::ExitedWithCode(1), "");
}

TEST_F(TaskObservation, EndComesAfterTheTaskIsGoneAndBeforeItCountsAsFinished) {
  std::vector<std::string> events;
  SetTaskObserver([&](const TaskEvent& event) {
    events.push_back(Name(event.kind) + " " + std::to_string(UnfinishedTasks()));
  });
  ASSERT_TRUE(Grant(1, 1));
  Latch open;
  {
    const std::shared_ptr<int> witness(new int, [&](const int* number) {
      delete number;
      events.emplace_back("gone");
    });
    ASSERT_TRUE(Post([witness, &open] { open.Wait(); }));
  }
  open.Arrive();
  Release(true);
  EXPECT_THAT(events, ElementsAre("posted 1", "begun 1", "gone", "ended 1"));
}

TEST_F(TaskObservation, TaskThatThrowsEndsToo) {
  std::string steps;
  SetTaskObserver([&](const TaskEvent& event) { steps += Name(event.kind) + " "; });
  ASSERT_TRUE(Grant(1, 1));
  ASSERT_TRUE(Post([] { throw std::runtime_error("out of paper"); }));
  Release(true);
  EXPECT_EQ("posted begun ended ", steps);
}

TEST_F(TaskObservation, TaskThatIsRefusedIsNotReported) {
  std::atomic<int> events{0};
  SetTaskObserver([&](const TaskEvent&) { ++events; });
  EXPECT_FALSE(Post([] {}));
  EXPECT_EQ(0, events);
}

TEST_F(TaskObservation, TaskReportedAsPostedRunsThoughThePoolIsReleased) {
  Latch announced;
  Latch released;
  SetTaskObserver([&](const TaskEvent& event) {
    if (event.kind != TaskEvent::Kind::kPosted) return;
    announced.Arrive();
    released.Wait();
  });
  ASSERT_TRUE(Grant(3, 3));
  Latch ran;
  std::atomic<bool> taken{false};
  std::thread poster([&] { taken = Post([&] { ran.Arrive(); }); });
  ASSERT_TRUE(announced.Wait());
  EXPECT_TRUE(Release(false));
  EXPECT_EQ(1U, UnfinishedTasks());
  released.Arrive();
  EXPECT_TRUE(ran.Wait());
  poster.join();
  EXPECT_TRUE(taken);
  EXPECT_TRUE(EverythingIsDone());
}

TEST_F(TaskObservation, WhatTheObserverThrowsStopsNoTask) {
  SetTaskObserver([](const TaskEvent&) { throw std::runtime_error("not my day"); });
  ASSERT_TRUE(Grant(1, 1));
  Latch ran;
  EXPECT_TRUE(Post([&] { ran.Arrive(); }));
  EXPECT_TRUE(ran.Wait());
}

TEST_F(TaskObservation, IdleObserverIsCalledWhenTheLastTaskHasEnded) {
  std::mutex mutex;
  std::vector<std::size_t> unfinished;
  Latch idle;
  SetIdleObserver([&] {
    const std::lock_guard<std::mutex> lock(mutex);
    unfinished.push_back(UnfinishedTasks());
    idle.Arrive();
  });
  ASSERT_TRUE(Grant(1, 1));
  Latch open;
  ASSERT_TRUE(Post([&] { open.Wait(); }));
  ASSERT_TRUE(Post([] {}));
  open.Arrive();
  EXPECT_TRUE(idle.Wait());
  SetIdleObserver({});
  EXPECT_THAT(unfinished, ElementsAre(0U));
}

TEST_F(TaskObservation, ThreadGoesOnThoughTheIdleObserverThrows) {
  Latch thrown(2);
  SetIdleObserver([&] {
    thrown.Arrive();
    throw std::runtime_error("idle");
  });
  ASSERT_TRUE(Grant(1, 1));
  ASSERT_TRUE(Post([] {}));
  ASSERT_TRUE(EverythingIsDone());
  ASSERT_TRUE(Post([] {}));
  EXPECT_TRUE(thrown.Wait());
  SetIdleObserver({});
}

TEST_F(TaskObservation, ObserverThatWasTakenAwayIsNotCalledAnyMore) {
  ASSERT_TRUE(Grant(2, 2));
  std::atomic<int> calls{0};
  for (int i = 0; i < 200; ++i) {
    auto isThere = std::make_shared<std::atomic<bool>>(true);
    std::atomic<int> afterwards{0};
    SetTaskObserver([&, isThere](const TaskEvent&) {
      ++calls;
      std::this_thread::yield();
      if (!*isThere) ++afterwards;
    });
    Latch ran(2);
    for (int k = 0; k < 2; ++k) Post([&] { ran.Arrive(); });
    SetTaskObserver({});
    *isThere = false;
    ASSERT_TRUE(ran.Wait());
    ASSERT_TRUE(EverythingIsDone());
    EXPECT_EQ(0, afterwards);
  }
  EXPECT_LE(400, calls);
}

}  // namespace
