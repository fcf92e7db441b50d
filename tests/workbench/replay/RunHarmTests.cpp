// What a fault does to a run, compared with a run without it.

#include "workbench/replay/RunHarm.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "tests/support/RunText.h"

namespace {

constexpr std::int64_t kApart = 10;
constexpr char kUsual[] =
    "a:\nb: a\nc: b\nd:\nstart 0 30\n"
    "a start 0 0 0 10 10\nd start 0 0 0 10 10\nb start 10 10 10 20 20\nc start 20 20 20 30 30\n";

Timeline RunOf(const std::string& text, std::int64_t up) {
  RecordedRun run = RunFromText(text);
  RunEvent event;
  event.kind = RunEvent::Kind::kUp;
  event.milliseconds = up;
  event.nanoseconds = run.record.events.back().nanoseconds;
  if (up != kUnknown) run.record.events.push_back(event);
  return MakeTimeline(run);
}

std::string Sentence(const Timeline& with, const std::string& does) {
  const Timeline without = RunOf(kUsual, 30);
  RunHarm harm = CompareRuns(without, with, "a", kApart);
  harm.end = "exit status 3";
  return HarmSentence(harm, without, does);
}

TEST(RunHarm, OfAFailureIsThatDependentsStartAnyway) {
  EXPECT_EQ("a fails: up after 30 ms; 1 plugin starts although it failed: b; exit status 3",
            Sentence(RunOf("a:\nb: a\nc: b\nd:\nstart 0 30\n"
                           "a start 0 0 0 10 10 failed\nd start 0 0 0 10 10\n"
                           "b start 10 10 10 20 20\nc start 20 20 20 30 30\n",
                           30),
                     "fails"));
}

TEST(RunHarm, OfAHangIsWhoNeverStarts) {
  EXPECT_EQ("a hangs: never up; 2 plugins never start: b and c; exit status 3",
            Sentence(RunOf("a:\nb: a\nc: b\nd:\nstart 0 30\n"
                           "a start 0 0 0 - -\nd start 0 0 0 10 10\n",
                           kUnknown),
                     "hangs"));
}

TEST(RunHarm, OfDelayIsWhoOfTheDependentsStartsLater) {
  EXPECT_EQ(
      "a takes 50 ms longer: up after 80 ms (+50); 2 plugins start later: b and c, by at most 50 "
      "ms; exit status 3",
      Sentence(RunOf("a:\nb: a\nc: b\nd:\nstart 0 80\n"
                     "a start 0 0 0 60 60\nd start 40 40 40 50 50\n"
                     "b start 60 60 60 70 70\nc start 70 70 70 80 80\n",
                     80),
               "takes 50 ms longer"));
}

TEST(RunHarm, IsNotWhatDiffersWithoutAFaultToo) {
  const Timeline a = RunOf(kUsual, 30);
  const Timeline b =
      RunOf("a:\nb: a\nstart 0 30\na start 0 0 0 10 10\nb start 17 17 17 20 20\n", 30);
  EXPECT_EQ(7, BeginsApart(a, b));
  EXPECT_TRUE(CompareRuns(a, b, "a", 7).later.empty());
  EXPECT_EQ(1U, CompareRuns(a, b, "a", 6).later.size());
}

TEST(RunHarm, OfAStopThatDoesNotEndIsNamed) {
  const Timeline hung = RunOf(std::string(kUsual) + "stop 40 -\na stop 40 40 40 - -\n", 30);
  EXPECT_EQ("a hangs: up after 30 ms; the stop hangs; exit status 3", Sentence(hung, "hangs"));
}

TEST(RunHarm, IsSortedByWhoNeverStartsThenByWhoFails) {
  const Timeline without = RunOf(kUsual, 30);
  std::vector<RunHarm> harms(3);
  harms[0].plugin = 0;
  harms[0].up = 30;
  harms[1].plugin = 1;
  harms[1].up = 30;
  harms[1].begunAnyway = {2};
  harms[2].plugin = 3;
  harms[2].neverBegun = {1};
  SortByHarm(harms);
  EXPECT_EQ(
      "Plugin  Never start  Start anyway  Up\n"
      "d                 1             -  never up\n"
      "b                 -             1  up after 30 ms\n"
      "a                 -             -  up after 30 ms\n",
      HarmTable(harms, without));
}

}  // namespace
