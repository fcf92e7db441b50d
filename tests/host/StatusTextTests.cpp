#include "host/StatusText.h"

#include <gtest/gtest.h>

#include "tests/host/RunBuilder.h"

namespace {

using Cycles = std::vector<std::string>;

const Cycles kNoCycle;
const Cycles kCycle = {"x \u2192 y \u2192 x"};

RunBuilder Starting() {
  RunBuilder run;
  for (const char* id : {"a", "b", "c", "d", "e", "f", "g"}) run.Plugin(id);
  run.Phase(RunEvent::Kind::kPhaseBegin, RunPhase::kStart);
  return run;
}

std::string Line(const RunBuilder& run, const Cycles& cycles = kNoCycle) {
  return WaitingLine(run.State(), cycles, run.Now() + 1'500'000'000);
}

TEST(WaitingLine, NamesThoseInInitAndHowLongTheyHaveBeen) {
  RunBuilder run = Starting();
  run.Started("a").InInit("b");
  EXPECT_EQ("1 of 7 started; waiting for b (1.5 s)", Line(run));
}

TEST(WaitingLine, NamesFiveAndCountsTheRest) {
  RunBuilder run = Starting();
  for (const char* id : {"a", "b", "c", "d", "e", "f", "g"}) run.InInit(id);
  EXPECT_EQ(
      "0 of 7 started; waiting for a (1.5 s), b (1.5 s), c (1.5 s), d (1.5 s), e (1.5 s) and 2 "
      "more",
      Line(run));
  EXPECT_EQ("waiting for a, b, c, d, e and 2 more", WaitedFor(run.State(), kNoCycle));
}

TEST(WaitingLine, IsEmptyWhileTheFrameOnlyHasToLookAgain) {
  RunBuilder run = Starting();
  run.Started("a");
  EXPECT_EQ("", Line(run));
  EXPECT_EQ("", WaitedFor(run.State(), kNoCycle));
}

TEST(WaitingLine, NamesTheCycleOnlyWhenNobodyIsInInit) {
  RunBuilder run = Starting();
  run.InInit("a");
  EXPECT_EQ("0 of 7 started; waiting for a (1.5 s)", Line(run, kCycle));
  RunBuilder stuck = Starting();
  stuck.Started("a");
  EXPECT_EQ("1 of 7 started; waiting for the cycle x \u2192 y \u2192 x", Line(stuck, kCycle));
  stuck.Ready("b");
  EXPECT_EQ("", Line(stuck, kCycle));
}

TEST(WaitingLine, NamesEveryCycle) {
  RunBuilder run = Starting();
  EXPECT_EQ("waiting for the cycles x \u2192 y \u2192 x and z \u2192 z",
            WaitedFor(run.State(), {kCycle.front(), "z \u2192 z"}));
}

TEST(WaitingLine, CountsFailuresByThemselves) {
  RunBuilder run = Starting();
  run.Started("a").InitFailed("b", "x").NotLoaded("c", "y").InInit("d");
  EXPECT_EQ("1 of 7 started, 2 failed; waiting for d (1.5 s)", Line(run));
}

RunBuilder Stopping(RunBuilder run) {
  run.Up();
  run.Phase(RunEvent::Kind::kPhaseBegin, RunPhase::kFrameStop);
  return run.Phase(RunEvent::Kind::kPhaseBegin, RunPhase::kStop);
}

TEST(WaitingLine, OfTheStopCountsThoseThatHaveSomethingToStop) {
  RunBuilder run;
  for (const char* id : {"a", "b", "c", "d"}) run.Plugin(id);
  run = Stopping(run.Started("a").Started("b").NotLoaded("c", "x").Started("d"));
  run.Stopped("b").InUnInit("a");
  EXPECT_EQ("1 of 4 stopped; waiting for a (1.5 s)", Line(run));
  run.NothingToStop("c").StopRefused("d", "y");
  EXPECT_EQ("1 of 3 stopped, 1 refused; waiting for a (1.5 s)", Line(run));
}

TEST(WaitingLine, OfTheStopDoesNotNameAPluginThatItHasPassedBy) {
  RunBuilder run = Stopping(RunBuilder().Plugin("a").Plugin("b").InInit("a").Started("b"));
  run.NothingToStop("a").InUnInit("b");
  EXPECT_EQ("0 of 1 stopped; waiting for b (1.5 s)", Line(run));
}

TEST(WaitingForCall, IsSaidOnceItTakesLongerThanUsual) {
  EXPECT_EQ("", WaitingForCall("Frame_Init", 1.99));
  EXPECT_EQ("waiting for Frame_Init (2.0 s)", WaitingForCall("Frame_Init", 2));
}

TEST(WaitingLine, OfTheStopNamesTheCycleOnceNothingElseCanEnd) {
  RunBuilder run;
  run.Plugin("x", "server", {"y", "base"}).Plugin("y", "server", {"x"}).Plugin("base");
  run.Plugin("other");
  run = Stopping(run.Started("base").Started("other"));
  EXPECT_EQ("", Line(run, kCycle));
  run.Stopped("other");
  EXPECT_EQ("1 of 4 stopped; waiting for the cycle x \u2192 y \u2192 x", Line(run, kCycle));
}

TEST(WaitingLine, OfTheStartDoesNotNameASubPlatformWithoutAnID) {
  RunBuilder run = Starting();
  run.Plugin("", "platform").NotLoaded("", "x");
  EXPECT_EQ("waiting for the cycle x \u2192 y \u2192 x", WaitedFor(run.State(), kCycle));
}

TEST(WaitingLine, OfTheStopNamesASubPlatformWithoutAnID) {
  RunBuilder run;
  run.Plugin("a").Plugin("", "platform").Started("a").NotLoaded("", "x");
  EXPECT_EQ("", Line(run));
  run = Stopping(run);
  EXPECT_EQ("", Line(run));
  run.Stopped("a");
  EXPECT_EQ("1 of 2 stopped; waiting for a sub platform without an ID, whose stop is never counted",
            Line(run));
  EXPECT_EQ(
      "waiting for the cycle x \u2192 y \u2192 x, and for a sub platform without an ID, whose stop "
      "is never counted",
      WaitedFor(run.State(), kCycle));
}

TEST(NameColumns, LeaveRoomForTheRestOfTheLine) {
  EXPECT_EQ(24U, NameColumns(80));
  EXPECT_EQ(24U, NameColumns(104));
  EXPECT_EQ(120U, NameColumns(200));
  EXPECT_EQ(24U, NameColumns(60));
  EXPECT_EQ(10U, NameColumns(20));
  EXPECT_LT(1000000U, NameColumns(0));
}

TEST(OnlyWaiting, IsFalseOutsideOfAPhaseAndWhenAllAreDone) {
  RunBuilder run;
  run.Plugin("a");
  EXPECT_FALSE(OnlyWaiting(run.State()));
  run.Phase(RunEvent::Kind::kPhaseBegin, RunPhase::kStart);
  EXPECT_TRUE(OnlyWaiting(run.State()));
  run.Started("a");
  EXPECT_FALSE(OnlyWaiting(run.State()));
}

TEST(WaitingLog, IsDueWhenWhoIsWaitedForChangesAndOnceAMinute) {
  constexpr std::int64_t second = 1'000'000'000;
  WaitingLog log;
  EXPECT_FALSE(log.IsDue("", 1 * second));
  EXPECT_TRUE(log.IsDue("a", 2 * second));
  EXPECT_FALSE(log.IsDue("a", 3 * second));
  EXPECT_FALSE(log.IsDue("a", 61 * second));
  EXPECT_TRUE(log.IsDue("a", 62 * second));
  EXPECT_FALSE(log.IsDue("a", 63 * second));
  EXPECT_TRUE(log.IsDue("b", 64 * second));
  EXPECT_FALSE(log.IsDue("", 65 * second));
  EXPECT_TRUE(log.IsDue("b", 66 * second));
}

TEST(EventText, SaysWhatBecameOfAPluginAndWhy) {
  RunBuilder run;
  for (const char* id : {"waits", "ok", "bad", "gone", "down", "stays", "at_once"}) {
    run.Plugin(id);
  }
  run.Started("ok", 12).InitFailed("bad", "its Init returned false").NotLoaded("gone", "no file");
  run.Started("down").Stopped("down", 8).Started("stays").StopRefused("stays", "it said no");
  run.Started("at_once").Stopped("at_once", 0);
  std::vector<std::string> texts;
  for (const PluginRun& plugin : run.State().Plugins()) texts.push_back(EventText(plugin));
  const std::vector<std::string> expected = {"",
                                             "started in 12 ms",
                                             "INIT FAILED after 7 ms: its Init returned false",
                                             "NOT LOADED: no file",
                                             "stopped in 8 ms",
                                             "STOP REFUSED: it said no; its library stays mapped",
                                             "stopped in 0 ms"};
  EXPECT_EQ(expected, texts);
}

}  // namespace
