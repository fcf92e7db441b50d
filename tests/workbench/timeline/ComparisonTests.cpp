#include "workbench/timeline/Comparison.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/support/RunText.h"

using testing::ElementsAre;
using testing::IsEmpty;

namespace {

Timeline Laid(const std::string& text) {
  return MakeTimeline(RunFromText(text));
}

/// A start of 800 ms with one plugin `a` that works so long.
Timeline RunOf(const std::string& ms) {
  return Laid("a:\nstart 0 800\na start 0 0 0 " + ms + " " + ms);
}

std::vector<std::string> Texts(const std::vector<TimeChange>& changes) {
  std::vector<std::string> texts;
  for (const TimeChange& change : changes) {
    texts.push_back(change.what + " " + std::to_string(change.now / 1'000'000) + ", before " +
                    std::to_string(change.before / 1'000'000) + " (" +
                    std::to_string(change.low / 1'000'000) + " to " +
                    std::to_string(change.high / 1'000'000) + ")");
  }
  return texts;
}

TEST(Comparisons, TellRunsInWhichTheFrameSleptOtherwise) {
  RecordedRun run = RunFromText("a:\nstart 0 200\na start 0 0 0 9 9");
  const Timeline full = MakeTimeline(run);
  run.record.head.sleep = RunHead::kEarlySleep;
  const Timeline early = MakeTimeline(run);
  run.source = RecordedRun::Source::kLog;
  const Timeline log = MakeTimeline(run);
  EXPECT_FALSE(Compare(early, {early}).sleepsDiffer);
  EXPECT_TRUE(Compare(early, {early, full}).sleepsDiffer);
  EXPECT_TRUE(Compare(full, {early}).sleepsDiffer);
  EXPECT_FALSE(Compare(full, {log}).sleepsDiffer);
  EXPECT_FALSE(Compare(log, {full}).sleepsDiffer);
}

TEST(Comparisons, ShowSlowerAndFasterPluginsTheGreatestDifferenceFirst) {
  const Comparison comparison = Compare(Laid(R"(
                                          a:
                                          b:
                                          c:
                                          d:
                                          start 0 400
                                          stop 1000 1400
                                          a start 0 0 0 120 120
                                          b start 0 0 0 200 200
                                          c start 0 0 0 50 50
                                          d start 0 0 0 60 60)"),
                                        {Laid(R"(
                                          a:
                                          b:
                                          c:
                                          d:
                                          start 0 200
                                          stop 1000 1200
                                          a start 0 0 0 100 100
                                          b start 0 0 0 100 100
                                          c start 0 0 0 100 100
                                          d start 0 0 0 61 61)")});
  EXPECT_EQ(1U, comparison.runs);
  EXPECT_THAT(Texts(comparison.phases), ElementsAre("start 400, before 200 (200 to 200)",
                                                    "stop 400, before 200 (200 to 200)"));
  EXPECT_THAT(Texts(comparison.slower),
              ElementsAre("b 200, before 100 (100 to 100)", "a 120, before 100 (100 to 100)"));
  EXPECT_THAT(Texts(comparison.faster), ElementsAre("c 50, before 100 (100 to 100)"));
}

TEST(Comparisons, TakeTimesWithinThoseOfEarlierRunsForNoise) {
  const std::vector<Timeline> earlier = {RunOf("100"), RunOf("140"), RunOf("110")};
  EXPECT_THAT(Compare(RunOf("140"), earlier).slower, IsEmpty());
  EXPECT_THAT(Texts(Compare(RunOf("141"), earlier).slower),
              ElementsAre("a 141, before 110 (100 to 140)"));
  EXPECT_THAT(Compare(RunOf("100"), earlier).faster, IsEmpty());
  EXPECT_THAT(Texts(Compare(RunOf("99"), earlier).faster),
              ElementsAre("a 99, before 110 (100 to 140)"));
}

TEST(Comparisons, TakeSmallDifferencesForNoise) {
  EXPECT_THAT(Compare(RunOf("11.9"), {RunOf("10")}).slower, IsEmpty());
  EXPECT_EQ(1U, Compare(RunOf("12"), {RunOf("10")}).slower.size());
  EXPECT_THAT(Compare(RunOf("104.9"), {RunOf("100")}).slower, IsEmpty());
  EXPECT_EQ(1U, Compare(RunOf("105"), {RunOf("100")}).slower.size());
  EXPECT_THAT(Compare(RunOf("95.1"), {RunOf("100")}).faster, IsEmpty());
  EXPECT_EQ(1U, Compare(RunOf("95"), {RunOf("100")}).faster.size());
}

TEST(Comparisons, NameNewAndGonePlugins) {
  const Comparison comparison = Compare(Laid("a:\nb:\nc:\nstart 0 200"),
                                        {Laid("b:\nstart 0 200"), Laid("c:\nd:\nstart 0 200")});
  EXPECT_THAT(comparison.added, ElementsAre("a"));
  EXPECT_THAT(comparison.gone, ElementsAre("d"));
}

TEST(Comparisons, NameWhatCameOntoTheCriticalPathAndWhatLeftIt) {
  const std::string slowA = "a:\nb:\nstart 0 200\na start 0 0 0 90 90\nb start 0 0 0 10 10";
  const std::string slowB = "a:\nb:\nstart 0 200\na start 0 0 0 10 10\nb start 0 0 0 90 90";
  const Comparison comparison = Compare(Laid(slowA), {Laid(slowB)});
  EXPECT_THAT(comparison.ontoPath, ElementsAre("a"));
  EXPECT_THAT(comparison.offPath, ElementsAre("b"));
  const Comparison sometimes = Compare(Laid(slowA), {Laid(slowA), Laid(slowB)});
  EXPECT_THAT(sometimes.ontoPath, IsEmpty());
  EXPECT_THAT(sometimes.offPath, IsEmpty());
}

TEST(Comparisons, SayNothingOfPathsThatARunDoesNotKnow) {
  RecordedRun run = RunFromText("a:\nstart 0 200\na start 0 0 0 90 90");
  const Timeline known = MakeTimeline(run);
  run.knowsEdges = false;
  const Timeline unknown = MakeTimeline(run);
  EXPECT_THAT(Compare(unknown, {known}).offPath, IsEmpty());
  EXPECT_THAT(Compare(known, {unknown}).ontoPath, IsEmpty());
}

TEST(Comparisons, NameResultsThatDifferFromTheLastEarlierRun) {
  const std::string good = "a:\nstart 0 200\na start 0 0 0 90 90";
  const std::string bad = "a:\nstart 0 200\na start 0 0 0 90 90 failed";
  EXPECT_THAT(Compare(Laid(bad), {Laid(good), Laid(bad)}).results, IsEmpty());
  const Comparison comparison = Compare(Laid(bad), {Laid(bad), Laid(good)});
  ASSERT_EQ(1U, comparison.results.size());
  EXPECT_EQ("a", comparison.results[0].plugin);
  EXPECT_EQ(PluginSpan::Result::kOk, comparison.results[0].before);
  EXPECT_EQ(PluginSpan::Result::kFailed, comparison.results[0].now);
}

TEST(Comparisons, OfAStartThatIsNotCompleteSaySo) {
  const Timeline hung = Laid("a:\nb:\nstart 0 700\na start 0 0 0 400 400\nb start 0 0 0 - -");
  const Timeline good = Laid("a:\nb:\nstart 0 900\na start 0 0 0 400 400\nb start 0 0 0 9 9");
  for (const Comparison& comparison : {Compare(hung, {good}), Compare(good, {hung})}) {
    EXPECT_THAT(Texts(comparison.phases), IsEmpty());
    EXPECT_THAT(comparison.incomplete, ElementsAre("start", "stop"));
  }
}

TEST(Comparisons, TakeWhatTheClocksDoNotResolveForNoise) {
  RecordedRun coarse = RunFromText("a:\nstart 0 2000\na start 0 0 0 2000 2000");
  coarse.resolution = 1'000'000'000;
  const Comparison comparison = Compare(MakeTimeline(std::move(coarse)), {RunOf("1501")});
  EXPECT_THAT(Texts(comparison.slower), IsEmpty());
}

TEST(Comparisons, LeaveOutWhatDidNotEnd) {
  const Comparison comparison = Compare(Laid("a:\nstart 0 -\na start 0 0 0 - -"), {RunOf("100")});
  EXPECT_THAT(comparison.phases, IsEmpty());
  EXPECT_THAT(comparison.slower, IsEmpty());
  EXPECT_THAT(comparison.faster, IsEmpty());
}

}  // namespace
