#include "workbench/report/ReportTrace.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <random>

#include "tests/support/RunText.h"
#include "tests/workbench/report/TraceReader.h"

namespace {

using Kind = RunEvent::Kind;

TraceReader ReadTrace(RecordedRun run) {
  TraceReader trace(ReportTrace(MakeTimeline(std::move(run))));
  EXPECT_EQ("", trace.Faults());
  return trace;
}

constexpr char kTwo[] = R"(
    a:
    b: a
    start 10 500
    a start 11 12 13 40 41
    b start 210 211 212 340 341 failed its Init returned false
    stop 1000 1400
    b stop 1000 1001 - - 1002 not-loaded
    a stop 1200 1201 1202 1210 1211)";

TEST(Traces, HaveATrackForEachThreadAndOneForThePhases) {
  EXPECT_EQ(
      "phases: start 10..500, stop 1000..1400\n"
      "critical path of the start: idle 10..12, a 12..41, waits for the next look 41..210, "
      "idle 210..211, b 211..341, waits for the next look 341..500\n"
      "critical path of the stop: idle 1000..1001, b 1001..1002, waits for the next look "
      "1002..1200, idle 1200..1201, a 1201..1211, waits for the next look 1211..1400\n"
      "thread 1: a 12 (load 12..13, Init 13..40)..41\n"
      "thread 2: b 211 (load 211..212, Init 212..340)..341\n"
      "thread 3: b 1001..1002\n"
      "thread 4: a 1201 (UnInit 1202..1210, unmap 1210..1211)..1211\n",
      ReadTrace(RunFromText(kTwo)).Tracks());
}

TEST(Traces, ShowWhatEachPluginWaitedFor) {
  EXPECT_EQ(
      "a 10 (waits for the next look 10..11, waits for a thread 11..12)..12\n"
      "b 10 (waits for a 10..41, waits for the next look 41..210, waits for a thread "
      "210..211)..211\n"
      "a 1000 (waits for b 1000..1002, waits for the next look 1002..1200, waits for a thread "
      "1200..1201)..1201\n"
      "b 1000 (waits for a thread 1000..1001)..1001\n",
      ReadTrace(RunFromText(kTwo)).Waiting());
}

TEST(Traces, HaveAnArrowFromTheReleasingPlugin) {
  EXPECT_EQ("a 40.999999 -> b 211\nb 1001.999999 -> a 1201\n",
            ReadTrace(RunFromText(kTwo)).Arrows());
}

TEST(Traces, HaveWhatIsKnownOfAPluginInItsSlice) {
  const nlohmann::json expected = {{"ph", "B"},
                                   {"pid", 1},
                                   {"tid", 7},
                                   {"ts", 211000.0},
                                   {"name", "b"},
                                   {"cat", "start,critical"},
                                   {"cname", "terrible"},
                                   {"args",
                                    {{"plugin", "b"},
                                     {"phase", "start"},
                                     {"result", "failed"},
                                     {"reason", "its Init returned false"},
                                     {"ms", 128},
                                     {"slackMs", 0.0},
                                     {"critical", true},
                                     {"releasedBy", "a"}}}};
  EXPECT_EQ(expected, ReadTrace(RunFromText(kTwo)).Slice("b", "start,critical"));
}

TEST(Traces, OfAHungStartEndWithTheLastEvent) {
  const TraceReader trace = ReadTrace(RunFromText(R"(
    a:
    b: a
    c:
    start 0 -
    a start 0 1 2 - -
    c start 0 1 2 90 91)"));
  EXPECT_EQ(
      "phases: start 0..91\n"
      "critical path of the start: idle 0..1, a 1..91\n"
      "thread 1: a 1 (load 1..2, Init 2..91)..91\n"
      "thread 2: c 1 (load 1..2, Init 2..90)..91\n",
      trace.Tracks());
  EXPECT_EQ(
      "a 0 (waits for a thread 0..1)..1\n"
      "b 0 (waits for a 0..91)..91\n"
      "c 0 (waits for a thread 0..1)..1\n",
      trace.Waiting());
  const char* unfinished = "it had not ended at the last event of the run";
  EXPECT_EQ(unfinished, trace.Slice("a", "start,critical").at("args").at("unfinished"));
  EXPECT_EQ(unfinished, trace.Slice("Init", "start").at("args").at("unfinished"));
  EXPECT_EQ(unfinished, trace.Slice("start", "phase").at("args").at("unfinished"));
}

TEST(Traces, OfALogHaveATrackForEachPluginAndSayWhatIsNotKnown) {
  RecordedRun run = RunFromText(R"(
    a:
    b:
    start 0 400
    a start - 1 2 40 41
    b start - 201 202 240 241
    stop 500 600
    b stop - 501 502 503 504)");
  run.knowsTasks = false;
  run.knowsThreads = false;
  run.knowsEdges = false;
  run.resolution = 1'000'000;
  auto& events = run.record.events;
  events.erase(std::remove_if(events.begin(), events.end(),
                              [](const RunEvent& event) { return event.kind == Kind::kReady; }),
               events.end());
  const TraceReader trace = ReadTrace(std::move(run));
  EXPECT_EQ(
      "phases: start 0..400, stop 500..600\n"
      "plugin a: a 1 (load 1..2, Init 2..40)..41\n"
      "plugin b: b 201 (load 201..202, Init 202..240)..241, b 501 (UnInit 502..503, unmap "
      "503..504)..504\n",
      trace.Tracks());
  EXPECT_EQ(
      "a 0 (waits, for what is not known 0..1)..1\n"
      "b 0 (waits, for what is not known 0..201)..201\n"
      "a 500 (waits, for what is not known 500..600)..600\n"
      "b 500 (waits, for what is not known 500..501)..501\n",
      trace.Waiting());
  const nlohmann::json expected = {{"file", "run.jsonl"},
                                   {"time", "2026-11-21T18:46:59.123Z"},
                                   {"resolutionMs", 1.0},
                                   {"threads", "not known: each plugin has a track of its own"},
                                   {"tasks", "not known: how long each plugin waited for a thread"},
                                   {"dependencies", "not known: which plugins waited for which"}};
  EXPECT_EQ(expected, trace.Document().at("otherData"));
}

TEST(Traces, OfAPluginWithoutATaskSayThatItWaitedForLookAndThread) {
  EXPECT_EQ("a 0 (waits for the next look and a thread 0..1)..1\n",
            ReadTrace(RunFromText("a:\nstart 0 9\na start - 1 2 3 4")).Waiting());
}

TEST(Traces, SayWhichProductWasRun) {
  RecordedRun run = RunFromText("start 0 1");
  RunHead& head = run.record.head;
  head.run = "4711";
  head.product = "Site";
  head.productVersion = "2.1";
  head.path = "/opt/site/bin";
  head.zone = "+01:00";
  head.host = "server";
  head.hubVersion = "1.0";
  head.frameVersion = "1.1";
  head.platformVersion = "1.2";
  head.pid = 12;
  head.cores = 4;
  run.record.unreadableLines = 3;
  const nlohmann::json expected = {{"file", "run.jsonl"},
                                   {"run", "4711"},
                                   {"product", "Site"},
                                   {"productVersion", "2.1"},
                                   {"path", "/opt/site/bin"},
                                   {"time", "2026-11-21T18:46:59.123Z"},
                                   {"zone", "+01:00"},
                                   {"host", "server"},
                                   {"hubVersion", "1.0"},
                                   {"frameVersion", "1.1"},
                                   {"platformVersion", "1.2"},
                                   {"pid", 12},
                                   {"cores", 4},
                                   {"unreadableLines", 3}};
  EXPECT_EQ(expected, ReadTrace(std::move(run)).Document().at("otherData"));
}

/// Adds an event in milliseconds after the run's begin.
RunEvent& AddEvent(RecordedRun& run, Kind kind, std::int64_t at) {
  RunEvent event;
  event.kind = kind;
  event.nanoseconds = run.record.head.nanoseconds + at * 1'000'000;
  run.record.events.push_back(event);
  return run.record.events.back();
}

TEST(Traces, ShowWhatHappenedToTheRunAsInstants) {
  RecordedRun run = RunFromText("a:\nstart 0 9");
  RunEvent& finding = AddEvent(run, Kind::kFinding, 10);
  finding.severity = Severity::kWarning;
  finding.text = "\"a\" has no description";
  AddEvent(run, Kind::kUp, 11).milliseconds = 11;
  AddEvent(run, Kind::kStopRequest, 12).text = "SIGTERM";
  RunEvent& crash = AddEvent(run, Kind::kCrash, 13);
  crash.plugin = "a";
  crash.phase = RunPhase::kStop;
  crash.text = "segmentation fault";
  RunEvent& end = AddEvent(run, Kind::kEnd, 14);
  end.status = "failed";
  const TraceReader trace = ReadTrace(std::move(run));
  EXPECT_EQ("finding: warning at 10\nup at 11\nstop request at 12\ncrash at 13\nend at 14\n",
            trace.Instants());
  const nlohmann::json expected = {
      {"text", "segmentation fault"}, {"plugin", "a"}, {"phase", "stop"}};
  EXPECT_EQ(expected, trace.Instant("crash").at("args"));
}

TEST(Traces, PutPhasesInsideTheOnesAroundThem) {
  RecordedRun run = RunFromText("start 0 9\nstop 20 25");
  AddEvent(run, Kind::kPhaseBegin, 20).phase = RunPhase::kFrameStop;
  AddEvent(run, Kind::kPhaseBegin, 25).phase = RunPhase::kPlatformStop;
  AddEvent(run, Kind::kPhaseEnd, 30).phase = RunPhase::kPlatformStop;
  AddEvent(run, Kind::kPhaseEnd, 30).phase = RunPhase::kFrameStop;
  EXPECT_EQ("phases: start 0..9, frame-stop 20 (stop 20..25, platform-stop 25..30)..30\n",
            ReadTrace(std::move(run)).Tracks());
}

TEST(Traces, PutOverlappingSlicesOfAThreadOnTwoTracks) {
  RecordedRun run = RunFromText(R"(
    a:
    b:
    start 0 100
    a start 0 10 10 50 50
    b start 0 20 20 60 60)");
  for (RunEvent& event : run.record.events) event.thread = event.thread == 0 ? 0 : 7;
  for (RunEvent& event : run.record.events) event.task = event.task == 0 ? 0 : 3;
  EXPECT_EQ(
      "phases: start 0..100\n"
      "critical path of the start: idle 0..20, b 20..60, waits for the next look 60..100\n"
      "thread 7: a 10 (load 10..10, Init 10..50)..50\n"
      "thread 7: b 20 (load 20..20, Init 20..60)..60\n",
      ReadTrace(std::move(run)).Tracks());
}

TEST(Traces, HaveNoArrowThatWouldGoBackInTime) {
  EXPECT_EQ("", ReadTrace(RunFromText(R"(
    a:
    b: a
    start 0 200
    a start 0 50 50 100 104
    b start 0 20 20 150 150)"))
                    .Arrows());
}

TEST(Traces, OfHostileNamesAreValid) {
  const std::string hostile = "\"\\\n</script>\xff\xe2\x80\xae";
  RecordedRun run = RunFromText("x:\n:\nstart 0 9\nx start 0 1 2 3 4 failed why");
  run.name = hostile;
  run.record.head.product = hostile;
  run.record.plugins[0].id = hostile;
  for (RunEvent& event : run.record.events) {
    if (event.plugin == "x") event.plugin = hostile;
    if (event.text == "why") event.text = hostile;
  }
  const TraceReader trace = ReadTrace(std::move(run));
  const std::string replaced = "\"\\\n</script>\xef\xbf\xbd\xe2\x80\xae";
  const std::string escaped = R"("\\x0a</script>\xff\u202e)";
  EXPECT_EQ(replaced, trace.Document().at("otherData").at("product"));
  EXPECT_EQ(escaped +
                " 0 (waits for a thread 0..1)..1\n"
                "(no ID) 0 (waits for the next look and a thread 0..9)..9\n",
            trace.Waiting());
  EXPECT_EQ(replaced, trace.Slice(escaped, "start,critical").at("args").at("reason"));
}

/// A run of events at random, of a few plugins, threads and tasks, mostly contradictory.
RecordedRun RandomRun(std::mt19937& random) {
  const auto below = [&](std::uint32_t most) { return static_cast<std::int64_t>(random() % most); };
  const std::vector<std::string> phases = {"start", "stop", "frame-init", "frame-stop",
                                           "platform-stop"};
  RecordedRun run;
  run.knowsThreads = below(3) != 0;
  run.knowsEdges = below(3) != 0;
  const auto id = [&] { return std::string(1, static_cast<char>('a' + below(6))); };
  for (int i = 0; i < 5; ++i) {
    PluginHead head;
    head.id = std::string(1, static_cast<char>('a' + i));
    head.kind = "server";
    for (std::int64_t n = below(3); n > 0; --n) head.dependsOn.push_back(id());
    run.record.plugins.push_back(head);
  }
  const std::int64_t count = below(120);
  for (std::int64_t i = 0; i < count; ++i) {
    RunEvent event;
    event.kind = static_cast<Kind>(below(static_cast<int>(Kind::kEnd) + 1));
    event.nanoseconds = below(2) == 0 ? i * 100 : below(10000);
    event.thread = static_cast<std::uint64_t>(below(4));
    event.task = static_cast<std::uint64_t>(below(5));
    event.plugin = id();
    event.phase = phases[static_cast<std::size_t>(below(4) == 0 ? below(5) : below(2))];
    event.result = static_cast<RunEvent::Result>(below(5));
    event.text = below(2) == 0 ? id() : "";
    run.record.events.push_back(event);
  }
  return run;
}

TEST(Traces, OfRandomEventsAreDisplayedAsTheyAreMeant) {
  std::mt19937 random(20261121);
  std::size_t arrows = 0;
  for (int i = 0; i < 300; ++i) {
    const TraceReader trace(ReportTrace(MakeTimeline(RandomRun(random))));
    ASSERT_EQ("", trace.Faults()) << "run " << i;
    arrows += trace.Arrows().empty() ? 0 : 1;
  }
  EXPECT_LT(10U, arrows);
}

}  // namespace
