#include "workbench/report/WhyText.h"

#include <gtest/gtest.h>

#include <algorithm>

#include "tests/support/RunText.h"

namespace {

std::string Places(const std::string& plugin, const std::string& on) {
  return plugin + ".xml:" + on;
}

std::string Nowhere(const std::string& /*plugin*/, const std::string& /*on*/) {
  return std::string();
}

std::size_t Position(const Timeline& timeline, const std::string& id) {
  std::size_t at = 0;
  while (timeline.plugins.at(at).id != id) ++at;
  return at;
}

std::string Why(RecordedRun run, const std::string& id, const DeclaredAt& places = Places) {
  const Timeline timeline = MakeTimeline(std::move(run));
  return WhyText(timeline, Position(timeline, id), places);
}

std::string WhyBefore(RecordedRun run, const std::string& id, const std::string& other,
                      const DeclaredAt& places = Places) {
  const Timeline timeline = MakeTimeline(std::move(run));
  return WhyBeforeText(timeline, Position(timeline, id), Position(timeline, other), places);
}

constexpr char kRun[] = R"(
    config:
    clock:
    storage: config clock
    video: storage
    map: storage
    start 100 1800
    clock start 100 101 101 110 110
    config start 101 102 102 140 141
    storage start 300 303 303 440 441
    map start 500 502 502 510 511
    video start 500 501 501 1600 1601)";

TEST(WhyTexts, ShowWhatReleasedEachPluginBackToTheBegin) {
  EXPECT_EQ(
      "video began 401.0 ms after the start of the plugins had begun\n"
      "  video waited for storage, done at 341.0 ms  (video.xml:storage)\n"
      "    then 59.0 ms for the frame's look, 1.0 ms for a thread, and worked 1100.0 ms\n"
      "  storage waited for config, done at 41.0 ms, the last of 2  (storage.xml:config)\n"
      "    then 159.0 ms for the frame's look, 3.0 ms for a thread, and worked 138.0 ms\n"
      "  config depends on nothing\n"
      "    it began 2.0 ms after the start had begun, and worked 39.0 ms\n",
      Why(RunFromText(kRun), "video"));
}

TEST(WhyTexts, HaveNoPlacesWhereTheseAreNotKnown) {
  EXPECT_EQ(
      "storage began 203.0 ms after the start of the plugins had begun\n"
      "  storage waited for config, done at 41.0 ms, the last of 2\n"
      "    then 159.0 ms for the frame's look, 3.0 ms for a thread, and worked 138.0 ms\n"
      "  config depends on nothing\n"
      "    it began 2.0 ms after the start had begun, and worked 39.0 ms\n",
      Why(RunFromText(kRun), "storage", Nowhere));
}

TEST(WhyTexts, DoNotDivideTheWaitingThatALogDoesNotDivide) {
  RecordedRun run = RunFromText("a:\nstart 0 200\na start - 12 12 40 41");
  run.resolution = 1'000'000;
  EXPECT_EQ(
      "a began 12 ms after the start of the plugins had begun\n"
      "  a depends on nothing\n"
      "    it began 12 ms after the start had begun, and worked 29 ms\n",
      Why(run, "a"));
  run.knowsEdges = false;
  EXPECT_EQ(
      "a began 12 ms after the start of the plugins had begun\n"
      "  what it waited for: not known\n",
      Why(run, "a"));
}

TEST(WhyTexts, SayHowTheWorkFailed) {
  const RecordedRun run = RunFromText(R"(
      a:
      b:
      start 0 200
      a start 0 0 0 40 41 failed its Init returned false
      b start 0 0 - - 3 not-loaded)");
  EXPECT_EQ(
      "a began 0.0 ms after the start of the plugins had begun\n"
      "  a depends on nothing\n"
      "    it began 0.0 ms after the start had begun, and worked 41.0 ms; its Init failed\n",
      Why(run, "a"));
  EXPECT_EQ(
      "b began 0.0 ms after the start of the plugins had begun\n"
      "  b depends on nothing\n"
      "    it began 0.0 ms after the start had begun, and worked 3.0 ms; it was not loaded\n",
      Why(run, "b"));
}

TEST(WhyTexts, OfAPluginThatNeverBeganNameWhatItWaitsFor) {
  EXPECT_EQ(
      "last never began in this run\n"
      "  it waits for hangs, which began and never returned  (last.xml:hangs)\n"
      "  it waits for loop, which never began  (last.xml:loop)\n",
      Why(RunFromText(R"(
        hangs:
        good:
        loop: loop
        last: hangs good loop
        start 0 -
        hangs start 0 1 2 - -
        good start 0 1 2 3 4)"),
          "last"));
}

TEST(WhyTexts, OfAPluginInACycleShowTheCycle) {
  EXPECT_EQ(
      "a never began in this run\n"
      "  it waits for b, which never began  (a.xml:b)\n"
      "  b depends on c  (b.xml:c)\n"
      "  c depends on a  (c.xml:a)\n",
      Why(RunFromText("a: b\nb: c\nc: a\nstart 0 -"), "a"));
}

TEST(WhyTexts, OfAPluginThatWorksSayThatItHasNotEnded) {
  EXPECT_EQ(
      "a began 1.0 ms after the start of the plugins had begun\n"
      "  a depends on nothing\n"
      "    it began 1.0 ms after the start had begun, and worked without an end until "
      "the record ended\n",
      Why(RunFromText("a:\nstart 0 -\na start 0 1 2 - -"), "a"));
}

TEST(WhyTexts, BeforeAnyRunShowAllThatAPluginWaitsFor) {
  const RecordedRun graph = RunFromText("a:\nb: a\nc: a b\nd: c");
  EXPECT_EQ(
      "d starts after 3 plugins, because\n"
      "  d depends on c  (d.xml:c)\n"
      "  c depends on a  (c.xml:a)\n"
      "  c depends on b  (c.xml:b)\n"
      "  b depends on a  (b.xml:a)\n",
      Why(graph, "d"));
  EXPECT_EQ("a depends on nothing: it starts first\n", Why(graph, "a"));
}

TEST(WhyTexts, ShowAtMostFortyDependencies) {
  std::string text = "p0:\n";
  for (int i = 1; i <= 45; ++i)
    text += "p" + std::to_string(i) + ": p" + std::to_string(i - 1) + "\n";
  const std::string why = Why(RunFromText(text), "p45");
  EXPECT_EQ(1 + 40 + 1, std::count(why.begin(), why.end(), '\n'));
  EXPECT_EQ("  p6 depends on p5  (p6.xml:p5)\n  and 5 more\n", why.substr(why.rfind("  p6 ")));
}

TEST(WhyTexts, OfTwoShowTheShortestChainWhicheverComesFirst) {
  const std::string chain =
      "video starts after config, because\n"
      "  video depends on storage  (video.xml:storage)\n"
      "  storage depends on config  (storage.xml:config)\n"
      "In this run config was done at 41.0 ms, and video began at 401.0 ms\n"
      "  video was released by storage  (video.xml:storage)\n"
      "  config was among the plugins that it waited for in this way\n";
  EXPECT_EQ(chain, WhyBefore(RunFromText(kRun), "video", "config"));
  EXPECT_EQ(chain, WhyBefore(RunFromText(kRun), "config", "video"));
}

TEST(WhyTexts, OfTwoSayThatTheEarlierDidNotReleaseTheLater) {
  EXPECT_EQ(
      "storage starts after clock, because\n"
      "  storage depends on clock  (storage.xml:clock)\n"
      "In this run clock was done at 10.0 ms, and storage began at 203.0 ms\n"
      "  storage was released by config  (storage.xml:config)\n"
      "  clock was not among the plugins that it waited for in this way\n",
      WhyBefore(RunFromText(kRun), "storage", "clock"));
}

TEST(WhyTexts, OfTwoThatNothingOrdersSayWhatHappened) {
  EXPECT_EQ(
      "Nothing orders map and video: neither depends on the other, directly or through others\n"
      "In this run video began first, at 401.0 ms, and map while it worked, at 402.0 ms; that may "
      "change "
      "from run to run\n",
      WhyBefore(RunFromText(kRun), "map", "video"));
  const RecordedRun run =
      RunFromText("a:\nb:\nc:\nstart 0 200\na start 0 0 0 9 9\nb start 0 9 9 20 20");
  EXPECT_EQ(
      "Nothing orders b and a: neither depends on the other, directly or through others\n"
      "In this run a was done before b began, and that may change from run to run\n",
      WhyBefore(run, "b", "a"));
  EXPECT_EQ(
      "Nothing orders a and c: neither depends on the other, directly or through others\n"
      "In this run c never began\n",
      WhyBefore(run, "a", "c"));
}

TEST(WhyTexts, OfTwoThatNeverBeganSaySo) {
  EXPECT_EQ(
      "c starts after b, because\n"
      "  c depends on a  (c.xml:a)\n"
      "  a depends on b  (a.xml:b)\n"
      "In this run neither of them began\n",
      WhyBefore(RunFromText("a: b\nb: a\nc: a\nstart 0 -"), "c", "b"));
}

TEST(WhyTexts, OfTwoBeforeAnyRunSayNothingOfARun) {
  EXPECT_EQ("b starts after a, because\n  b depends on a\n",
            WhyBefore(RunFromText("a:\nb: a"), "a", "b", Nowhere));
}

TEST(WhyTexts, EscapeNamesAndPlaces) {
  RecordedRun run = RunFromText("a:\nb: a");
  run.record.plugins[0].id = run.record.plugins[1].dependsOn[0] = "\x1b[2J";
  const std::string why =
      Why(run, "b", [](const std::string&, const std::string&) { return std::string("\x1b]0;"); });
  EXPECT_EQ("b starts after 1 plugin, because\n  b depends on \\x1b[2J  (\\x1b]0;)\n", why);
}

}  // namespace
