#include "workbench/timeline/CriticalPath.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <limits>
#include <sstream>

#include "tests/support/RunText.h"

namespace {

double Ms(std::int64_t ns) {
  return static_cast<double>(ns) / 1e6;
}

/// "a (idle 2, work 39) > b after a (look 160, ...) > look 59".
std::string PathText(const Timeline& timeline, const PhaseTimeline& phase) {
  std::ostringstream text;
  for (const PathStep& step : phase.path) {
    text << timeline.plugins[step.plugin].id;
    if (step.releasedBy) text << " after " << timeline.plugins[*step.releasedBy].id;
    text << " (look " << Ms(step.look) << ", idle " << Ms(step.idle) << ", work " << Ms(step.work)
         << ") > ";
  }
  text << "look " << Ms(phase.lastWait);
  return text.str();
}

std::string BalanceText(const TimeBalance& balance) {
  std::ostringstream text;
  text << "wall " << Ms(balance.wall) << " = path " << Ms(balance.path) << " + look "
       << Ms(balance.look) << " + idle " << Ms(balance.idle) << "; work " << Ms(balance.work);
  return text.str();
}

std::string SlackText(const Timeline& timeline, const PhaseTimeline& phase) {
  std::ostringstream text;
  for (std::size_t i = 0; i < phase.spans.size(); ++i) {
    text << timeline.plugins[i].id << " " << Ms(phase.spans[i].slack) << "; ";
  }
  return text.str();
}

constexpr char kDiamond[] = R"(
    base:
    slow: base
    fast: base
    top: slow fast
    start 0 800
    base start 1 2 2 40 41
    slow start 200 203 203 340 341
    fast start 200 202 202 210 211
    top start 400 401 401 700 701)";

TEST(CriticalPath, IsTheChainOfReleasesToTheLastPlugin) {
  const Timeline timeline = MakeTimeline(RunFromText(kDiamond));
  EXPECT_EQ(
      "base (look 0, idle 2, work 39) > slow after base (look 159, idle 3, work 138) > "
      "top after slow (look 59, idle 1, work 300) > look 99",
      PathText(timeline, timeline.start));
  EXPECT_EQ("wall 800 = path 477 + look 317 + idle 6; work 486",
            BalanceText(timeline.start.balance));
  EXPECT_DOUBLE_EQ(486.0 / 800.0, timeline.start.balance.Parallelism());
}

TEST(CriticalPath, HasNoSlackAndOthersHaveWhatTheirWaitersLeave) {
  const Timeline timeline = MakeTimeline(RunFromText(kDiamond));
  EXPECT_EQ("base 0; slow 0; fast 130; top 0; ", SlackText(timeline, timeline.start));
}

TEST(CriticalPath, OfTheStopGoesFromWaitersToWhatTheyNeed) {
  const Timeline timeline = MakeTimeline(RunFromText(R"(
    base:
    top: base
    stop 1000 1400
    top stop 1000 1000 1000 1099 1100
    base stop 1200 1200 1200 1209 1210)"));
  EXPECT_EQ(
      "top (look 0, idle 0, work 100) > base after top (look 100, idle 0, work 10) > look 190",
      PathText(timeline, timeline.stop));
  EXPECT_EQ("wall 400 = path 110 + look 290 + idle 0; work 110",
            BalanceText(timeline.stop.balance));
}

TEST(CriticalPath, OfAHungStartEndsWithThePluginThatHangs) {
  const Timeline timeline = MakeTimeline(RunFromText(R"(
    base:
    hangs: base
    start 0 -
    base start 0 0 0 10 10
    hangs start 200 200 200 - -
    other start 200 200 200 900 900)"));
  EXPECT_EQ(
      "base (look 0, idle 0, work 10) > hangs after base (look 190, idle 0, work 700) > look 0",
      PathText(timeline, timeline.start));
}

TEST(CriticalPath, OfAHungStartHasNoSlackBeforeThePluginThatHangs) {
  const Timeline timeline = MakeTimeline(RunFromText(R"(
    base:
    hangs: base
    other:
    start 0 -
    base start 0 0 0 10 10
    hangs start 200 200 200 - -
    other start 0 0 0 900 900)"));
  EXPECT_EQ("base 0; hangs -1e-06; other 0; ", SlackText(timeline, timeline.start));
}

TEST(CriticalPath, OfAStoppedStartEndsWithThePluginThatStillWorked) {
  const Timeline timeline = MakeTimeline(RunFromText(R"(
    quick:
    late:
    start 0 400
    late start 0 0 0 700 700
    quick start 0 0 0 10 10)"));
  EXPECT_EQ("late (look 0, idle 0, work 400) > look 0", PathText(timeline, timeline.start));
  EXPECT_EQ("wall 400 = path 400 + look 0 + idle 0; work 410", BalanceText(timeline.start.balance));
  EXPECT_EQ("quick 390; late -1e-06; ", SlackText(timeline, timeline.start));
}

TEST(CriticalPath, OfAPhaseThatWaitsForACycleIsFollowedByIdleTime) {
  const Timeline timeline = MakeTimeline(RunFromText(R"(
    a:
    b: b
    start 0 -
    stop 1000 -
    a start 0 0 0 10 10)"));
  EXPECT_EQ("a (look 0, idle 0, work 10) > look 990", PathText(timeline, timeline.start));
  EXPECT_EQ("wall 1000 = path 10 + look 0 + idle 990; work 10",
            BalanceText(timeline.start.balance));
}

TEST(CriticalPath, OfAStartThatAStopEndedIsFollowedByIdleTime) {
  const Timeline timeline = MakeTimeline(RunFromText(R"(
    a:
    b: b
    start 0 1000
    a start 0 0 0 10 10)"));
  EXPECT_EQ("wall 1000 = path 10 + look 0 + idle 990; work 10",
            BalanceText(timeline.start.balance));
}

TEST(CriticalPath, IsEmptyWhenNothingBegan) {
  const Timeline timeline = MakeTimeline(RunFromText("start 5 205"));
  EXPECT_EQ("look 0", PathText(timeline, timeline.start));
  EXPECT_EQ("wall 200 = path 0 + look 0 + idle 200; work 0", BalanceText(timeline.start.balance));
}

TEST(CriticalPath, BeginsWhereTheDependentWasPostedBeforeItsReleaserWasCounted) {
  const Timeline timeline = MakeTimeline(RunFromText(R"(
    a:
    b: a
    start 0 200
    a start 0 0 0 100 104
    b start 102 103 103 150 150)"));
  EXPECT_EQ("a (look 0, idle 0, work 102) > b after a (look 0, idle 1, work 47) > look 50",
            PathText(timeline, timeline.start));
}

TEST(CriticalPath, OfContradictoryReleasesEndsAndStillReconciles) {
  RecordedRun run = RunFromText(R"(
    a: b
    b: a
    start 0 100
    a start 0 10 10 20 20
    b start 0 30 30 40 40)");
  for (RunEvent& event : run.record.events) {
    if (event.kind != RunEvent::Kind::kReady) continue;
    event.text = event.plugin == "a" ? "b" : "a";
  }
  const Timeline timeline = MakeTimeline(std::move(run));
  EXPECT_EQ("wall 100 = path 10 + look 60 + idle 30; work 20", BalanceText(timeline.start.balance));
}

TEST(CriticalPath, OfEqualTimesEndsWithThePluginThatWasCountedLast) {
  RecordedRun run = RunFromText(R"(
    later: first
    first:
    start 0 5
    first start 1 1 1 2 2
    later start 2 2 2 2 2)");
  const Timeline timeline = MakeTimeline(std::move(run));
  EXPECT_EQ("first (look 0, idle 1, work 1) > later after first (look 0, idle 0, work 0) > look 3",
            PathText(timeline, timeline.start));
}

TEST(CriticalPath, OfDamagedTimesHasAtMostHalfOfTheWorkThatFits) {
  const Timeline timeline = MakeTimeline(RunFromText(R"(
    a:
    b:
    start 0 6000000000000
    a start 0 0 0 6000000000000 6000000000000
    b start 0 0 0 6000000000000 6000000000000)"));
  EXPECT_EQ(std::numeric_limits<std::int64_t>::max() / 2, timeline.start.balance.work);
}

}  // namespace
