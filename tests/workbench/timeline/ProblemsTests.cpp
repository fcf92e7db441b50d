#include "workbench/timeline/Problems.h"

#include <gtest/gtest.h>

#include <sstream>

#include "tests/support/RunText.h"

namespace {

std::string Names(const Timeline& timeline, const std::vector<std::size_t>& plugins) {
  std::string names;
  for (const std::size_t plugin : plugins) names += " " + timeline.plugins[plugin].id;
  return names;
}

std::string NotReturnedText(const Timeline& timeline) {
  constexpr const char* where[] = {"loading", "Init", "counting", "UnInit", "unmapping"};
  std::ostringstream text;
  for (const NotReturned& plugin : FindNotReturned(timeline)) {
    text << timeline.plugins[plugin.plugin].id << " " << where[static_cast<int>(plugin.where)]
         << " since " << plugin.since / 1'000'000 << ", waiting:" << Names(timeline, plugin.waiting)
         << "\n";
  }
  return text.str();
}

std::string StartedAnywayText(const Timeline& timeline) {
  std::ostringstream text;
  for (const StartedAnyway& plugin : FindStartedAnyway(timeline)) {
    text << timeline.plugins[plugin.plugin].id << " after" << Names(timeline, plugin.failed)
         << "\n";
  }
  return text.str();
}

TEST(Problems, NameWhoNeverReturnedAndWhoWaits) {
  const Timeline timeline = MakeTimeline(RunFromText(R"(
    late:
    slow:
    good:
    next: slow
    last: next good
    other: good
    start 0 -
    late start 0 5 - - -
    slow start 0 1 2 - -
    good start 0 1 2 3 4
    other start 200 200 200 210 210)"));
  EXPECT_EQ("slow Init since 2, waiting: next last\nlate loading since 5, waiting:\n",
            NotReturnedText(timeline));
  EXPECT_EQ("", Names(timeline, FindNeverBegun(timeline, timeline.start)));
}

TEST(Problems, TellUnInitFromUnmapping) {
  const Timeline timeline = MakeTimeline(RunFromText(R"(
    a:
    b:
    stop 1000 -
    a stop 1000 1001 1002 - -
    b stop 1000 1001 1002 1003 -)"));
  EXPECT_EQ("a UnInit since 1002, waiting:\nb unmapping since 1003, waiting:\n",
            NotReturnedText(timeline));
}

TEST(Problems, AreNoneForAPluginThatReturnedAfterTheStart) {
  const Timeline timeline = MakeTimeline(RunFromText(R"(
    a:
    start 0 400
    a start 0 1 2 700 701)"));
  EXPECT_EQ("", NotReturnedText(timeline));
}

TEST(Problems, NameWhoStartedAlthoughADependencyHadFailed) {
  const Timeline timeline = MakeTimeline(RunFromText(R"(
    bad:
    gone:
    good:
    both: bad gone good
    one: good bad
    none: good
    never: bad
    start 0 400
    bad start 0 1 2 3 4 failed
    gone start 0 1 - - 4 not-loaded
    good start 0 1 2 3 4
    both start 200 200 200 201 201
    one start 200 200 200 201 201 failed
    none start 200 200 200 201 201)"));
  EXPECT_EQ("both after bad gone\none after bad\n", StartedAnywayText(timeline));
}

TEST(Problems, NameWhoNeverBeganBecauseOfACycle) {
  const Timeline timeline = MakeTimeline(RunFromText(R"(
    a: b
    b: a
    c: b
    d:
    start 0 -
    d start 0 1 2 3 4)"));
  EXPECT_EQ(" a b c", Names(timeline, FindNeverBegun(timeline, timeline.start)));
  EXPECT_EQ("", Names(timeline, FindNeverBegun(timeline, timeline.stop)));
}

TEST(Problems, TellAnInitThatIsOverFromOneThatRuns) {
  const Timeline timeline =
      MakeTimeline(RunFromText("a:\nb:\nstart 0 -\na start 0 0 1 5 -\n"
                               "b start 0 0 1 - -"));
  EXPECT_EQ("b Init since 1, waiting:\na counting since 5, waiting:\n", NotReturnedText(timeline));
}

}  // namespace
