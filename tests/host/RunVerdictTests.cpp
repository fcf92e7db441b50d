#include "host/RunVerdict.h"

#include <gtest/gtest.h>

#include <string>

#include "tests/host/RunBuilder.h"

namespace {

RunFacts Well() {
  RunFacts facts;
  facts.initResult = 0;
  facts.startResult = 0;
  facts.callbackResult = true;
  return facts;
}

std::string Judged(const RunFacts& facts, const RunBuilder& run) {
  const Verdict verdict = Judge(facts, run.State());
  return std::to_string(verdict.exitStatus) + " " + verdict.status + " | " + verdict.sentence;
}

TEST(Verdict, OfARunInWhichAllStartedAndStoppedIsUp) {
  RunBuilder run;
  run.Plugin("a").Plugin("b").Started("a").Started("b").Up().Stopped("b").Stopped("a");
  EXPECT_EQ("0 up | up: all 2 plugins started", Judged(Well(), run));
}

TEST(Verdict, OfOnePluginAndOfNoneIsInTheirWords) {
  RunBuilder one;
  one.Plugin("a").Started("a").Up().Stopped("a");
  EXPECT_EQ("0 up | up: the one plugin started", Judged(Well(), one));
  RunBuilder failed;
  failed.Plugin("a").NotLoaded("a", "x").Up();
  EXPECT_EQ("3 degraded | degraded: the one plugin did not start; a was not loaded",
            Judged(Well(), failed));
  RunBuilder none;
  none.Up();
  EXPECT_EQ("0 up | up: there are no plugins to start", Judged(Well(), none));
}

TEST(Verdict, CountsNeitherDriversNorExecutables) {
  RunBuilder run;
  run.Plugin("a").Plugin("d", "driver").Plugin("e", "executable").Started("a").Up().Stopped("a");
  EXPECT_EQ("0 up | up: the one plugin started", Judged(Well(), run));
}

TEST(Verdict, IsDegradedByEveryWayAPluginFails) {
  RunBuilder run;
  run.Plugin("a").Plugin("b").Plugin("c").Plugin("d").Started("a").InitFailed("b", "x");
  run.NotLoaded("c", "y").Started("d").Up().StopRefused("d", "z").Stopped("a").Stopped("b");
  EXPECT_EQ(
      "3 degraded | degraded: 2 of 4 plugins started; b failed in Init; c was not loaded; "
      "d refused to stop",
      Judged(Well(), run));
}

TEST(Verdict, OfSeveralPluginsThatFailTheSameWayNamesThemTogether) {
  RunBuilder run;
  run.Plugin("a").Plugin("b").Plugin("c").Plugin("d").Plugin("e").Plugin("f");
  run.InitFailed("a", "x").InitFailed("b", "x").NotLoaded("c", "y").NotLoaded("d", "y");
  run.Started("e").Started("f").Up().StopRefused("e", "z").StopRefused("f", "z");
  EXPECT_EQ(
      "3 degraded | degraded: 2 of 6 plugins started; a and b failed in Init; c and d were not "
      "loaded; e and f refused to stop",
      Judged(Well(), run));
}

TEST(Verdict, NamesFivePluginsAndCountsTheRest) {
  RunBuilder run;
  for (const char* id : {"a", "b", "c", "d", "e", "f", "g"}) run.Plugin(id).NotLoaded(id, "x");
  run.Up();
  EXPECT_EQ(
      "3 degraded | degraded: 0 of 7 plugins started; a, b, c, d, e and 2 more were not loaded",
      Judged(Well(), run));
}

TEST(Verdict, IsDegradedByAnErrorAmongTheFindingsAlone) {
  RunBuilder note;
  note.Finding(Severity::kNote, "n").Finding(Severity::kWarning, "w").Up();
  EXPECT_EQ("0 up | up: there are no plugins to start", Judged(Well(), note));
  RunBuilder error;
  error.Finding(Severity::kError, "Product.xml reads as empty").Up();
  EXPECT_EQ("3 degraded | degraded: there are no plugins to start; Product.xml reads as empty",
            Judged(Well(), error));
  error.Finding(Severity::kError, "another");
  EXPECT_EQ(
      "3 degraded | degraded: there are no plugins to start; Product.xml reads as empty (and 1 "
      "more error)",
      Judged(Well(), error));
  error.Finding(Severity::kError, "a third");
  EXPECT_EQ(
      "3 degraded | degraded: there are no plugins to start; Product.xml reads as empty (and 2 "
      "more errors)",
      Judged(Well(), error));
}

TEST(Verdict, IsFailedByAFailureOutsideTheFrame) {
  RunFacts facts;
  facts.failure = "the frame's library cannot be loaded";
  EXPECT_EQ("1 failed | failed: the frame's library cannot be loaded", Judged(facts, RunBuilder()));
}

TEST(Verdict, OfACrashHasItsStatusWhateverElseFailed) {
  RunEvent crash;
  crash.kind = RunEvent::Kind::kCrash;
  crash.text = "exit(0) in a";
  crash.number = 4;
  RunState byExit;
  byExit.Apply(crash);
  RunFacts facts;
  facts.failure = "why";
  facts.pendingCall = "Frame_Start";
  const Verdict exited = Judge(facts, byExit);
  EXPECT_EQ("crashed", exited.status);
  EXPECT_EQ(kCutShort, exited.exitStatus);
  EXPECT_EQ("crashed: exit(0) in a", exited.sentence);
  crash.text = "SIGSEGV in a";
  crash.number = -1;
  RunState bySignal;
  bySignal.Apply(crash);
  const Verdict ended = Judge(facts, bySignal);
  EXPECT_EQ("crashed", ended.status);
  EXPECT_EQ(kBySignal, ended.exitStatus);
  EXPECT_EQ("crashed: SIGSEGV in a", ended.sentence);
}

TEST(Verdict, IsFailedByEachStepOfTheFrame) {
  RunFacts facts;
  facts.failure = "why";
  const RunBuilder run;
  facts.initResult = -1;
  EXPECT_EQ("1 failed | failed: why", Judged(facts, run));
  facts.initResult = 0;
  facts.startResult = 2;
  EXPECT_EQ("1 failed | failed: why", Judged(facts, run));
  facts.startResult = 0;
  facts.callbackResult = false;
  EXPECT_EQ("1 failed | failed: why", Judged(facts, run));
}

TEST(Verdict, IsCutShortWhenStoppedBeforeItWasUp) {
  RunBuilder run;
  run.Plugin("a").Plugin("b").Started("a").Stopped("a");
  RunFacts facts = Well();
  facts.stoppedBy = "SIGINT";
  EXPECT_EQ("4 cut-short | cut short: stopped by SIGINT before it was up; 1 of 2 plugins started",
            Judged(facts, run));
}

TEST(Verdict, IsCutShortWithoutAStopRequestToo) {
  EXPECT_EQ("4 cut-short | cut short: stopped before it was up; there are no plugins to start",
            Judged(Well(), RunBuilder()));
}

TEST(Verdict, OfTheOnePluginLooksAtNoDriver) {
  RunBuilder run;
  run.Plugin("d", "driver").Plugin("e", "executable").Plugin("a", "platform");
  run.NotLoaded("a", "x").Up();
  EXPECT_EQ("3 degraded | degraded: the one plugin did not start; a was not loaded",
            Judged(Well(), run));
}

TEST(Verdict, OfTheOnePluginThatWasCutShortSaysHowFarItWas) {
  RunFacts facts = Well();
  facts.stoppedBy = "SIGINT";
  RunBuilder run;
  run.Plugin("a");
  EXPECT_EQ(
      "4 cut-short | cut short: stopped by SIGINT before it was up; the start of the one plugin "
      "had "
      "not begun",
      Judged(facts, run));
  run.InInit("a");
  EXPECT_EQ(
      "4 cut-short | cut short: stopped by SIGINT before it was up; the one plugin had not "
      "returned "
      "from its Init",
      Judged(facts, run));
}

RunFacts InFrameStop() {
  RunFacts facts = Well();
  facts.pendingCall = "Frame_Stop";
  return facts;
}

TEST(Verdict, OfPluginsWhoseInitEndedTooLateSaysThatTheyWereNotStopped) {
  RunFacts facts = Well();
  facts.stoppedBy = "SIGINT";
  RunBuilder run;
  run.Plugin("a").Plugin("b").Plugin("c").Started("b").InInit("a").InInit("c");
  run.NothingToStop("a").Stopped("b").Started("a");
  EXPECT_EQ(
      "4 cut-short | cut short: stopped by SIGINT before it was up; 2 of 3 plugins started; a was "
      "not stopped: its Init ended after the stop had begun",
      Judged(facts, run));
  run.NothingToStop("c").Started("c");
  EXPECT_EQ(
      "4 cut-short | cut short: stopped by SIGINT before it was up; all 3 plugins started; a and c "
      "were not stopped: their Init ended after the stop had begun",
      Judged(facts, run));
}

TEST(Verdict, IsLeftBehindWithThePluginsThatAreStillBeingUnmapped) {
  RunBuilder run;
  run.Plugin("a").Plugin("b").Started("a").Started("b").Up().Unmapping("a").Unmapping("b");
  EXPECT_EQ("4 left-behind | left behind: a and b are still being unmapped",
            Judged(InFrameStop(), run));
}

TEST(Verdict, IsLeftBehindWithOnePluginThatIsStillBeingUnmappedAtOnce) {
  RunBuilder run;
  run.Plugin("a").Started("a").Up().Unmapping("a", 0);
  EXPECT_EQ("4 left-behind | left behind: a is still being unmapped", Judged(InFrameStop(), run));
}

TEST(Verdict, IsLeftBehindWithThePluginsThatHaveNotReturned) {
  RunBuilder run;
  run.Plugin("a").Plugin("b").Plugin("c").Started("a").InInit("b").Started("c").InUnInit("c");
  RunFacts facts = Well();
  facts.unfinishedTasks = 2;
  facts.stoppedBy = "SIGTERM";
  EXPECT_EQ(
      "4 left-behind | left behind: b has not returned from its Init; c has not returned from its "
      "UnInit (stopped by SIGTERM)",
      Judged(facts, run));
}

TEST(Verdict, IsLeftBehindWithAPluginWhoseLibraryIsBeingLoaded) {
  RunBuilder run;
  run.Plugin("a").Plugin("b").Started("a").Loading("b");
  RunFacts facts = Well();
  facts.unfinishedTasks = 1;
  facts.stoppedBy = "SIGTERM";
  EXPECT_EQ("4 left-behind | left behind: b is still being loaded (stopped by SIGTERM)",
            Judged(facts, run));
}

TEST(Verdict, IsLeftBehindWithSeveralPluginsInEachStepOfTheirs) {
  RunBuilder run;
  run.Plugin("a").Plugin("b").Plugin("c").Plugin("d").Plugin("e").Plugin("f");
  run.Loading("a").Loading("b").InInit("c").InInit("d");
  run.Started("e").Started("f").InUnInit("e").InUnInit("f");
  RunFacts facts = Well();
  facts.unfinishedTasks = 6;
  EXPECT_EQ(
      "4 left-behind | left behind: a and b are still being loaded; c and d have not returned from "
      "their Init; e and f have not returned from their UnInit",
      Judged(facts, run));
}

TEST(Verdict, OfACycleSaysWhatEachPluginWaitsFor) {
  RunBuilder run;
  run.Plugin("a", "server", {"b", "base"}).Plugin("b", "server", {"a"}).Plugin("base");
  run.Plugin("c", "server", {"c"})
      .Plugin("other", "server", {"base"})
      .Started("base")
      .Started("other");
  run.Stopped("other");
  EXPECT_EQ(
      "4 left-behind | left behind: a never started: it waits for b; b never started: it waits for "
      "a; base was not stopped: it waits for the stop of a; c never started: it waits for itself",
      Judged(InFrameStop(), run));
}

TEST(Verdict, OfAPluginThatWaitsNamesThoseThatAreNotCountedYet) {
  RunBuilder run;
  run.Plugin("done").Plugin("failed").Plugin("waits", "server", {"done", "failed", "never"});
  run.Plugin("never").Started("done").InitFailed("failed", "x");
  run.NothingToStop("failed").NothingToStop("never");
  EXPECT_EQ(
      "4 left-behind | left behind: done was not stopped: it waits for the stop of waits; waits "
      "never started: it waits for never; failed failed in Init",
      Judged(InFrameStop(), run));
}

TEST(Verdict, OfAPluginThatManyWaitForNamesFiveOfThem) {
  RunBuilder run;
  run.Plugin("base").Started("base");
  for (const char* id : {"a", "b", "c", "d", "e", "f"}) run.Plugin(id, "server", {"base"});
  const std::string text = Judged(InFrameStop(), run);
  const std::string first =
      "4 left-behind | left behind: base was not stopped: it waits for the stop of a, b, c, d, e "
      "and 1 more; ";
  EXPECT_EQ(first, text.substr(0, first.size()));
}

TEST(Verdict, OfAServerWithoutAnIDSaysThatItsStopWasNotCounted) {
  EXPECT_EQ("4 left-behind | left behind: the stop of (no ID) was not counted",
            Judged(InFrameStop(), RunBuilder().Plugin("").Started("")));
}

TEST(Verdict, OfAStopLooksAtNoDriver) {
  RunBuilder run;
  run.Plugin("d", "driver", {"a"}).Plugin("a").Started("a");
  EXPECT_EQ("4 left-behind | left behind: the stop of a was not counted",
            Judged(InFrameStop(), run));
}

TEST(Verdict, OfASubPlatformWithoutAnIDSaysThatItIsNeverCounted) {
  RunBuilder run;
  run.Plugin("a").Plugin("", "platform").Started("a").NotLoaded("", "x").Stopped("a");
  EXPECT_EQ(
      "4 left-behind | left behind: the stop of a sub platform without an ID is never counted; "
      "(no ID) was not loaded",
      Judged(InFrameStop(), run));
}

TEST(Verdict, OfALongCycleSaysItOfFivePluginsAndCountsTheRest) {
  RunBuilder run;
  for (int i = 0; i < 7; ++i) {
    run.Plugin("p" + std::to_string(i), "server", {"p" + std::to_string((i + 1) % 7)});
  }
  EXPECT_EQ(
      "4 left-behind | left behind: p0 never started: it waits for p1; p1 never started: it waits "
      "for p2; p2 never started: it waits for p3; p3 never started: it waits for p4; p4 never "
      "started: it waits for p5; and 2 more plugins",
      Judged(InFrameStop(), run));
}

TEST(Verdict, OfAStopThatWasLeftAtOnceSaysWhatWasNotCounted) {
  RunBuilder run;
  run.Plugin("a").Plugin("b", "server", {"a"}).Started("a").Started("b");
  EXPECT_EQ(
      "4 left-behind | left behind: a was not stopped: it waits for the stop of b; the stop of b "
      "was not counted",
      Judged(InFrameStop(), run));
}

TEST(Verdict, IsLeftBehindWithTheCallOfTheFrameThatHasNotReturned) {
  RunFacts facts;
  facts.pendingCall = "Frame_Init";
  facts.stoppedBy = "SIGTERM";
  EXPECT_EQ("4 left-behind | left behind: Frame_Init has not returned (stopped by SIGTERM)",
            Judged(facts, RunBuilder()));
  facts.pendingCall = "the reading of the product's files";
  EXPECT_EQ(
      "4 left-behind | left behind: the reading of the product's files has not returned (stopped "
      "by SIGTERM)",
      Judged(facts, RunBuilder().Plugin("a")));
}

TEST(Verdict, IsLeftBehindWithTasksThatNoPluginIsKnownToRun) {
  RunFacts facts = Well();
  facts.unfinishedTasks = 2;
  EXPECT_EQ("4 left-behind | left behind: 2 tasks of the pool had not ended",
            Judged(facts, RunBuilder()));
}

TEST(Verdict, IsLeftBehindWithOneTaskInAStopThatHasCountedAll) {
  RunFacts facts = Well();
  facts.unfinishedTasks = 1;
  EXPECT_EQ("4 left-behind | left behind: 1 task of the pool had not ended",
            Judged(facts, RunBuilder()));
  facts.pendingCall = "Frame_Stop";
  EXPECT_EQ("4 left-behind | left behind: Frame_Stop has not returned",
            Judged(facts, RunBuilder()));
}

TEST(Verdict, FailedIsWorseThanLeftBehindAndThatWorseThanDegraded) {
  RunBuilder run;
  run.Plugin("a").InitFailed("a", "x").Up();
  RunFacts facts = Well();
  facts.pendingCall = "Frame_Stop";
  EXPECT_EQ("left-behind", Judge(facts, run.State()).status);
  facts.callbackResult = false;
  EXPECT_EQ("failed", Judge(facts, run.State()).status);
}

TEST(NextCall, IsTheStopAndAfterItsBeginTheEnd) {
  RunBuilder run;
  run.Phase(RunEvent::Kind::kPhaseBegin, RunPhase::kStart);
  run.Phase(RunEvent::Kind::kPhaseEnd, RunPhase::kStart);
  EXPECT_EQ("Frame_Stop", NextCall(run.State()));
  run.Phase(RunEvent::Kind::kPhaseBegin, RunPhase::kFrameStop);
  EXPECT_EQ("Frame_UnInit", NextCall(run.State()));
}

TEST(Totals, CountWhatBecameOfThePluginsToStart) {
  RunBuilder run;
  for (const char* id : {"a", "b", "c", "d", "e", "f"}) run.Plugin(id);
  run.Plugin("driver", "driver").Started("a").Started("b").InitFailed("c", "x").NotLoaded("d", "y");
  run.Started("e").Stopped("a").Stopped("c").StopRefused("b", "z");
  const RunTotals totals = CountTotals(run.State());
  EXPECT_EQ((std::vector<std::int64_t>{6, 3, 1, 1, 2, 1}),
            (std::vector<std::int64_t>{totals.plugins, totals.started, totals.initFailed,
                                       totals.notLoaded, totals.stopped, totals.stopRefused}));
}

/// A run with plugins in each state, named after it.
RunBuilder InEachState() {
  RunBuilder run;
  run.Plugin("driver", "driver").Plugin("executable", "executable").Plugin("platform", "platform");
  for (const char* id : {"waits", "ready", "loads", "inits", "started", "failed", "gone", "stopped",
                         "refused", "uninits"}) {
    run.Plugin(id);
  }
  run.Started("platform").Stopped("platform");
  run.Ready("ready").Loading("loads").Started("uninits").InUnInit("uninits");
  run.InInit("inits").Started("started").InitFailed("failed", "x").NotLoaded("gone", "y");
  run.Started("stopped").Stopped("stopped").Stopped("failed").Started("refused");
  return run.StopRefused("refused", "z");
}

TEST(NeedsAttention, WhatIsNotStartedOrNotStopped) {
  std::string names;
  const RunBuilder run = InEachState();
  for (const PluginRun& plugin : run.State().Plugins()) {
    if (NeedsAttention(plugin)) names += plugin.head.id + " ";
  }
  EXPECT_EQ("waits ready loads inits failed gone refused uninits ", names);
}

TEST(ReasonText, IsOfTheStartAndOfTheStop) {
  PluginRun plugin;
  EXPECT_EQ("", ReasonText(plugin));
  plugin.stopReason = "stuck";
  EXPECT_EQ("stuck", ReasonText(plugin));
  plugin.reason = "expired";
  EXPECT_EQ("expired; stop: stuck", ReasonText(plugin));
  plugin.stopReason.clear();
  EXPECT_EQ("expired", ReasonText(plugin));
}

TEST(OutcomeWord, IsTheStateOrTheStartsFailureAlsoAfterAGoodStop) {
  std::string words;
  const RunBuilder run = InEachState();
  for (const PluginRun& plugin : run.State().Plugins()) words += OutcomeWord(plugin) + " ";
  EXPECT_EQ(
      "waiting waiting stopped waiting ready loading in-init started init-failed not-loaded "
      "stopped stop-refused in-uninit ",
      words);
}

}  // namespace
