#include "workbench/record/RunEventSource.h"

#include <gtest/gtest.h>

#include <map>
#include <sstream>

namespace {

using FrameKind = FrameEvent::Kind;

const char* ResultText(RunEvent::Result result) {
  switch (result) {
    case RunEvent::Result::kOk:
      return " ok";
    case RunEvent::Result::kFailed:
      return " failed";
    case RunEvent::Result::kNotLoaded:
      return " not-loaded";
    case RunEvent::Result::kRefused:
      return " refused";
    default:
      return "";
  }
}

const char* KindText(RunEvent::Kind kind) {
  static const std::map<RunEvent::Kind, const char*> texts = {
      {RunEvent::Kind::kPhaseBegin, "phase-begin"},
      {RunEvent::Kind::kPhaseEnd, "phase-end"},
      {RunEvent::Kind::kReady, "ready"},
      {RunEvent::Kind::kPosted, "posted"},
      {RunEvent::Kind::kTaskBegin, "task-begin"},
      {RunEvent::Kind::kLoadBegin, "load-begin"},
      {RunEvent::Kind::kLoadEnd, "load-end"},
      {RunEvent::Kind::kInitBegin, "init-begin"},
      {RunEvent::Kind::kInitEnd, "init-end"},
      {RunEvent::Kind::kUnInitBegin, "uninit-begin"},
      {RunEvent::Kind::kUnInitEnd, "uninit-end"},
      {RunEvent::Kind::kCounted, "counted"},
      {RunEvent::Kind::kTaskEnd, "task-end"}};
  return texts.at(kind);
}

/// A line "@time/thread kind phase plugin result #task ms count: text" for each event, without the
/// fields that have no value.
std::string Text(const std::vector<RunEvent>& events) {
  std::ostringstream text;
  for (const RunEvent& event : events) {
    text << "@" << event.nanoseconds << "/" << event.thread << " " << KindText(event.kind);
    if (!event.phase.empty()) text << " " << event.phase;
    if (!event.plugin.empty()) text << " " << event.plugin;
    text << ResultText(event.result);
    if (event.task != 0) text << " #" << event.task;
    if (event.milliseconds != -1) text << " " << event.milliseconds << "ms";
    if (event.number != -1) text << " count " << event.number;
    if (!event.text.empty()) text << ": " << event.text;
    text << "\n";
  }
  return text.str();
}

FrameEvent Line(FrameKind kind, const std::string& plugin = "", std::int64_t milliseconds = -1,
                std::int64_t number = -1) {
  FrameEvent event;
  event.kind = kind;
  event.plugin = plugin;
  event.milliseconds = milliseconds;
  event.number = number;
  return event;
}

FrameEvent Path(FrameKind kind, const std::string& path, std::int64_t number = -1) {
  FrameEvent event = Line(kind, "", -1, number);
  event.path = path;
  return event;
}

FrameEvent Reason(FrameKind kind, const std::string& reason) {
  FrameEvent event = Line(kind);
  event.reason = reason;
  return event;
}

PluginHead Head(const std::string& id, const std::vector<std::string>& dependsOn = {},
                const std::string& kind = "server") {
  PluginHead head;
  head.id = id;
  head.kind = kind;
  head.dependsOn = dependsOn;
  return head;
}

class EventSource : public testing::Test {
 protected:
  /// Each call is one nanosecond later than the previous one.
  std::string Frame(const FrameEvent& event, std::uint64_t thread = 1) {
    return Text(source.OnFrameEvent({++now, thread}, event));
  }

  std::string Frame(FrameKind kind, const std::string& plugin = "", std::uint64_t thread = 1) {
    return Frame(Line(kind, plugin), thread);
  }

  /// All events of `plugin` up to the begin of its Init.
  void BeginInit(const std::string& plugin, std::uint64_t thread = 1) {
    Frame(FrameKind::kLoadTaskBegin, plugin, thread);
    Frame(Path(FrameKind::kLoadBegin, "/p/" + plugin + ".dll"), thread);
    Frame(Path(FrameKind::kLoadSucceeded, "/p/" + plugin + ".dll"), thread);
    Frame(FrameKind::kInitBegin, plugin, thread);
    now = 0;
  }

  void BeginUnInit(const std::string& plugin) {
    Frame(FrameKind::kUnloadTaskBegin, plugin);
    Frame(FrameKind::kUnInitBegin, plugin);
    now = 0;
  }

  /// The end of an Init that is running.
  std::string EndInit(FrameKind kind, const std::string& plugin = "a") {
    return Frame(Line(kind, plugin, 7));
  }

  RunEventSource source;
  std::int64_t now = 0;
};

TEST_F(EventSource, ReportsAPluginsStartStepByStepWithItsTask) {
  EXPECT_EQ("@1/5 posted #3\n", Text(source.OnTaskPosted({++now, 5}, 3)));
  EXPECT_EQ("@2/1 task-begin #3\n", Text(source.OnTaskBegun({++now, 1}, 3)));
  EXPECT_EQ("@3/1 load-begin a #3\n", Frame(FrameKind::kLoadTaskBegin, "a"));
  EXPECT_EQ("", Frame(Path(FrameKind::kLoadBegin, "/p/a.dll")));
  EXPECT_EQ("@5/1 load-end a ok\n", Frame(Path(FrameKind::kLoadSucceeded, "/p/a.dll")));
  EXPECT_EQ("@6/1 init-begin a\n", Frame(FrameKind::kInitBegin, "a"));
  EXPECT_EQ("@7/1 init-end a ok 7ms\n", EndInit(FrameKind::kInitSucceeded));
  EXPECT_EQ("@8/1 counted start a ok count 4\n", Frame(Line(FrameKind::kStartCounted, "a", -1, 4)));
  EXPECT_EQ("@9/1 task-end #3\n", Text(source.OnTaskEnded({++now, 1}, 3)));
}

TEST_F(EventSource, ReportsAPluginsStopBeforeItsLibraryIsUnmapped) {
  source.OnTaskBegun({++now, 1}, 3);
  EXPECT_EQ("", Frame(FrameKind::kUnloadTaskBegin, "a"));
  EXPECT_EQ("@3/1 uninit-begin a\n", Frame(FrameKind::kUnInitBegin, "a"));
  EXPECT_EQ("", Frame(Line(FrameKind::kUnInitEnd, "a", 9)));
  EXPECT_EQ("@5/1 uninit-end a ok 9ms\n", Frame(FrameKind::kFreeBegin));
  EXPECT_EQ("", Frame(FrameKind::kFreeEnd));
  EXPECT_EQ("@7/1 counted stop a ok count 2\n", Frame(Line(FrameKind::kStopCounted, "a", -1, 2)));
}

TEST_F(EventSource, ReportsTheEndOfAnUnInitWhoseLibraryStaysMapped) {
  BeginUnInit("a");
  Frame(Line(FrameKind::kUnInitEnd, "a", 9));
  EXPECT_EQ("@2/1 uninit-end a ok 9ms\n@2/1 counted stop a ok count 2\n",
            Frame(Line(FrameKind::kStopCounted, "a", -1, 2)));
}

TEST_F(EventSource, ReportsThePhasesWithTheFramesTimes) {
  const struct {
    FrameKind begin;
    FrameKind end;
    const char* name;
  } phases[] = {
      {FrameKind::kPlatformStartBegin, FrameKind::kPlatformStarted, "platform-start"},
      {FrameKind::kPluginsStartBegin, FrameKind::kPluginsStartEnd, "start"},
      {FrameKind::kFrameStopBegin, FrameKind::kFrameStopEnd, "frame-stop"},
      {FrameKind::kPluginsStopBegin, FrameKind::kPluginsStopEnd, "stop"},
      {FrameKind::kPlatformStopBegin, FrameKind::kPlatformStopEnd, "platform-stop"},
      {FrameKind::kFrameUnInitBegin, FrameKind::kFrameUnInitEnd, "frame-uninit"},
  };
  for (const auto& phase : phases) {
    now = 0;
    EXPECT_EQ(std::string("@1/1 phase-begin ") + phase.name + "\n", Frame(phase.begin));
    EXPECT_EQ(std::string("@2/1 phase-end ") + phase.name + " 12ms\n",
              Frame(Line(phase.end, "", 12)));
  }
}

// ---------------------------------------------------------------- reasons

TEST_F(EventSource, GivesTheLoadersWordsWithoutThePathBeforeThem) {
  for (const char* message : {"/p: x/a.dll: cannot open", "other: cannot open", "cannot open"}) {
    Frame(FrameKind::kLoadTaskBegin, "a");
    Frame(Path(FrameKind::kLoadBegin, "/p: x/a.dll"));
    EXPECT_EQ("", Text(source.OnLoaderMessage({1, 1}, message)));
    now = 0;
    EXPECT_EQ("@1/1 load-end a failed: cannot open\n",
              Frame(Path(FrameKind::kLoadFailed, "/p: x/a.dll", 126)));
  }
  EXPECT_EQ("@2/1 counted start a not-loaded count 3\n",
            Frame(Line(FrameKind::kNotLoadedCounted, "a", -1, 3)));
}

TEST_F(EventSource, GivesThePathAndTheCodeInWordsWhenTheLoaderSaysNothing) {
  const auto reason = [this](std::int64_t code) {
    Frame(FrameKind::kLoadTaskBegin, "a");
    Frame(Path(FrameKind::kLoadBegin, "/p/a.dll"));
    now = 0;
    return Frame(Path(FrameKind::kLoadFailed, "/p/a.dll", code));
  };
  const std::string begin = "@1/1 load-end a failed: /p/a.dll ";
  EXPECT_EQ(begin + "may not be read (error 5)\n", reason(5));
  EXPECT_EQ(begin + "is missing, or a library that it needs is (error 126)\n", reason(126));
  EXPECT_EQ(begin + "needs a symbol that no library offers (error 127)\n", reason(127));
  EXPECT_EQ(begin + "is no library for this machine (error 193)\n", reason(193));
  EXPECT_EQ(begin + "cannot be loaded (error 1114)\n", reason(1114));
}

TEST_F(EventSource, TakesNoLoaderMessageOfAnEarlierLoadOrAnotherThread) {
  Frame(FrameKind::kLoadTaskBegin, "a");
  Frame(Path(FrameKind::kLoadBegin, "/p/a.dll"));
  source.OnLoaderMessage({1, 1}, "/p/a.dll: earlier");
  Frame(Path(FrameKind::kLoadBegin, "/p/a.dll"));
  source.OnLoaderMessage({1, 2}, "/p/a.dll: another thread's");
  now = 0;
  EXPECT_EQ("@1/1 load-end a failed: /p/a.dll cannot be loaded (error 1)\n",
            Frame(Path(FrameKind::kLoadFailed, "/p/a.dll", 1)));
}

TEST_F(EventSource, SaysHowAnInitFailed) {
  const auto reason = [this](const FrameEvent& line) {
    BeginInit("a");
    Frame(line);
    return EndInit(FrameKind::kInitFailed);
  };
  const std::string begin = "@2/1 init-end a failed 7ms: its ";
  EXPECT_EQ(begin + "Init threw: no port\n", reason(Reason(FrameKind::kInitThrew, "no port")));
  EXPECT_EQ(begin + "Init threw an exception without a text\n",
            reason(Reason(FrameKind::kInitThrew, "")));
  EXPECT_EQ(begin + "Init threw something that is no exception object\n",
            reason(Line(FrameKind::kInitThrewNoException)));
  EXPECT_EQ(begin + "library exports no Init\n", reason(Line(FrameKind::kInitMissing)));
  BeginInit("a");
  EXPECT_EQ("@1/1 init-end a failed 7ms: its Init returned false\n",
            EndInit(FrameKind::kInitFailed));
  EXPECT_EQ("@2/1 counted start a failed count 1\n",
            Frame(Line(FrameKind::kStartFailedCounted, "a", -1, 1)));
}

TEST_F(EventSource, GivesThePluginsLastOwnLineWhenItsInitReturnedFalse) {
  BeginInit("a");
  source.OnOtherLine({1, 1}, "[a] opening the port");
  source.OnOtherLine({1, 1}, "[a] the port is taken");
  source.OnOtherLine({1, 2}, "[b] of another thread");
  EXPECT_EQ("@1/1 init-end a failed 7ms: its Init returned false: [a] the port is taken\n",
            EndInit(FrameKind::kInitFailed));
}

TEST_F(EventSource, GivesNoLineFromOutsideOfInit) {
  source.OnOtherLine({1, 1}, "before any turn");
  Frame(FrameKind::kLoadTaskBegin, "a");
  Frame(Path(FrameKind::kLoadBegin, "/p/a.dll"));
  source.OnOtherLine({1, 1}, "while it is loaded");
  Frame(Path(FrameKind::kLoadSucceeded, "/p/a.dll"));
  Frame(FrameKind::kInitBegin, "a");
  now = 0;
  EXPECT_EQ("@1/1 init-end a failed 7ms: its Init returned false\n",
            EndInit(FrameKind::kInitFailed));
}

TEST_F(EventSource, TakesNoLoaderMessageForAPluginsOwnLineNorTheOtherWayRound) {
  Frame(FrameKind::kLoadTaskBegin, "a");
  Frame(Path(FrameKind::kLoadBegin, "/p/a.dll"));
  source.OnLoaderMessage({1, 1}, "/p/a.dll: a warning");
  Frame(Path(FrameKind::kLoadSucceeded, "/p/a.dll"));
  Frame(FrameKind::kInitBegin, "a");
  source.OnLoaderMessage({1, 1}, "/p/other.dll: cannot open");
  now = 0;
  EXPECT_EQ("@1/1 init-end a failed 7ms: its Init returned false\n",
            EndInit(FrameKind::kInitFailed));
  Frame(FrameKind::kLoadTaskBegin, "b");
  Frame(Path(FrameKind::kLoadBegin, "/p/b.dll"));
  source.OnOtherLine({1, 1}, "[b] a static constructor: speaks");
  now = 0;
  EXPECT_EQ("@1/1 load-end b failed: /p/b.dll cannot be loaded (error 1)\n",
            Frame(Path(FrameKind::kLoadFailed, "/p/b.dll", 1)));
}

TEST_F(EventSource, GivesAThrownReasonAloneWhateverThePluginLogged) {
  BeginInit("a");
  source.OnOtherLine({1, 1}, "[a] opening the port");
  Frame(Reason(FrameKind::kInitThrew, "no port"));
  EXPECT_EQ("@2/1 init-end a failed 7ms: its Init threw: no port\n",
            EndInit(FrameKind::kInitFailed));
}

TEST_F(EventSource, CarriesNoReasonToTheNextTurnOfTheThread) {
  BeginInit("a");
  Frame(FrameKind::kInitMissing);
  EndInit(FrameKind::kInitFailed);
  Frame(FrameKind::kStartFailedCounted, "a");
  BeginInit("b");
  EXPECT_EQ("@1/1 init-end b failed 7ms: its Init returned false\n",
            EndInit(FrameKind::kInitFailed, "b"));
}

TEST_F(EventSource, CarriesNoReasonFromATurnWithoutAnEnd) {
  BeginInit("a");
  Frame(FrameKind::kInitMissing);
  BeginInit("b");
  EXPECT_EQ("@1/1 init-end b failed 7ms: its Init returned false\n",
            EndInit(FrameKind::kInitFailed, "b"));
}

TEST_F(EventSource, SaysHowAStopWasRefused) {
  const auto refused = [this](const FrameEvent& line) {
    BeginUnInit("a");
    Frame(line);
    const std::string ended = Frame(Line(FrameKind::kUnInitEnd, "a", 9));
    return ended + Frame(Line(FrameKind::kStopRefusedCounted, "a", -1, 2));
  };
  const std::string begin = "@2/1 uninit-end a refused 9ms: its ";
  const std::string end = "\n@3/1 counted stop a refused count 2\n";
  EXPECT_EQ(begin + "UnInit threw: busy" + end, refused(Reason(FrameKind::kUnInitThrew, "busy")));
  EXPECT_EQ(begin + "UnInit threw an exception without a text" + end,
            refused(Reason(FrameKind::kUnInitThrew, "")));
  EXPECT_EQ(begin + "UnInit threw something that is no exception object" + end,
            refused(Line(FrameKind::kUnInitThrewNoException)));
  EXPECT_EQ(begin + "library exports no UnInit" + end, refused(Line(FrameKind::kUnInitMissing)));
  BeginUnInit("a");
  EXPECT_EQ("", Frame(Line(FrameKind::kUnInitEnd, "a", 9)));
  EXPECT_EQ(
      "@2/1 uninit-end a refused 9ms: its UnInit returned false\n"
      "@2/1 counted stop a refused count 2\n",
      Frame(Line(FrameKind::kStopRefusedCounted, "a", -1, 2)));
}

TEST_F(EventSource, SaysOfAStartThatWasGivenUpWhatEndedIt) {
  BeginInit("a");
  FrameEvent event = Line(FrameKind::kStartAbandoned, "a", -1, 2);
  event.reason = "std::bad_alloc";
  EXPECT_EQ("@1/1 counted start a failed count 2: its start task threw: std::bad_alloc\n",
            Frame(event));
}

TEST_F(EventSource, WritesEveryReasonAsOneLine) {
  BeginInit("a");
  Frame(Reason(FrameKind::kInitThrew, std::string("two\nlines\t\x7f\x1b[31m\0.\xff", 19)));
  EXPECT_EQ(
      "@2/1 init-end a failed 7ms: its Init threw: "
      "two\\x0alines\\x09\\x7f\\x1b[31m\\x00.\xff\n",
      EndInit(FrameKind::kInitFailed));
}

TEST_F(EventSource, TakesReasonsThatWereFoundElsewhere) {
  Frame(FrameKind::kLoadTaskBegin, "a");
  Frame(Path(FrameKind::kLoadBegin, "/a.dll"));
  source.OnLoaderMessage({1, 1}, "/a.dll: no");
  now = 0;
  FrameEvent failed = Path(FrameKind::kLoadFailed, "/a.dll", 126);
  failed.reason = "/a.dll\nis empty";
  EXPECT_EQ("@1/1 load-end a failed: /a.dll\\x0ais empty\n", Frame(failed));
  BeginInit("a");
  Frame(Reason(FrameKind::kInitMissing, "exported as _Z4Initv"));
  EXPECT_EQ("@2/1 init-end a failed 7ms: its library exports no Init; it is exported as _Z4Initv\n",
            EndInit(FrameKind::kInitFailed));
}

// ---------------------------------------------------------------- ready plugins

TEST_F(EventSource, ReportsReadyPluginsFromTheStartsBegin) {
  source.SetPlugins({Head("c", {"a", "b"}), Head("a"), Head("b", {"a"}), Head("x", {}, "driver"),
                     Head("y", {}, "executable"), Head("s", {}, "platform")});
  EXPECT_EQ("@1/1 phase-begin start\n@1/1 ready start a\n@1/1 ready start s\n",
            Frame(FrameKind::kPluginsStartBegin));
  EXPECT_EQ("@2/1 counted start a failed\n@2/1 ready start b: a\n",
            Frame(FrameKind::kStartFailedCounted, "a"));
  EXPECT_EQ("@3/1 counted start b not-loaded\n@3/1 ready start c: b\n",
            Frame(FrameKind::kNotLoadedCounted, "b"));
  EXPECT_EQ("@4/1 counted start c ok\n", Frame(FrameKind::kStartCounted, "c"));
}

TEST_F(EventSource, ReportsReadyPluginsOfAStopDependentsFirst) {
  source.SetPlugins({Head("c", {"a", "b"}), Head("a"), Head("b", {"a"}), Head("s")});
  EXPECT_EQ("@1/1 phase-begin stop\n@1/1 ready stop c\n@1/1 ready stop s\n",
            Frame(FrameKind::kPluginsStopBegin));
  EXPECT_EQ("@2/1 counted stop c refused\n@2/1 ready stop b: c\n",
            Frame(FrameKind::kStopRefusedCounted, "c"));
  EXPECT_EQ("@3/1 counted stop b not-loaded\n@3/1 ready stop a: b\n",
            Frame(FrameKind::kNothingToStopCounted, "b"));
}

TEST_F(EventSource, CountsADependencyThatIsNamedTwiceOnceAndOneOfNoModelNever) {
  source.SetPlugins({Head("b", {"a", "a", "nowhere"}), Head("a"), Head("b", {"other"})});
  EXPECT_EQ("@1/1 phase-begin start\n@1/1 ready start a\n", Frame(FrameKind::kPluginsStartBegin));
  EXPECT_EQ("@2/1 counted start a ok\n@2/1 ready start b: a\n",
            Frame(FrameKind::kStartCounted, "a"));
}

TEST_F(EventSource, NeverReportsPluginsOfACycleOrBehindItAsReady) {
  source.SetPlugins({Head("a", {"b"}), Head("b", {"a"}), Head("self", {"self"}),
                     Head("behind", {"a"}), Head("free")});
  EXPECT_EQ("@1/1 phase-begin start\n@1/1 ready start free\n",
            Frame(FrameKind::kPluginsStartBegin));
  EXPECT_EQ("@2/1 counted start free ok\n", Frame(FrameKind::kStartCounted, "free"));
}

TEST_F(EventSource, ReportsReadyBeforeALoadWhoseDependencyIsNotCountedYet) {
  source.SetPlugins({Head("a"), Head("b"), Head("c", {"a", "b"})});
  Frame(FrameKind::kPluginsStartBegin);
  BeginInit("b", 'b');
  Frame(Line(FrameKind::kInitSucceeded, "b", 1), 'b');
  BeginInit("a", 'a');
  Frame(Line(FrameKind::kInitSucceeded, "a", 1), 'a');
  now = 0;
  EXPECT_EQ("@1/3 ready start c: a\n@1/3 load-begin c\n", Frame(FrameKind::kLoadTaskBegin, "c", 3));
  EXPECT_EQ("@2/98 counted start b ok\n", Frame(FrameKind::kStartCounted, "b", 'b'));
  EXPECT_EQ("@3/97 counted start a ok\n", Frame(FrameKind::kStartCounted, "a", 'a'));
}

TEST_F(EventSource, NamesTheLastDependencyThatEndedNotAnyOtherPlugin) {
  source.SetPlugins({Head("a"), Head("b"), Head("c", {"a"})});
  Frame(FrameKind::kPluginsStartBegin);
  Frame(FrameKind::kLoadTaskBegin, "a", 1);
  Frame(Path(FrameKind::kLoadFailed, "/p/a.dll", 126), 1);
  BeginInit("b", 2);
  Frame(Line(FrameKind::kInitSucceeded, "b", 1), 2);
  now = 0;
  EXPECT_EQ("@1/3 ready start c: a\n@1/3 load-begin c\n", Frame(FrameKind::kLoadTaskBegin, "c", 3));
}

TEST_F(EventSource, NamesNoDependencyWhenNoneWasSeenToEnd) {
  source.SetPlugins({Head("a"), Head("b"), Head("c", {"a"})});
  Frame(FrameKind::kPluginsStartBegin);
  BeginInit("b", 2);
  Frame(Line(FrameKind::kInitSucceeded, "b", 1), 2);
  now = 0;
  EXPECT_EQ("@1/3 ready start c\n@1/3 load-begin c\n", Frame(FrameKind::kLoadTaskBegin, "c", 3));
}

TEST_F(EventSource, ReportsReadyBeforeAnUnloadWhoseDependentIsNotCountedYet) {
  source.SetPlugins({Head("a"), Head("b", {"a"})});
  Frame(FrameKind::kPluginsStopBegin);
  BeginUnInit("b");
  Frame(Line(FrameKind::kUnInitEnd, "b", 9));
  EXPECT_EQ("@2/2 ready stop a: b\n", Frame(FrameKind::kUnloadTaskBegin, "a", 2));
  EXPECT_EQ("@3/1 uninit-end b ok 9ms\n@3/1 counted stop b ok\n",
            Frame(FrameKind::kStopCounted, "b"));
}

TEST_F(EventSource, ReportsNobodyAsReadyAfterAStartThatWasStopped) {
  source.SetPlugins({Head("late"), Head("b", {"late"})});
  Frame(FrameKind::kPluginsStartBegin);
  BeginInit("late");
  Frame(FrameKind::kPluginsStartEnd, "", 9);
  now = 0;
  EXPECT_EQ("@1/1 init-end late ok 7ms\n", EndInit(FrameKind::kInitSucceeded, "late"));
  EXPECT_EQ("@2/1 counted start late ok\n", Frame(FrameKind::kStartCounted, "late"));
}

TEST_F(EventSource, ReportsNobodyAsReadyAfterTheStop) {
  source.SetPlugins({Head("a"), Head("b", {"a"})});
  Frame(FrameKind::kPluginsStopBegin);
  Frame(FrameKind::kPluginsStopEnd, "", 9);
  EXPECT_EQ("@3/1 counted stop b ok\n", Frame(FrameKind::kStopCounted, "b"));
}

TEST_F(EventSource, ReportsALateFinisherBesideItsStopOnAnotherThread) {
  source.SetPlugins({Head("late")});
  Frame(FrameKind::kPluginsStartBegin);
  BeginInit("late", 1);
  source.OnOtherLine({1, 1}, "[late] waits");
  Frame(FrameKind::kPluginsStartEnd, "", 9);
  Frame(FrameKind::kPluginsStopBegin, "", 9);
  now = 0;
  EXPECT_EQ("", Frame(FrameKind::kUnloadTaskBegin, "late", 2));
  EXPECT_EQ("@2/2 counted stop late not-loaded\n",
            Frame(FrameKind::kNothingToStopCounted, "late", 2));
  EXPECT_EQ("@3/1 init-end late failed 7ms: its Init returned false: [late] waits\n",
            EndInit(FrameKind::kInitFailed, "late"));
  EXPECT_EQ("@4/1 counted start late failed\n", Frame(FrameKind::kStartFailedCounted, "late"));
}

TEST_F(EventSource, TakesARecordWithoutANameAsOneThatIsNeverCounted) {
  source.SetPlugins({Head("", {}, "platform"), Head("a")});
  EXPECT_EQ("@1/1 phase-begin start\n@1/1 ready start\n@1/1 ready start a\n",
            Frame(FrameKind::kPluginsStartBegin));
  EXPECT_EQ("@2/1 load-begin\n", Frame(FrameKind::kLoadTaskBegin, ""));
  EXPECT_EQ("@3/1 counted start not-loaded\n", Frame(FrameKind::kNotLoadedCounted, ""));
  Frame(FrameKind::kPluginsStopBegin);
  EXPECT_EQ("", Frame(FrameKind::kUnloadTaskBegin, ""));
  EXPECT_EQ("", Frame(FrameKind::kNamelessNotCounted));
  EXPECT_EQ("", Frame(FrameKind::kLoadSucceeded));
}

TEST_F(EventSource, ReportsTheStepsOfAnUnknownPluginButNoReady) {
  source.SetPlugins({Head("a")});
  Frame(FrameKind::kPluginsStartBegin);
  now = 0;
  EXPECT_EQ("@1/1 load-begin other\n", Frame(FrameKind::kLoadTaskBegin, "other"));
  EXPECT_EQ("@2/1 counted start other ok\n", Frame(FrameKind::kStartCounted, "other"));
}

// ---------------------------------------------------------------- threads and tasks

TEST_F(EventSource, ForgetsATaskWithoutAnEndWhenTheThreadBeginsTheNext) {
  source.OnTaskBegun({1, 1}, 3);
  BeginInit("a");
  Frame(FrameKind::kInitMissing);
  EXPECT_EQ("@2/1 task-begin #4\n", Text(source.OnTaskBegun({2, 1}, 4)));
  now = 0;
  EXPECT_EQ("", Frame(Path(FrameKind::kLoadBegin, "/p/a.dll")));
  EXPECT_EQ("", Frame(Path(FrameKind::kLoadSucceeded, "/p/a.dll")));
  EXPECT_EQ("@3/1 load-begin b #4\n", Frame(FrameKind::kLoadTaskBegin, "b"));
}

TEST_F(EventSource, ForgetsATaskAndItsPluginAtItsEnd) {
  source.OnTaskBegun({1, 1}, 3);
  BeginInit("a");
  source.OnTaskEnded({2, 1}, 3);
  EXPECT_EQ("", Frame(Path(FrameKind::kLoadFailed, "/p/a.dll", 126)));
  EXPECT_EQ("@2/1 load-begin b\n", Frame(FrameKind::kLoadTaskBegin, "b"));
}

TEST_F(EventSource, EndsAPluginsTurnWhenItIsCounted) {
  BeginInit("a");
  EndInit(FrameKind::kInitSucceeded);
  Frame(FrameKind::kStartCounted, "a");
  EXPECT_EQ("", Frame(FrameKind::kLoadSucceeded));
}

TEST_F(EventSource, MakesNoEventOfALineThatNamesNoPluginOnAThreadWithoutOne) {
  for (const FrameKind kind :
       {FrameKind::kLoadBegin, FrameKind::kLoadSucceeded, FrameKind::kLoadFailed,
        FrameKind::kInitThrew, FrameKind::kInitThrewNoException, FrameKind::kInitMissing,
        FrameKind::kUnInitThrew, FrameKind::kUnInitThrewNoException, FrameKind::kUnInitMissing,
        FrameKind::kFreeBegin, FrameKind::kFreeEnd, FrameKind::kNamelessNotCounted}) {
    EXPECT_EQ("", Frame(kind));
  }
  EXPECT_EQ("", Text(source.OnLoaderMessage({1, 1}, "x")) + Text(source.OnOtherLine({1, 1}, "x")));
}

TEST_F(EventSource, TakesThePluginOfALineWithoutTheBeginOfItsTurn) {
  EXPECT_EQ("@1/1 init-begin a\n", Frame(FrameKind::kInitBegin, "a"));
  Frame(FrameKind::kInitMissing);
  EXPECT_EQ("@3/1 init-end b failed 7ms: its Init returned false\n",
            EndInit(FrameKind::kInitFailed, "b"));
  EXPECT_EQ("@4/1 uninit-begin c\n", Frame(FrameKind::kUnInitBegin, "c"));
  EXPECT_EQ("@5/1 counted stop d ok\n", Frame(FrameKind::kStopCounted, "d"));
}

}  // namespace
