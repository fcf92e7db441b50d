#include "workbench/timeline/Prediction.h"

#include <gtest/gtest.h>

#include <limits>
#include <sstream>

#include "tests/support/RunText.h"

namespace {

using Mode = FrameLooks::Mode;

double Ms(std::int64_t ns) {
  return static_cast<double>(ns) / 1e6;
}

std::string PredictionText(const RecordedRun& run, const std::vector<std::string>& changes,
                           Mode mode = Mode::kSleep, bool isStop = false) {
  const Timeline timeline = MakeTimeline(run);
  const PhaseTimeline& phase = isStop ? timeline.stop : timeline.start;
  const ParsedWhatIf parsed = ParseWhatIf(changes, timeline);
  if (!parsed.error.empty()) return parsed.error;
  const PhasePrediction prediction = Predict(timeline, phase, mode, parsed.changes);
  if (!prediction.unknown.empty()) return prediction.unknown;
  std::ostringstream text;
  text << Ms(prediction.recorded) << " recorded, " << Ms(prediction.reproduced) << " reproduced, "
       << Ms(prediction.predicted) << " predicted:";
  for (const PathStep& step : prediction.timeline.path) {
    text << " " << timeline.plugins[step.plugin].id << " " << Ms(step.work);
  }
  for (const MovedPlugin& moved : prediction.moved) {
    text << ", " << timeline.plugins[moved.plugin].id << " by " << Ms(moved.by);
  }
  return text.str();
}

std::string PredictionText(const std::string& run, const std::vector<std::string>& changes,
                           Mode mode = Mode::kSleep, bool isStop = false) {
  return PredictionText(RunFromText(run), changes, mode, isStop);
}

constexpr char kDiamond[] = R"(
    base:
    slow: base
    fast: base
    top: slow fast
    start 0 603
    base start 1 2 2 40 41
    slow start 201 203 203 340 341
    fast start 202 203 203 211 212
    top start 402 403 403 590 591
    stop 1000 1600
    top stop 1000 1000 1000 1020 1020
    slow stop 1200 1200 1200 1230 1230
    fast stop 1200 1200 1200 1205 1205
    base stop 1400 1400 1400 1410 1410)";

constexpr char kChain[] = R"(
    first:
    second: first
    start 0 600
    first start 0 0 0 230 230
    second start 400 400 400 450 450)";

/// The frame's sleeps end early.
constexpr char kEarly[] = R"(
    first:
    second: first
    start 0 100.3
    first start 0 0 0 70 70
    second start 70.2 70.2 70.2 100 100)";

TEST(Prediction, OfNoChangeIsTheRecordedPhase) {
  EXPECT_EQ("603 recorded, 603 reproduced, 603 predicted: base 39 slow 138 top 188",
            PredictionText(kDiamond, {}));
  EXPECT_EQ("600 recorded, 600 reproduced, 600 predicted: top 20 slow 30 base 10",
            PredictionText(kDiamond, {}, Mode::kSleep, true));
}

TEST(Prediction, WithoutWaitingForLooksIsTheCriticalPath) {
  EXPECT_EQ(
      "603 recorded, 603 reproduced, 370 predicted: base 39 slow 138 top 188, top by -221, "
      "slow by -160, fast by -160",
      PredictionText(kDiamond, {"poll=0"}));
}

TEST(Prediction, WithAShorterPollHasMoreLooks) {
  EXPECT_EQ(
      "600 recorded, 600 reproduced, 90 predicted: top 20 slow 30 base 10, base by -340, "
      "slow by -170, fast by -170",
      PredictionText(kDiamond, {"poll=30"}, Mode::kSleep, true));
}

TEST(Prediction, OfOtherWorkGainsOrCostsWholeLooks) {
  EXPECT_EQ("600 recorded, 600 reproduced, 400 predicted: first 115 second 50, second by -200",
            PredictionText(kChain, {"first=50%"}));
  EXPECT_EQ("600 recorded, 600 reproduced, 600 predicted: first 201 second 50",
            PredictionText(kChain, {"first=201"}));
  EXPECT_EQ("600 recorded, 600 reproduced, 800 predicted: first 230 second 201",
            PredictionText(kChain, {"second=201"}));
}

TEST(Prediction, OfPluginsTimesLeavesTheStop) {
  EXPECT_EQ("600 recorded, 600 reproduced, 600 predicted: top 20 slow 30 base 10",
            PredictionText(kDiamond, {"top=10000"}, Mode::kSleep, true));
}

TEST(Prediction, WithOneThreadWorksOneAfterTheOther) {
  EXPECT_EQ("603 recorded, 603 reproduced, 603 predicted: base 39 fast 9 top 188, fast by 139",
            PredictionText(kDiamond, {"workers=1"}));
}

TEST(Prediction, OfACutEdgeStartsThePluginWithTheFirst) {
  EXPECT_EQ("603 recorded, 603 reproduced, 603 predicted: base 39 fast 9 top 188, slow by -199",
            PredictionText(kDiamond, {"cut slow->base"}));
  EXPECT_EQ("600 recorded, 600 reproduced, 400 predicted: first 230, second by -400",
            PredictionText(kChain, {"cut second->first"}));
}

TEST(Prediction, OfACutEdgeStopsTheOtherPluginEarlier) {
  EXPECT_EQ("600 recorded, 600 reproduced, 400 predicted: top 20 slow 30, base by -400",
            PredictionText(kDiamond, {"cut slow->base", "cut fast->base"}, Mode::kSleep, true));
}

TEST(Prediction, OfAnAddedEdgeStartsThePluginLater) {
  EXPECT_EQ(
      "603 recorded, 603 reproduced, 802.333 predicted: base 39 slow 138 fast 9 top 188, "
      "top by 200, fast by 199",
      PredictionText(kDiamond, {"add fast->slow"}));
}

TEST(Prediction, OfAnEarlyEndGoesOnAtEachEnd) {
  EXPECT_EQ(
      "100.3 recorded, 100.3 reproduced, 79.8 predicted: first 49.5 second 29.8, "
      "second by -20.5",
      PredictionText(kEarly, {"first=49.5"}, Mode::kEarlyEnd));
}

TEST(Prediction, WithAPollInPlaceOfEarlyEndsWaitsForIt) {
  EXPECT_EQ("100.3 recorded, 100.3 reproduced, 160 predicted: first 70 second 29.8, second by 9.8",
            PredictionText(kEarly, {"poll=80"}, Mode::kEarlyEnd));
}

// A record that does not fit.

TEST(Prediction, IsNotMadeFromLooksThatTheFrameDoesNotHave) {
  EXPECT_EQ(
      "it took 300.00 ms, and its work scheduled anew takes 500.00 ms: more than its resolution "
      "of 50.00 ms apart",
      PredictionText(R"(
          first:
          second: first
          start 0 300
          first start 0 0 0 50 50
          second start 50 50 50 250 250)",
                     {"poll=0"}));
}

TEST(Prediction, IsNotMadeOfAPhaseThatSomePluginsDidNotEnd) {
  const std::string hung = R"(
      base:
      hangs: base
      waits: hangs
      start 0 -
      base start 0 0 0 10 10
      hangs start 200 200 200 - -)";
  EXPECT_EQ("the start of hangs and waits did not end in it", PredictionText(hung, {}));
  EXPECT_EQ("the run has no stop of plugins", PredictionText(hung, {}, Mode::kSleep, true));
}

TEST(Prediction, IsNotMadeOfAPhaseThatThePluginsOutlast) {
  EXPECT_EQ("the start of late did not end in it", PredictionText(R"(
                late:
                start 0 400
                late start 0 0 0 700 700)",
                                                                  {}));
}

TEST(Prediction, IsNotMadeOfACutRecord) {
  EXPECT_EQ("the start did not end", PredictionText(R"(
                quick:
                start 0 -
                quick start 0 0 0 7 7)",
                                                    {}));
}

TEST(Prediction, IsNotMadeOfACycleThatEnded) {
  EXPECT_EQ("plugins depend on each other in a cycle, and yet their start ended",
            PredictionText(R"(
                a: b
                b: a
                start 0 200
                a start 0 0 0 7 7
                b start 0 0 0 7 7)",
                           {}));
}

TEST(Prediction, IsNotMadeWithoutTasksOrEdges) {
  RecordedRun run = RunFromText(kChain);
  run.knowsEdges = false;
  EXPECT_EQ("it is not known what each plugin waits for", PredictionText(run, {}));
  run.knowsTasks = false;
  EXPECT_EQ(
      "a log does not say when the plugins' tasks were posted and begun; a flight record does",
      PredictionText(run, {}));
  EXPECT_EQ("it is not known when the start of quick was posted and begun", PredictionText(R"(
                quick:
                start 0 200
                quick start - 1 1 7 7)",
                                                                                           {}));
}

TEST(Prediction, IsNotMadeOfAProductWithoutPlugins) {
  EXPECT_EQ("the product has no plugin", PredictionText("start 0 1", {}));
}

TEST(Prediction, IsNotMadeOfTimesThatNoRunTakes) {
  RecordedRun run = RunFromText(kChain);
  run.record.events.back().nanoseconds = std::numeric_limits<std::int64_t>::max() / 2;
  EXPECT_EQ("the start is too long to be one", PredictionText(run, {}));
}

TEST(Prediction, HasTheThreadsOfTheCommandLine) {
  RecordedRun run = RunFromText(R"(
      a:
      b:
      start 0 400
      a start 0 0 0 150 150
      b start 0 150.1 151 250 250.1)");
  const std::string reproduced = "400 recorded, 400 reproduced, 200 predicted: a 150, b by -150";
  for (const std::vector<std::string>& options :
       {std::vector<std::string>{"--workers", "1"}, {"--workers=1"}}) {
    run.record.head.commandLine = {"HUB", "run"};
    run.record.head.commandLine.insert(run.record.head.commandLine.end(), options.begin(),
                                       options.end());
    EXPECT_EQ(reproduced, PredictionText(run, {"workers=2"}));
  }
}

TEST(Predictions, GoByHowTheFrameSleptAsTheHeadSays) {
  RecordedRun run = RunFromText("a:");
  EXPECT_EQ(Mode::kSleep, ModeOf(MakeTimeline(run)));
  run.record.head.sleep = RunHead::kEarlySleep;
  EXPECT_EQ(Mode::kEarlyEnd, ModeOf(MakeTimeline(run)));
}

}  // namespace
