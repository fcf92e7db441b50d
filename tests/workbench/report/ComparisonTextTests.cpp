#include "workbench/report/ComparisonText.h"

#include <gtest/gtest.h>

namespace {

constexpr std::int64_t kMs = 1'000'000;

TEST(ComparisonTexts, ShowEveryDifference) {
  Comparison comparison;
  comparison.runs = 3;
  comparison.phases = {{"start", 2600 * kMs, 1400 * kMs, 1300 * kMs, 1500 * kMs},
                       {"stop", 200 * kMs, 201 * kMs, 200 * kMs, 202 * kMs}};
  comparison.slower = {{"video.server", 1500 * kMs, 300 * kMs, 290 * kMs, 310 * kMs}};
  comparison.faster = {{"\x1b", 10 * kMs, 30 * kMs, 30 * kMs, 30 * kMs}};
  comparison.added = {"n1", "n2"};
  comparison.gone = {"g"};
  comparison.ontoPath = {"video.server"};
  comparison.offPath = {"map.server"};
  comparison.results = {{"x", PluginSpan::Result::kOk, PluginSpan::Result::kFailed}};
  EXPECT_EQ(
      "Against 3 earlier runs\n"
      "  the start of the plugins: 2600.0 ms, before 1400.0 ms (1300.0 to 1500.0): 1200.0 ms "
      "slower\n"
      "  the stop of the plugins: 200.0 ms, before 201.0 ms (200.0 to 202.0): no change\n"
      "Slower\n"
      "  video.server: 1500.0 ms, before 300.0 ms (290.0 to 310.0): 1200.0 ms slower\n"
      "Faster\n"
      "  \\x1b: 10.0 ms, before 30.0 ms (30.0 to 30.0): 20.0 ms faster\n"
      "New\n"
      "  n1 and n2\n"
      "Gone\n"
      "  g\n"
      "Onto the critical path\n"
      "  video.server\n"
      "Off the critical path\n"
      "  map.server\n"
      "Other results\n"
      "  x failed in Init; before, it started\n",
      ComparisonText(comparison, 1));
}

TEST(ComparisonTexts, OfOneEarlierRunHaveNoNoiseBand) {
  Comparison comparison;
  comparison.runs = 1;
  comparison.phases = {{"start", 400 * kMs, 200 * kMs, 200 * kMs, 200 * kMs}};
  EXPECT_EQ(
      "Against 1 earlier run\n"
      "  the start of the plugins: 400 ms, before 200 ms: 200 ms slower\n",
      ComparisonText(comparison, kMs));
}

TEST(ComparisonTexts, SayThatTheFrameSleptOtherwise) {
  Comparison comparison;
  comparison.runs = 1;
  comparison.sleepsDiffer = true;
  EXPECT_EQ(
      "Against 1 earlier run\n"
      "  note: not all of these runs had --full-sleep, which alone makes a start longer\n",
      ComparisonText(comparison, kMs));
}

TEST(ComparisonTexts, SayWhichPhasesAreNotCompared) {
  Comparison comparison;
  comparison.incomplete = {"start"};
  comparison.runs = 1;
  EXPECT_EQ(
      "Against 1 earlier run\n"
      "  the start of the plugins: not compared, since this run or the earlier one does not have "
      "it from begin to end\n",
      ComparisonText(comparison, kMs));
  comparison.runs = 2;
  EXPECT_EQ(
      "Against 2 earlier runs\n"
      "  the start of the plugins: not compared, since this run or the earlier ones do not have "
      "it from begin to end\n",
      ComparisonText(comparison, kMs));
}

}  // namespace
