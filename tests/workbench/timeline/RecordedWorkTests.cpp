#include "workbench/timeline/RecordedWork.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <random>
#include <string>

#include "tests/support/RunText.h"

namespace {

using Mode = FrameLooks::Mode;

constexpr std::int64_t kMicrosecond = 1000;
constexpr std::int64_t kMillisecond = 1'000'000;

/// The work of a random product, with the times that a system has: sleeps and threads are late by
/// some microseconds, and many plugins end about when the frame looks.
class RandomPhase {
 public:
  RandomPhase(unsigned seed, Mode mode) : m_random(seed) {
    m_work.looks.mode = mode;
    m_work.looks.first = Number(10, 50) * kMicrosecond;
    m_work.looks.sleep = kFrameSleep;
    m_work.looks.interval = kMillisecond;
    if (mode == Mode::kSleep) {
      for (int i = 0; i < 30; ++i) {
        m_work.looks.sleeps.push_back({1, kFrameSleep + Number(50, 400) * kMicrosecond});
      }
    }
    const auto plugins = static_cast<std::size_t>(Number(1, 25));
    m_work.threads = Number(0, 1) == 0 ? plugins : 3;
    for (std::size_t i = 0; i < plugins; ++i) AddPlugin(i);
  }

  const PhaseWork& Work() const { return m_work; }

  /// A run that has this phase as its start.
  Timeline Recorded() const {
    const Schedule schedule = MakeSchedule(m_work);
    Timeline timeline;
    timeline.run.record.head.commandLine = {"HUB", "--workers", std::to_string(m_work.threads)};
    PhaseTimeline& phase = timeline.start;
    phase.begun = phase.ended = true;
    phase.begin = 5 * kMillisecond;
    phase.end = phase.begin + schedule.end;
    for (std::size_t i = 0; i < schedule.tasks.size(); ++i) {
      PluginHead head;
      head.id = "p" + std::to_string(i);
      timeline.plugins.push_back(head);
      PluginSpan span;
      span.posted = phase.begin + schedule.tasks[i].posted;
      span.begin = phase.begin + schedule.tasks[i].begin;
      span.end = phase.begin + schedule.tasks[i].end;
      phase.spans.push_back(span);
      phase.waitsFor.push_back(m_work.plugins[i].waitsFor);
    }
    return timeline;
  }

 private:
  std::int64_t Number(std::int64_t least, std::int64_t most) {
    return std::uniform_int_distribution<std::int64_t>(least, most)(m_random);
  }

  void AddPlugin(std::size_t number) {
    PluginWork plugin;
    plugin.position = number;
    for (std::size_t other = 0; other < number; ++other) {
      if (Number(0, 5) == 0) plugin.waitsFor.push_back(other);
    }
    plugin.work = Number(100, 400'000) * kMicrosecond;
    if (Number(0, 2) == 0) plugin.work = Number(99'900, 100'100) * kMicrosecond;
    plugin.toPost = Number(3, 80) * kMicrosecond;
    plugin.toBegin = Number(10, 100) * kMicrosecond;
    plugin.toWake = Number(20, 150) * kMicrosecond;
    m_work.plugins.push_back(plugin);
  }

  std::mt19937 m_random;
  PhaseWork m_work;
};

/// How far the schedule is from what was recorded.
std::int64_t FarthestTask(const PhaseTimeline& phase, const Schedule& schedule) {
  std::int64_t farthest = 0;
  for (std::size_t i = 0; i < schedule.tasks.size(); ++i) {
    const ScheduledTask& task = schedule.tasks[i];
    const PluginSpan& span = phase.spans[i];
    farthest = std::max({farthest, std::abs(task.posted + phase.begin - span.posted),
                         std::abs(task.begin + phase.begin - span.begin),
                         std::abs(task.end + phase.begin - span.end)});
  }
  return farthest;
}

void ExpectReproduced(Mode mode, std::int64_t mostOff) {
  for (unsigned seed = 0; seed < 1000; ++seed) {
    const Timeline timeline = RandomPhase(seed, mode).Recorded();
    const RecordedWork recorded = WorkOf(timeline, timeline.start, mode);
    ASSERT_EQ("", recorded.unknown) << "seed " << seed;
    const Schedule schedule = MakeSchedule(recorded.work);
    ASSERT_LE(std::abs(schedule.end - recorded.wall), recorded.resolution) << "seed " << seed;
    ASSERT_LE(FarthestTask(timeline.start, schedule), mostOff) << "seed " << seed;
    ASSERT_LE(recorded.resolution, mode == Mode::kSleep ? 500 * kMicrosecond : 2 * kMillisecond)
        << "seed " << seed;
  }
}

TEST(RecordedWork, OfAFrameThatSleepsGivesTheRecordAgain) {
  ExpectReproduced(Mode::kSleep, 0);
}

TEST(RecordedWork, OfAnEarlyEndGivesTheRecordAgain) {
  ExpectReproduced(Mode::kEarlyEnd, 2 * kMillisecond);
}

TEST(RecordedWork, OfOtherLooksThanTheFramesDoesNotGiveTheRecordAgain) {
  int reproduced = 0;
  for (unsigned seed = 0; seed < 200; ++seed) {
    const Timeline timeline = RandomPhase(seed, Mode::kEarlyEnd).Recorded();
    const RecordedWork recorded = WorkOf(timeline, timeline.start, Mode::kSleep);
    const Schedule schedule = MakeSchedule(recorded.work);
    reproduced += std::abs(schedule.end - recorded.wall) <= recorded.resolution;
  }
  EXPECT_LE(reproduced, 20) << "of 200";
}

constexpr char kLoop[] = R"(
    first:
    second: first
    start 0 600.6
    first start 0 0 0 150 150
    second start 200.1 200.1 200.1 399 399)";

TEST(RecordedWork, FindsTheSleepsBetweenTheLooks) {
  const Timeline timeline = MakeTimeline(RunFromText(kLoop));
  const RecordedWork recorded = WorkOf(timeline, timeline.start, Mode::kSleep);
  std::string sleeps;
  for (const Sleeps& some : recorded.work.looks.sleeps) {
    sleeps += std::to_string(some.count) + " of " + std::to_string(some.length) + "; ";
  }
  EXPECT_EQ("1 of 200100000; 2 of 200250000; ", sleeps);
  EXPECT_EQ(200'200'000, recorded.work.looks.sleep);
  EXPECT_EQ(250'001, recorded.resolution);
}

TEST(RecordedWork, HasAPluginThatEndsAboutWhenTheFrameLooks) {
  // The look between the known ones may have been before 400.3, not after.
  const Timeline timeline = MakeTimeline(RunFromText(R"(
      first:
      start 0 600.6
      first start 0 0 0 400.3 400.3)"));
  const RecordedWork recorded = WorkOf(timeline, timeline.start, Mode::kSleep);
  EXPECT_EQ(100'001, recorded.work.looks.endLag);
  EXPECT_EQ(600'600'000, MakeSchedule(recorded.work).end);
}

TEST(RecordedWork, HasAPluginThatIsReadyAboutWhenTheFrameLooks) {
  const Timeline timeline = MakeTimeline(RunFromText(R"(
      first:
      second: first
      start 0 800.8
      first start 0 0 0 400.3 400.3
      second start 600.6 600.6 600.6 610 610)"));
  const RecordedWork recorded = WorkOf(timeline, timeline.start, Mode::kSleep);
  EXPECT_EQ(100'001, recorded.work.plugins[1].readyLag);
  EXPECT_EQ(800'800'000, MakeSchedule(recorded.work).end);
}

TEST(RecordedWork, VisitsThePluginsInTheOrderOfTheirKeys) {
  std::string text;
  for (int i = 0; i < 902; ++i) text += "p" + std::to_string(i) + ":\n";
  text += "start 0 200\n";
  for (int i = 0; i < 902; ++i) text += "p" + std::to_string(i) + " start 0 0 0 1 1\n";
  const Timeline timeline = MakeTimeline(RunFromText(text));
  const RecordedWork recorded = WorkOf(timeline, timeline.start, Mode::kSleep);
  // 1000_p900 and 1001_p901 stand before 100_p0.
  EXPECT_EQ(0U, recorded.work.plugins[900].position);
  EXPECT_EQ(1U, recorded.work.plugins[901].position);
  EXPECT_EQ(2U, recorded.work.plugins[0].position);
  EXPECT_EQ(901U, recorded.work.plugins[899].position);
}

}  // namespace
