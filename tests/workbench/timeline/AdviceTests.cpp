#include "workbench/timeline/Advice.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <random>
#include <sstream>

#include "tests/support/RunText.h"
#include "workbench/timeline/Prediction.h"

namespace {

using Mode = FrameLooks::Mode;

double Ms(std::int64_t ns) {
  return static_cast<double>(ns) / 1e6;
}

std::string AdviceText(const Timeline& timeline, const PhaseTimeline& phase) {
  const PhaseAdvice advice = Advise(timeline, phase, Mode::kSleep);
  if (!advice.unknown.empty()) return advice.unknown;
  std::ostringstream text;
  const auto id = [&](std::size_t plugin) { return timeline.plugins[plugin].id; };
  for (const PluginGain& gain : advice.plugins) {
    text << id(gain.plugin) << " " << Ms(gain.gain) << "; ";
  }
  for (const EdgeGain& gain : advice.edges) {
    text << id(gain.plugin) << "->" << id(gain.other) << " " << Ms(gain.gain) << "; ";
  }
  if (advice.poll) text << "poll " << Ms(*advice.poll) << "; ";
  if (advice.workers) text << "workers " << Ms(*advice.workers) << "; ";
  return text.str();
}

constexpr char kProduct[] = R"(
    base:
    slow: base
    other: base
    quick:
    start 0 1000
    base start 0 0 0 300 300
    quick start 0 0 0 10 10
    slow start 400 400 400 810 810
    other start 400 400 400 420 420
    stop 2000 2600
    slow stop 2000 2000 2000 2210 2210
    other stop 2000 2000 2000 2010 2010
    quick stop 2000 2000 2000 2010 2010
    base stop 2400 2400 2400 2500 2500)";

TEST(Advice, RanksPluginsAndEdgesByWhatTheWholePhaseGains) {
  const Timeline timeline = MakeTimeline(RunFromText(kProduct));
  EXPECT_EQ("slow 400; base 400; slow->base 400; poll 290; ", AdviceText(timeline, timeline.start));
}

TEST(Advice, NamesTheEdgesOfTheStopAsDependencies) {
  const Timeline timeline = MakeTimeline(RunFromText(kProduct));
  EXPECT_EQ("slow 200; slow->base 200; poll 290; ", AdviceText(timeline, timeline.stop));
}

TEST(Advice, HasThreadsWhenTheyWereShort) {
  RecordedRun run = RunFromText(R"(
      a:
      b:
      start 0 400
      a start 0 0 0 150 150
      b start 0 150 150 250 250)");
  run.record.head.commandLine = {"HUB", "run", "--workers", "1"};
  const Timeline timeline = MakeTimeline(run);
  EXPECT_EQ("a 200; b 200; poll 150; workers 200; ", AdviceText(timeline, timeline.start));
}

TEST(Advice, IsNotGivenForAPhaseThatIsNotReproduced) {
  const Timeline timeline = MakeTimeline(RunFromText(R"(
      a:
      start 0 150
      a start 0 0 0 100 100)"));
  EXPECT_EQ(
      "it took 150.00 ms, and its work scheduled anew takes 200.00 ms: more than its resolution "
      "of 0.00 ms apart",
      AdviceText(timeline, timeline.start));
}

/// A random product in which posts take no time, and as many threads as given.
Timeline RandomRun(unsigned seed, std::size_t threads) {
  std::mt19937 random(seed);
  const auto number = [&](int most) { return std::uniform_int_distribution<int>(0, most)(random); };
  PhaseWork work;
  work.threads = threads;
  work.looks.sleep = kFrameSleep;
  for (std::size_t i = 0; i < 12; ++i) {
    work.plugins.emplace_back();
    work.plugins.back().position = i;
    work.plugins.back().work = (number(300) + 1) * 1'000'000;
    for (std::size_t other = 0; other < i; ++other) {
      if (number(4) == 0) work.plugins.back().waitsFor.push_back(other);
    }
  }
  const Schedule schedule = MakeSchedule(work);
  Timeline timeline;
  timeline.run.record.head.commandLine = {"HUB", "--workers", std::to_string(threads)};
  PhaseTimeline& phase = timeline.start;
  phase.begun = phase.ended = true;
  phase.begin = 0;
  phase.end = schedule.end;
  for (std::size_t i = 0; i < work.plugins.size(); ++i) {
    timeline.plugins.emplace_back();
    timeline.plugins.back().id = "p" + std::to_string(i);
    PluginSpan span;
    span.posted = schedule.tasks[i].posted;
    span.begin = schedule.tasks[i].begin;
    span.end = schedule.tasks[i].end;
    phase.spans.push_back(span);
    phase.waitsFor.push_back(work.plugins[i].waitsFor);
  }
  return timeline;
}

/// What every plugin and every edge gains, each tried by itself, those that gain most first.
std::string TriedText(const Timeline& timeline, Mode mode) {
  const RecordedWork recorded = WorkOf(timeline, timeline.start, mode);
  const std::int64_t before = MakeSchedule(recorded.work).end;
  const auto gain = [&](const std::vector<std::string>& texts) {
    RecordedWork changed = recorded;
    Apply(ParseWhatIf(texts, timeline).changes, false, changed);
    return before - MakeSchedule(changed.work).end;
  };
  std::vector<std::int64_t> plugins;
  std::vector<std::int64_t> edges;
  for (std::size_t i = 0; i < timeline.plugins.size(); ++i) {
    plugins.push_back(gain({timeline.plugins[i].id + "=0"}));
    for (const std::size_t other : timeline.start.waitsFor[i]) {
      edges.push_back(gain({"cut " + timeline.plugins[i].id + "->" + timeline.plugins[other].id}));
    }
  }
  std::ostringstream text;
  for (std::vector<std::int64_t>* gains : {&plugins, &edges}) {
    std::sort(gains->begin(), gains->end(), std::greater<>());
    std::size_t shown = 0;
    for (const std::int64_t each : *gains) {
      if (each > recorded.resolution && ++shown <= PhaseAdvice::kMost) text << Ms(each) << " ";
    }
    text << "| ";
  }
  return text.str();
}

std::string GainsText(const PhaseAdvice& advice) {
  std::ostringstream text;
  for (const PluginGain& gain : advice.plugins) text << Ms(gain.gain) << " ";
  text << "| ";
  for (const EdgeGain& gain : advice.edges) text << Ms(gain.gain) << " ";
  text << "| ";
  return text.str();
}

TEST(Advice, LeavesOutNothingThatGains) {
  for (const std::size_t threads : {12U, 2U}) {
    for (unsigned seed = 0; seed < 150; ++seed) {
      const Timeline timeline = RandomRun(seed, threads);
      ASSERT_EQ(TriedText(timeline, Mode::kSleep),
                GainsText(Advise(timeline, timeline.start, Mode::kSleep)))
          << threads << " threads, seed " << seed;
    }
  }
}

}  // namespace
