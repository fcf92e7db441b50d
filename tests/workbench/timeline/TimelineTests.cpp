#include "workbench/timeline/Timeline.h"

#include <gtest/gtest.h>

#include <algorithm>

#include <sstream>

#include "tests/support/RunText.h"

namespace {

std::string Ms(std::int64_t ns) {
  std::ostringstream text;
  if (ns == kUnknown) return "-";
  text << static_cast<double>(ns) / 1e6;
  return text.str();
}

const char* Name(PluginSpan::Result result) {
  constexpr const char* names[] = {"not begun", "not returned",   "ok", "failed", "not loaded",
                                   "refused",   "nothing to stop"};
  return names[static_cast<int>(result)];
}

/// "a: ready 0, posted 1, begin 2, loaded 3, code 3 to 40, end 41, ok, 37 ms, thread 1, after b".
std::string Text(const Timeline& timeline, const PhaseTimeline& phase) {
  std::ostringstream text;
  for (std::size_t i = 0; i < phase.spans.size(); ++i) {
    const PluginSpan& span = phase.spans[i];
    text << timeline.plugins[i].id << ": ready " << Ms(span.ready) << ", posted " << Ms(span.posted)
         << ", begin " << Ms(span.begin) << ", loaded " << Ms(span.loaded) << ", code "
         << Ms(span.codeBegin) << " to " << Ms(span.codeEnd) << ", end " << Ms(span.end) << ", "
         << Name(span.result) << ", " << span.milliseconds << " ms, thread " << span.thread;
    if (span.releasedBy) text << ", after " << timeline.plugins[*span.releasedBy].id;
    text << "\n";
  }
  return text.str();
}

TEST(Timelines, ShowEachPluginsStart) {
  const Timeline timeline = MakeTimeline(RunFromText(R"(
    a:
    b: a
    start 10 400
    a start 11 12 13 40 41
    b start 210 211 212 340 341 failed its Init returned false)"));
  EXPECT_EQ(
      "a: ready 10, posted 11, begin 12, loaded 13, code 13 to 40, end 41, ok, 27 ms, thread 1\n"
      "b: ready 41, posted 210, begin 211, loaded 212, code 212 to 340, end 341, failed, 128 ms, "
      "thread 2, after a\n",
      Text(timeline, timeline.start));
  EXPECT_EQ("its Init returned false", timeline.State(1).reason);
}

TEST(Timelines, ShowEachPluginsStop) {
  const Timeline timeline = MakeTimeline(RunFromText(R"(
    a:
    b: a
    stop 1000 1400
    b stop 1000 1001 1002 1050 1051
    a stop 1200 1201 1202 1210 1211 refused)"));
  EXPECT_EQ(
      "a: ready 1051, posted 1200, begin 1201, loaded -, code 1202 to 1210, end 1211, refused, 8 "
      "ms, thread 2, after b\n"
      "b: ready 1000, posted 1000, begin 1001, loaded -, code 1002 to 1050, end 1051, ok, 48 ms, "
      "thread 1\n",
      Text(timeline, timeline.stop));
}

TEST(Timelines, TellNotLoadedFromNothingToStop) {
  const Timeline timeline = MakeTimeline(RunFromText(R"(
    a:
    start 0 200
    stop 1000 1200
    a start 0 1 - - 2 not-loaded no such file
    a stop 1000 1001 - - 1002 not-loaded)"));
  EXPECT_EQ(
      "a: ready 0, posted 0, begin 1, loaded 2, code - to -, end 2, not loaded, -1 ms, thread 1\n",
      Text(timeline, timeline.start));
  EXPECT_EQ(
      "a: ready 1000, posted 1000, begin 1001, loaded -, code - to -, end 1002, nothing to stop, "
      "-1 ms, thread 2\n",
      Text(timeline, timeline.stop));
}

TEST(Timelines, OfAHungStartEndWithTheLastEvent) {
  const Timeline timeline = MakeTimeline(RunFromText(R"(
    a:
    b: a
    c:
    start 0 -
    a start 0 1 2 - -
    c start 0 1 2 90 91)"));
  EXPECT_EQ(
      "a: ready 0, posted 0, begin 1, loaded 2, code 2 to -, end -, not returned, -1 ms, thread "
      "1\n"
      "b: ready -, posted -, begin -, loaded -, code - to -, end -, not begun, -1 ms, thread 0\n"
      "c: ready 0, posted 0, begin 1, loaded 2, code 2 to 90, end 91, ok, 88 ms, thread 2\n",
      Text(timeline, timeline.start));
  EXPECT_FALSE(timeline.start.ended);
  EXPECT_EQ("91", Ms(timeline.start.end));
}

TEST(Timelines, LeaveOutWhatTheFrameDoesNotStart) {
  RecordedRun run = RunFromText("a:\nb:\nc:\nstart 0 200");
  run.record.plugins[0].kind = "driver";
  run.record.plugins[1].kind = "executable";
  const Timeline timeline = MakeTimeline(std::move(run));
  ASSERT_EQ(1U, timeline.plugins.size());
  EXPECT_EQ("c", timeline.plugins[0].id);
}

TEST(Timelines, HaveNoThreadsWhenTheRunDoesNotKnowThem) {
  RecordedRun run = RunFromText("a:\nstart 0 200\na start 0 1 2 3 4");
  run.knowsThreads = false;
  EXPECT_EQ(0U, MakeTimeline(std::move(run)).start.spans[0].thread);
}

TEST(Timelines, HaveNoPathWhenTheRunDoesNotKnowTheEdges) {
  RecordedRun run = RunFromText("a:\nstart 0 200\na start 0 1 2 3 4");
  run.knowsEdges = false;
  const Timeline timeline = MakeTimeline(std::move(run));
  EXPECT_TRUE(timeline.start.path.empty());
  EXPECT_EQ(kUnknown, timeline.start.spans[0].slack);
  EXPECT_EQ("200", Ms(timeline.start.balance.wall));
  EXPECT_EQ("3", Ms(timeline.start.balance.work));
}

TEST(Timelines, OfALogThatBeginsInAnInitHaveItsTimeFromTheFrame) {
  RecordedRun run = RunFromText("a:\nstart 0 200\na start 0 1 2 150 160");
  auto& events = run.record.events;
  events.erase(std::remove_if(events.begin(), events.end(),
                              [](const RunEvent& event) {
                                return event.kind != RunEvent::Kind::kInitEnd &&
                                       event.kind != RunEvent::Kind::kCounted;
                              }),
               events.end());
  for (RunEvent& event : events) {
    if (event.kind == RunEvent::Kind::kInitEnd) event.milliseconds = 100;
  }
  const Timeline timeline = MakeTimeline(std::move(run));
  EXPECT_EQ("50", Ms(timeline.start.spans[0].begin));
  EXPECT_FALSE(timeline.start.IsComplete(true));
}

TEST(Timelines, PutContradictoryTimesIntoOrder) {
  RecordedRun run = RunFromText("a:\nstart 0 200\na start 9 1 2 3 4");
  for (RunEvent& event : run.record.events) {
    if (event.kind == RunEvent::Kind::kInitEnd) event.nanoseconds = 0;
  }
  const Timeline timeline = MakeTimeline(std::move(run));
  EXPECT_EQ("a: ready 0, posted -, begin 1, loaded 2, code 2 to 2, end 4, ok, 1 ms, thread 1\n",
            Text(timeline, timeline.start));
}

}  // namespace
