#include "workbench/record/RunState.h"

#include <gtest/gtest.h>

#include <sstream>

namespace {

using Kind = RunEvent::Kind;
using Result = RunEvent::Result;
using State = PluginRun::State;

const char* Name(State state) {
  constexpr const char* names[] = {"waiting", "ready",       "loading",    "in Init",
                                   "started", "INIT FAILED", "NOT LOADED", "in UnInit",
                                   "stopped", "STOP REFUSED"};
  return names[static_cast<int>(state)];
}

/// The members of a plugin that differ from their defaults.
std::string Text(const PluginRun& plugin) {
  std::ostringstream text;
  text << plugin.head.id << " " << Name(plugin.state) << " since " << plugin.sinceNs;
  if (plugin.started != State::kWaiting) text << ", " << Name(plugin.started) << " in the end";
  if (plugin.startedAtNs >= 0) text << ", from " << plugin.startedAtNs;
  if (plugin.thread != 0) text << " on " << plugin.thread;
  if (plugin.initMs >= 0) text << ", Init " << plugin.initMs << " ms";
  if (plugin.uninitMs >= 0) text << ", UnInit " << plugin.uninitMs << " ms";
  if (plugin.startCounted) text << ", start counted";
  if (plugin.stopCounted) text << ", stop counted";
  if (!plugin.waitedFor.empty()) text << ", after " << plugin.waitedFor;
  if (!plugin.reason.empty()) text << ", because " << plugin.reason;
  if (!plugin.stopReason.empty()) text << ", refused because " << plugin.stopReason;
  return text.str();
}

class RunStates : public testing::Test {
 protected:
  /// Applies an event of plugin "a" on thread 5, a nanosecond after the previous event.
  void Apply(Kind kind, Result result = Result::kNone, const std::string& text = "",
             std::int64_t milliseconds = -1, const std::string& phase = "") {
    RunEvent event;
    event.kind = kind;
    event.nanoseconds = ++now;
    event.thread = 5;
    event.plugin = "a";
    event.result = result;
    event.text = text;
    event.milliseconds = milliseconds;
    event.phase = phase;
    run.Apply(event);
  }

  void Ready(const std::string& phase, const std::string& last = "") {
    Apply(Kind::kReady, Result::kNone, last, -1, phase);
  }
  void Count(const std::string& phase, Result result, const std::string& reason = "") {
    Apply(Kind::kCounted, result, reason, -1, phase);
  }

  /// Applies all events up to the begin of its Init, at 3 ns.
  void BeginInit() {
    Apply(Kind::kLoadBegin);
    Apply(Kind::kLoadEnd, Result::kOk);
    Apply(Kind::kInitBegin);
  }
  void Start() {
    BeginInit();
    Apply(Kind::kInitEnd, Result::kOk, "", 20);
    Count("start", Result::kOk);
  }

  std::string A() const { return Text(*run.Find("a")); }

  RunState run;
  std::int64_t now = 0;
};

TEST_F(RunStates, FollowAPluginThroughItsRun) {
  PluginHead head;
  head.id = "a";
  head.version = "1.0";
  run.AddPlugin(head);
  EXPECT_EQ("a waiting since 0", A());
  Ready("start", "b");
  EXPECT_EQ("a ready since 1, after b", A());
  Apply(Kind::kLoadBegin);
  EXPECT_EQ("a loading since 2, from 2 on 5, after b", A());
  Apply(Kind::kLoadEnd, Result::kOk);
  EXPECT_EQ("a loading since 2, from 2 on 5, after b", A());
  Apply(Kind::kInitBegin);
  EXPECT_EQ("a in Init since 4, from 2 on 5, after b", A());
  Apply(Kind::kInitEnd, Result::kOk, "", 20);
  EXPECT_EQ("a started since 5, started in the end, from 2 on 5, Init 20 ms, after b", A());
  Count("start", Result::kOk);
  const std::string start = ", started in the end, from 2 on 5, Init 20 ms";
  EXPECT_EQ("a started since 5" + start + ", start counted, after b", A());
  Ready("stop", "c");
  EXPECT_EQ("a started since 5" + start + ", start counted, after b", A());
  Apply(Kind::kUnInitBegin);
  EXPECT_EQ("a in UnInit since 8" + start + ", start counted, after b", A());
  Apply(Kind::kUnInitEnd, Result::kOk, "", 7);
  EXPECT_EQ("a in UnInit since 8" + start + ", UnInit 7 ms, start counted, after b", A());
  Count("stop", Result::kOk);
  EXPECT_EQ("a stopped since 10" + start + ", UnInit 7 ms, start counted, stop counted, after b",
            A());
  EXPECT_EQ("1.0", run.Plugins().at(0).head.version);
}

TEST_F(RunStates, KeepTheReasonOfAPluginThatIsNotLoaded) {
  Apply(Kind::kLoadBegin);
  Apply(Kind::kLoadEnd, Result::kFailed, "no file");
  EXPECT_EQ("a NOT LOADED since 2, NOT LOADED in the end, from 1 on 5, because no file", A());
  Count("start", Result::kNotLoaded);
  Count("stop", Result::kNotLoaded);
  EXPECT_EQ(
      "a NOT LOADED since 2, NOT LOADED in the end, from 1 on 5, start counted, stop counted, "
      "because no file",
      A());
}

TEST_F(RunStates, KeepTheReasonOfAnInitThatFailsAndOfAStopThatIsRefused) {
  BeginInit();
  Apply(Kind::kInitEnd, Result::kFailed, "no port", 3);
  EXPECT_EQ(
      "a INIT FAILED since 4, INIT FAILED in the end, from 1 on 5, Init 3 ms, because no port",
      A());
  Count("start", Result::kFailed);
  Apply(Kind::kUnInitBegin);
  Apply(Kind::kUnInitEnd, Result::kRefused, "busy", 9);
  Count("stop", Result::kRefused);
  EXPECT_EQ(
      "a STOP REFUSED since 8, INIT FAILED in the end, from 1 on 5, Init 3 ms, UnInit 9 ms, start "
      "counted, stop counted, because no port, refused because busy",
      A());
}

TEST_F(RunStates, TakeTheCountWhereNoOtherEventCame) {
  Count("start", Result::kOk);
  EXPECT_EQ("a started since 1, started in the end, start counted", A());
  Count("stop", Result::kOk);
  EXPECT_EQ("a stopped since 2, started in the end, start counted, stop counted", A());
  run = RunState();
  Count("start", Result::kFailed, "gone");
  EXPECT_EQ("a INIT FAILED since 3, INIT FAILED in the end, start counted, because gone", A());
  Count("stop", Result::kRefused, "busy");
  EXPECT_EQ(
      "a STOP REFUSED since 4, INIT FAILED in the end, start counted, stop counted, because gone, "
      "refused because busy",
      A());
  run = RunState();
  Count("start", Result::kNotLoaded);
  EXPECT_EQ("a NOT LOADED since 5, NOT LOADED in the end, start counted", A());
}

TEST_F(RunStates, LetTheCountOverruleAnInitThatEndedWell) {
  BeginInit();
  Apply(Kind::kInitEnd, Result::kOk, "", 20);
  Count("start", Result::kFailed, "out of memory");
  EXPECT_EQ(
      "a INIT FAILED since 5, INIT FAILED in the end, from 1 on 5, Init 20 ms, start counted, "
      "because out of memory",
      A());
}

TEST_F(RunStates, LeaveAPluginInInitThatTheStopPassedBy) {
  BeginInit();
  Count("stop", Result::kNotLoaded);
  EXPECT_EQ("a in Init since 3, from 1 on 5, stop counted", A());
  Apply(Kind::kInitEnd, Result::kOk, "", 20);
  Count("start", Result::kOk);
  EXPECT_EQ(
      "a started since 5, started in the end, from 1 on 5, Init 20 ms, start counted, stop "
      "counted",
      A());
}

TEST_F(RunStates, LeaveAPluginWaitingThatNeverBegan) {
  Ready("start");
  Count("stop", Result::kNotLoaded);
  EXPECT_EQ("a ready since 1, stop counted", A());
}

TEST_F(RunStates, KeepTheStopOfAPluginWhoseStartIsCountedLate) {
  Start();
  Apply(Kind::kUnInitBegin);
  Count("start", Result::kOk);
  EXPECT_EQ("a in UnInit since 6, started in the end, from 1 on 5, Init 20 ms, start counted", A());
  Count("stop", Result::kOk);
  Count("start", Result::kOk);
  EXPECT_EQ(
      "a stopped since 8, started in the end, from 1 on 5, Init 20 ms, start counted, stop "
      "counted",
      A());
}

TEST_F(RunStates, AreNotReadyAgainOnceBegun) {
  BeginInit();
  Ready("start", "b");
  EXPECT_EQ("a in Init since 3, from 1 on 5, after b", A());
}

TEST_F(RunStates, TakeAnInitWithoutALoadAsTheStartsBegin) {
  Apply(Kind::kInitBegin);
  EXPECT_EQ("a in Init since 1, from 1 on 5", A());
}

TEST_F(RunStates, KeepTheFirstOfTwoPluginsWithOneIdAndTheModelsOrder) {
  for (const auto& [id, version] :
       {std::pair("z", "1"), std::pair("a", "2"), std::pair("z", "3")}) {
    PluginHead head;
    head.id = id;
    head.version = version;
    run.AddPlugin(head);
  }
  ASSERT_EQ(2U, run.Plugins().size());
  EXPECT_EQ("z1a2", run.Plugins()[0].head.id + run.Plugins()[0].head.version +
                        run.Plugins()[1].head.id + run.Plugins()[1].head.version);
  EXPECT_EQ(&run.Plugins()[1], run.Find("a"));
  EXPECT_EQ(nullptr, run.Find("b"));
}

TEST_F(RunStates, AddNoPluginForEventsOfTheWholeRun) {
  for (const Kind kind :
       {Kind::kPhaseBegin, Kind::kPhaseEnd, Kind::kPosted, Kind::kTaskBegin, Kind::kTaskEnd,
        Kind::kUp, Kind::kStopRequest, Kind::kFinding, Kind::kCrash, Kind::kEnd}) {
    Apply(kind);
  }
  EXPECT_TRUE(run.Plugins().empty());
}

std::string Text(const std::vector<RunState::Phase>& phases) {
  std::ostringstream text;
  for (const RunState::Phase& phase : phases) {
    text << phase.name << " " << phase.beginNs << ".." << phase.endNs << " " << phase.milliseconds
         << "; ";
  }
  return text.str();
}

TEST_F(RunStates, HoldThePhasesInTheOrderOfTheirBegins) {
  const auto phase = [this](Kind kind, const char* name, std::int64_t milliseconds) {
    Apply(kind, Result::kNone, "", milliseconds, name);
  };
  phase(Kind::kPhaseBegin, "frame-stop", -1);
  phase(Kind::kPhaseBegin, "stop", -1);
  phase(Kind::kPhaseEnd, "stop", 12);
  phase(Kind::kPhaseEnd, "frame-stop", -1);
  phase(Kind::kPhaseEnd, "start", 3);
  phase(Kind::kPhaseBegin, "stop", -1);
  phase(Kind::kPhaseBegin, "start", -1);
  EXPECT_EQ(
      "frame-stop 1..4 -1; stop 2..3 12; start -2999995..5 3; stop 6..-1 -1; start 7..-1 -1; ",
      Text(run.Phases()));
  EXPECT_EQ(&run.Phases()[3], run.FindPhase("stop"));
  EXPECT_EQ(&run.Phases()[4], run.FindPhase("start"));
  EXPECT_EQ(nullptr, run.FindPhase("frame-init"));
  phase(Kind::kPhaseEnd, "start", 1);
  phase(Kind::kPhaseEnd, "start", 2);
  EXPECT_EQ(
      "frame-stop 1..4 -1; stop 2..3 12; start -2999995..5 3; stop 6..-1 -1; start 7..8 1; start "
      "-1999991..9 2; ",
      Text(run.Phases()));
}

TEST_F(RunStates, HoldWhatTheHostSaid) {
  EXPECT_FALSE(run.Up() || run.Crash() || run.End());
  for (const char* text : {"first", "second"}) {
    for (const Kind kind :
         {Kind::kUp, Kind::kStopRequest, Kind::kFinding, Kind::kCrash, Kind::kEnd}) {
      Apply(kind, Result::kNone, text);
    }
  }
  EXPECT_EQ("second", run.Up()->text);
  EXPECT_EQ("first", run.Crash()->text);
  EXPECT_EQ("second", run.End()->text);
  ASSERT_EQ(2U, run.StopRequests().size());
  EXPECT_EQ("firstsecond", run.StopRequests()[0].text + run.StopRequests()[1].text);
  ASSERT_EQ(2U, run.Findings().size());
  EXPECT_EQ("firstsecond", run.Findings()[0].text + run.Findings()[1].text);
}

}  // namespace
