#include "workbench/report/ReportText.h"

#include <gtest/gtest.h>

#include "tests/support/RunText.h"

namespace {

constexpr char kSlow[] = R"(
    config:
    storage: config
    video: storage
    map: storage
    start 0 1600
    stop 3000 3600
    config start 0 1 1 40 41 failed its Init returned false
    storage start 200 203 203 340 341
    map start 400 402 402 410 411
    video start 400 401 401 1500 1501.5
    video stop 3000 3000 3000 3001 3001 refused its UnInit returned false
    map stop 3000 3000 3000 3000.5 3000.5
    storage stop 3200 3200 3200 3210 3210
    config stop 3400 3400 - - 3401 not-loaded)";

RunEvent Event(RunEvent::Kind kind, std::int64_t ms, const std::string& text) {
  RunEvent event;
  event.kind = kind;
  event.nanoseconds = 1'000'000'000 + ms * 1'000'000;
  event.text = text;
  return event;
}

TEST(ReportTexts, ShowWhereTheTimeWent) {
  RecordedRun run = RunFromText(kSlow);
  run.record.head.product = "NVX";
  run.record.head.productVersion = "2.7";
  run.record.head.path = "/srv/site/bin/";
  run.record.events.push_back(Event(RunEvent::Kind::kEnd, 3201, "degraded: 3 of 4 started"));
  EXPECT_EQ(
      "NVX 2.7, run of 2026-11-21T18:46:59.123Z, /srv/site/bin/\n"
      "Ended: degraded: 3 of 4 started\n"
      "From the record run.jsonl\n"
      "\n"
      "Phases, in ms\n"
      "  start of the plugins        1600.0\n"
      "    stop of the plugins        600.0\n"
      "\n"
      "The start of the plugins: 1600.0 ms\n"
      "  1600.0 ms = critical path 1278.5 (79.9%) + waiting for the next look 316.5 (19.8%) + idle "
      "5.0 (0.3%)\n"
      "  all plugins together worked 1287.5 ms, 0.8 at the same time on average\n"
      "\n"
      "Critical path of the start, in ms: each plugin waits for the one above it, then for the "
      "next "
      "look and for a thread (idle)\n"
      "     begins      look      idle     works   share  plugin\n"
      "        1.0       0.0       1.0      40.0    2.5%  config\n"
      "      203.0     159.0       3.0     138.0    8.6%  storage\n"
      "      401.0      59.0       1.0    1100.5   68.8%  video\n"
      "                 98.5                              until the frame looked\n"
      "\n"
      "Least slack beside it, in ms: so much later a plugin could have ended without moving it\n"
      "      slack     works  plugin\n"
      "     1090.5       9.0  map\n"
      "\n"
      "The stop of the plugins: 600.0 ms\n"
      "  600.0 ms = critical path 12.0 (2.0%) + waiting for the next look 588.0 (98.0%) + idle 0.0 "
      "(0.0%)\n"
      "  all plugins together worked 12.5 ms, 0.0 at the same time on average\n"
      "\n"
      "Critical path of the stop, in ms: each plugin waits for the one above it, then for the next "
      "look and for a thread (idle)\n"
      "     begins      look      idle     works   share  plugin\n"
      "        0.0       0.0       0.0       1.0    0.2%  video\n"
      "      200.0     199.0       0.0      10.0    1.7%  storage\n"
      "      400.0     190.0       0.0       1.0    0.2%  config\n"
      "                199.0                              until the frame looked\n"
      "\n"
      "Least slack beside it, in ms: so much later a plugin could have ended without moving it\n"
      "      slack     works  plugin\n"
      "        0.5       0.5  map\n"
      "\n"
      "Failures\n"
      "  config: INIT FAILED: its Init returned false\n"
      "  video: STOP REFUSED: its UnInit returned false\n"
      "\n"
      "Started although a dependency had failed\n"
      "  storage, which depends on config\n",
      ReportText(MakeTimeline(std::move(run)), {}));
}

TEST(ReportTexts, ShowWhoNeverReturnedAndWhoWaits) {
  EXPECT_EQ(
      "A product, run of 2026-11-21T18:46:59.123Z\n"
      "The record has no end: the run still goes on, or its process was killed\n"
      "From the record run.jsonl\n"
      "\n"
      "Phases, in ms\n"
      "  start of the plugins     not ended\n"
      "\n"
      "The start of the plugins: 900.0 ms until the record ends; it has not ended\n"
      "  900.0 ms = critical path 900.0 (100.0%) + waiting for the next look 0.0 (0.0%) + idle 0.0 "
      "(0.0%)\n"
      "  all plugins together worked 910.0 ms, 1.0 at the same time on average\n"
      "\n"
      "Critical path of the start, in ms: each plugin waits for the one above it, then for the "
      "next "
      "look and for a thread (idle)\n"
      "     begins      look      idle     works   share  plugin\n"
      "        0.0       0.0       0.0     900.0  100.0%  hangs, which has not ended\n"
      "\n"
      "Least slack beside it, in ms: so much later a plugin could have ended without moving it\n"
      "      slack     works  plugin\n"
      "        0.0      10.0  quick\n"
      "\n"
      "Never returned\n"
      "  hangs, in Init for 900.0 ms when the record ended; 2 plugins wait for it: a and b\n"
      "\n"
      "Never begun\n"
      "  x and y, which wait for each other\n",
      ReportText(MakeTimeline(RunFromText(R"(
        hangs:
        a: hangs
        b: a
        quick:
        x: y
        y: x
        start 0 -
        hangs start 0 0 0 - -
        quick start 0 890 890 900 900)")),
                 {}));
}

/// The run as a log without the product's dependencies tells of it.
RecordedRun LogFromText(const std::string& text) {
  RecordedRun run = RunFromText(text);
  run.source = RecordedRun::Source::kLog;
  run.resolution = 1'000'000;
  run.knowsTasks = run.knowsThreads = run.knowsEdges = false;
  return run;
}

TEST(ReportTexts, SayWhatALogDoesNotKnow) {
  RecordedRun run = LogFromText("a:\nstart 0 200\na start - 1 1 40 41");
  run.name = "hub.log";
  EXPECT_EQ(
      "A product, run of 2026-11-21T18:46:59.123Z\n"
      "A log does not say how a run ended\n"
      "From the log hub.log, whose times are exact to 1 ms; not known: when tasks were "
      "posted, "
      "threads and dependencies (--bin DIR gives them)\n"
      "\n"
      "Phases, in ms\n"
      "  start of the plugins           200\n"
      "\n"
      "The start of the plugins: 200 ms\n"
      "  critical path and waiting: not known, since the dependencies are not\n"
      "  all plugins together worked 40 ms, 0.2 at the same time on average\n",
      ReportText(MakeTimeline(std::move(run)), {}));
}

/// From the title of the phase on.
std::string FromTheStart(RecordedRun run) {
  const std::string text = ReportText(MakeTimeline(std::move(run)), {});
  return text.substr(text.find("The start of"));
}

TEST(ReportTexts, OfALogSayThatItEndsNotThatTheRunDoes) {
  RecordedRun run = LogFromText("hangs:\nlater:\nstart 0 -\nhangs start - 1 1 - -");
  EXPECT_EQ(
      "The start of the plugins: 1 ms until the log ends; it has not ended\n"
      "  critical path and waiting: not known, since the dependencies are not\n"
      "  all plugins together worked 0 ms, 0.0 at the same time on average\n"
      "\n"
      "Not returned in this log\n"
      "  hangs, in Init for 0 ms when the log ended\n"
      "\n"
      "Not begun in this log\n"
      "  later\n",
      FromTheStart(std::move(run)));
}

TEST(ReportTexts, OfARunThatGoesOnReachUntilNow) {
  RecordedRun run = RunFromText("hangs:\nx: x\nstart 0 -\nhangs start 0 0 0 - -");
  run.now = 1'000'000'000 + 5'000'000'000;
  const Timeline timeline = MakeTimeline(run);
  EXPECT_EQ("It still goes on", HowItEnded(timeline));
  EXPECT_EQ(
      "The start of the plugins: 5000.0 ms until now; it has not ended\n"
      "  5000.0 ms = critical path 5000.0 (100.0%) + waiting for the next look 0.0 (0.0%) + idle "
      "0.0 (0.0%)\n"
      "  all plugins together worked 5000.0 ms, 1.0 at the same time on average\n"
      "\n"
      "Critical path of the start, in ms: each plugin waits for the one above it, then for the "
      "next look and for a thread (idle)\n"
      "     begins      look      idle     works   share  plugin\n"
      "        0.0       0.0       0.0    5000.0  100.0%  hangs, which has not ended\n"
      "\n"
      "Not returned yet\n"
      "  hangs, in Init for 5000.0 ms by now\n"
      "\n"
      "Not begun yet\n"
      "  x, which waits for itself\n",
      FromTheStart(std::move(run)));
}

TEST(ReportTexts, OfAStoppedStartSayThatPluginsHadNotEnded) {
  EXPECT_EQ(
      "The start of the plugins: 200.0 ms, and not all of its plugins had ended\n"
      "  200.0 ms = critical path 200.0 (100.0%) + waiting for the next look 0.0 (0.0%) + idle 0.0 "
      "(0.0%)\n"
      "  all plugins together worked 200.0 ms, 1.0 at the same time on average\n"
      "\n"
      "Critical path of the start, in ms: each plugin waits for the one above it, then for the "
      "next look and for a thread (idle)\n"
      "     begins      look      idle     works   share  plugin\n"
      "        0.0       0.0       0.0     200.0  100.0%  slow\n"
      "\n"
      "The stop of the plugins: 200.0 ms\n"
      "  no plugin began\n"
      "  all plugins together worked 0.0 ms, 0.0 at the same time on average\n"
      "\n"
      "Never begun\n"
      "  next\n",
      FromTheStart(RunFromText(R"(
                slow:
                next: slow
                start 0 200
                slow start 0 0 0 300 300
                stop 200 400)")));
}

TEST(ReportTexts, OfAPhaseThatSkippedPluginsEndIdle) {
  EXPECT_EQ(
      "The start of the plugins: 200.0 ms, and not all of its plugins had ended\n"
      "  200.0 ms = critical path 50.0 (25.0%) + waiting for the next look 0.0 (0.0%) + idle 150.0 "
      "(75.0%)\n"
      "  all plugins together worked 50.0 ms, 0.2 at the same time on average\n"
      "\n"
      "Critical path of the start, in ms: each plugin waits for the one above it, then for the "
      "next look and for a thread (idle)\n"
      "     begins      look      idle     works   share  plugin\n"
      "        0.0       0.0       0.0      50.0   25.0%  a\n"
      "                          150.0                    until it ended without the plugins that "
      "never began\n"
      "\n"
      "Never begun\n"
      "  b\n",
      FromTheStart(RunFromText(R"(
                a:
                b: a
                start 0 200
                a start 0 0 0 50 50)")));
}

TEST(ReportTexts, SayThatAnInitIsOverButNotCounted) {
  EXPECT_EQ(
      "The start of the plugins: 5.0 ms until the record ends; it has not ended\n"
      "  5.0 ms = critical path 5.0 (100.0%) + waiting for the next look 0.0 (0.0%) + idle 0.0 "
      "(0.0%)\n"
      "  all plugins together worked 5.0 ms, 1.0 at the same time on average\n"
      "\n"
      "Critical path of the start, in ms: each plugin waits for the one above it, then for the "
      "next look and for a thread (idle)\n"
      "     begins      look      idle     works   share  plugin\n"
      "        0.0       0.0       0.0       5.0  100.0%  a, which has not ended\n"
      "\n"
      "Never returned\n"
      "  a, its Init over but not counted for 0.0 ms when the record ended\n",
      FromTheStart(RunFromText("a:\nstart 0 -\na start 0 0 0 5 -")));
}

TEST(ReportTexts, TellCyclesFromThoseThatWaitForThem) {
  EXPECT_EQ(
      "The start of the plugins: 0.0 ms until the record ends; it has not ended\n"
      "  no plugin began\n"
      "  all plugins together worked 0.0 ms, 0.0 at the same time on average\n"
      "\n"
      "Never begun\n"
      "  x and y, which wait for each other\n"
      "  self, which waits for itself\n"
      "  behind\n",
      FromTheStart(RunFromText(R"(
                behind: y
                x: y
                y: x
                self: self
                start 0 -)")));
}

TEST(ReportTexts, OfALogWithDependenciesHaveOneColumnForWaiting) {
  RecordedRun run =
      RunFromText("a:\nb: a\nstart 0 400\na start - 1 1 40 41\nb start - 202 202 300 300");
  run.resolution = 1'000'000;
  run.knowsTasks = false;
  const std::string text = ReportText(MakeTimeline(std::move(run)), {});
  EXPECT_EQ(
      "The start of the plugins: 400 ms\n"
      "  400 ms = critical path 138 (34.5%) + waiting for looks and threads 262 (65.5%)\n"
      "  all plugins together worked 138 ms, 0.3 at the same time on average\n"
      "\n"
      "Critical path of the start, in ms: each plugin waits for the one above it, then for a look "
      "and a thread\n"
      "     begins     waits     works   share  plugin\n"
      "          1         1        40   10.0%  a\n"
      "        202       161        98   24.5%  b\n"
      "                  100                    until the frame looked\n",
      text.substr(text.find("The start")));
}

TEST(ReportTexts, EscapeNamesAndReasons) {
  RecordedRun run = RunFromText("x:\nstart 0 200\nx start 0 0 0 1 1 failed reason");
  for (PluginHead& plugin : run.record.plugins) plugin.id = "a\x1b[2J";
  for (RunEvent& event : run.record.events) {
    if (!event.plugin.empty()) event.plugin = "a\x1b[2J";
    if (event.kind == RunEvent::Kind::kInitEnd) event.text = "b\x1b[2J";
  }
  run.record.head.product = "c\x1b[2J";
  run.record.events.push_back(Event(RunEvent::Kind::kEnd, 300, "d\x1b[2J"));
  run.name = "e\x1b[2J";
  const std::string text = ReportText(MakeTimeline(std::move(run)), {});
  EXPECT_EQ(std::string::npos, text.find('\x1b'));
  for (const char* escaped : {"a\\x1b[2J", "b\\x1b[2J", "c\\x1b[2J", "d\\x1b[2J", "e\\x1b[2J"}) {
    EXPECT_NE(std::string::npos, text.find(escaped)) << escaped;
  }
}

TEST(ReportTexts, AreNoWiderThanTheTerminal) {
  const std::string text = ReportText(MakeTimeline(RunFromText(kSlow)), {40, false});
  std::size_t begin = 0;
  for (std::size_t end = text.find('\n'); end != std::string::npos; end = text.find('\n', begin)) {
    EXPECT_LE(end - begin, 40U) << text.substr(begin, end - begin);
    begin = end + 1;
  }
}

TEST(ReportTexts, AreColouredOnlyWhenAsked) {
  const Timeline timeline = MakeTimeline(RunFromText(kSlow));
  EXPECT_EQ(std::string::npos, ReportText(timeline, {}).find('\x1b'));
  EXPECT_NE(std::string::npos, ReportText(timeline, {0, true})
                                   .find("\x1b[31m  config: INIT FAILED: its Init returned "
                                         "false\x1b[0m\n"));
}

TEST(ReportTexts, SayHowTheRunEnded) {
  RecordedRun run = RunFromText("a:");
  run.record.events.push_back(Event(RunEvent::Kind::kCrash, 5, "SIGSEGV in a"));
  EXPECT_EQ("Crashed: SIGSEGV in a", HowItEnded(MakeTimeline(std::move(run))));
}

TEST(ReportTexts, ShowTheNotesOfALog) {
  RecordedRun run = RunFromText("a:");
  run.notes = {"its begin is missing", "odd \x1b"};
  EXPECT_EQ(
      "A product, run of 2026-11-21T18:46:59.123Z\n"
      "The record has no end: the run still goes on, or its process was killed\n"
      "From the record run.jsonl\n"
      "note: its begin is missing\n"
      "note: odd \\x1b\n",
      ReportText(MakeTimeline(std::move(run)), {}));
}

}  // namespace
