#include "workbench/report/WhatIfText.h"

#include <gtest/gtest.h>

#include "tests/support/RunText.h"

namespace {

constexpr char kProduct[] = R"(
    base:
    slow: base
    quick:
    start 0 1000
    base start 0 0 0 300 300
    quick start 0 0 0 10 10
    slow start 400 400 400 850 850)";

constexpr auto kMode = FrameLooks::Mode::kSleep;

std::string WhatIf(const std::vector<std::string>& changes, const ReportStyle& style = {}) {
  const Timeline timeline = MakeTimeline(RunFromText(kProduct));
  return WhatIfText(timeline, Predict(timeline, kMode, ParseWhatIf(changes, timeline).changes),
                    style);
}

TEST(WhatIfTexts, ShowWhatThePhasesWouldTake) {
  EXPECT_EQ(
      "\n"
      "What if base=50%, workers=4\n"
      "  the start: 1000.0 ms recorded, 1000.0 ms scheduled anew (resolution 0.1 ms), 800.0 ms "
      "predicted: 200.0 ms (20.0%) less\n"
      "    critical path, in ms: base 150.0, slow 450.0\n"
      "    begin earlier or later, in ms:\n"
      "     -200.0  slow\n"
      "  the stop: nothing can be predicted: the run has no stop of plugins\n",
      WhatIf({"base=50%", "workers=4"}));
}

TEST(WhatIfTexts, SayWhenNothingWouldDiffer) {
  EXPECT_EQ(
      "\n"
      "What if quick=5\n"
      "  the start: 1000.0 ms recorded, 1000.0 ms scheduled anew (resolution 0.1 ms), 1000.0 ms "
      "predicted: no difference\n"
      "    critical path, in ms: base 300.0, slow 450.0\n"
      "  the stop: nothing can be predicted: the run has no stop of plugins\n",
      WhatIf({"quick=5"}));
}

TEST(WhatIfTexts, ShowHowFarOffALookCanMakeIt) {
  EXPECT_EQ(
      "\n"
      "What if base=195\n"
      "  the start: 1000.0 ms recorded, 1000.0 ms scheduled anew (resolution 0.1 ms), 800.0 ms "
      "predicted: 200.0 ms (20.0%) less\n"
      "    from 800.0 to 1000.0 ms when all plugins take 5% less or more\n"
      "    critical path, in ms: base 195.0, slow 450.0\n"
      "    begin earlier or later, in ms:\n"
      "     -200.0  slow\n"
      "  the stop: nothing can be predicted: the run has no stop of plugins\n",
      WhatIf({"base=195"}));
}

TEST(WhatIfTexts, AreBoldAndWrappedOnATerminal) {
  ReportStyle style;
  style.columns = 40;
  style.color = true;
  EXPECT_EQ(
      "\n"
      "\x1b[1mWhat if quick=5\x1b[0m\n"
      "  the start: 1000.0 ms recorded, 1000.0\n"
      "    ms scheduled anew (resolution 0.1\n"
      "    ms), 1000.0 ms predicted: no\n"
      "    difference\n"
      "    critical path, in ms: base 300.0,\n"
      "    slow 450.0\n"
      "  the stop: nothing can be predicted:\n"
      "    the run has no stop of plugins\n",
      WhatIf({"quick=5"}, style));
}

TEST(AdviceTexts, RankWhatEachPhaseWouldGain) {
  const Timeline timeline = MakeTimeline(RunFromText(kProduct));
  EXPECT_EQ(
      "\n"
      "What the start of 1000.0 ms would gain at most, in ms; gains do not add up, and those below "
      "0.1 ms are left out\n"
      "      400.0  if the work of slow took no time\n"
      "      400.0  if the work of base took no time\n"
      "      400.0  if slow did not depend on base\n"
      "      250.0  if nothing waited for the next look (poll=0)\n"
      "\n"
      "Advice for the stop\n"
      "  nothing can be predicted: the run has no stop of plugins\n",
      AdviceText(timeline, Advise(timeline, kMode), ReportStyle()));
}

TEST(AdviceTexts, SayWhenNothingGains) {
  const Timeline timeline = MakeTimeline(RunFromText(R"(
      a:
      b:
      start 0 200
      stop 300 500
      a start 0 0 0 200 200
      b start 0 0 0 200 200
      a stop 300 300 300 500 500
      b stop 300 300 300 500 500)"));
  EXPECT_EQ(
      "\n"
      "What the start of 200.0 ms would gain at most, in ms; gains do not add up, and those below "
      "0.1 ms are left out\n"
      "  no single change gains anything\n"
      "\n"
      "What the stop of 200.0 ms would gain at most, in ms; gains do not add up, and those below "
      "0.1 ms are left out\n"
      "  no single change gains anything\n",
      AdviceText(timeline, Advise(timeline, kMode), ReportStyle()));
}

}  // namespace
