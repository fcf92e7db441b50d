#include "workbench/shake/ShakePlan.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <set>

namespace {

using Strings = std::vector<std::string>;

std::vector<Strings> Options(const std::vector<PlannedRun>& plan) {
  std::vector<Strings> options;
  for (const PlannedRun& run : plan) options.push_back(run.options);
  return options;
}

TEST(ShakePlan, AlternatesOppositeOrdersAndLatePlugins) {
  const std::vector<PlannedRun> plan = PlanRuns({"a", "b"}, 5, 4, 300);
  ASSERT_EQ(5U, plan.size());
  EXPECT_EQ((Strings{"--shuffle", "4", "--shuffle-over", "300"}), plan[0].options);
  EXPECT_EQ((Strings{"--shuffle", "5", "--shuffle-over", "300"}), plan[1].options);
  EXPECT_EQ((Strings{"--shuffle", "6", "--shuffle-over", "300"}), plan[4].options);
  EXPECT_EQ((std::set<std::string>{"a", "b"}),
            (std::set<std::string>{plan[2].alone, plan[3].alone}));
}

TEST(ShakePlan, DelaysEachPluginOnceAmongTheLateOnes) {
  Strings plugins;
  Strings wanted;
  for (char c = 'a'; c <= 'k'; ++c) {
    plugins.emplace_back(1, c);
    wanted.push_back(plugins.back() + "=300");
  }
  Strings delayed;
  for (const Strings& options : Options(PlanRuns(plugins, 8, 0, 300))) {
    if (options.front() != "--delay") continue;
    for (std::size_t i = 1; i < options.size(); i += 2) delayed.push_back(options[i]);
  }
  std::sort(delayed.begin(), delayed.end());
  EXPECT_EQ(wanted, delayed);
}

TEST(ShakePlan, HasAsManyRunsAsAskedFor) {
  for (const std::size_t runs : {1U, 2U, 3U, 7U, 20U}) {
    EXPECT_EQ(runs, PlanRuns({"a", "b", "c"}, runs, 0, 300).size());
    EXPECT_EQ(runs, PlanRuns({}, runs, 0, 300).size());
  }
}

TEST(ShakePlan, IsTheSameForTheSameSeedAndAnotherForAnother) {
  const Strings plugins = {"a", "b", "c", "d", "e"};
  EXPECT_EQ(PlanRuns(plugins, 10, 2, 300), PlanRuns(plugins, 10, 2, 300));
  EXPECT_NE(Options(PlanRuns(plugins, 10, 2, 300)), Options(PlanRuns(plugins, 10, 8, 300)));
}

TEST(LongestDelay, LeavesTheOthersTimeToStart) {
  EXPECT_EQ(300, LongestDelay(0));
  EXPECT_EQ(1700, LongestDelay(1000));
  EXPECT_EQ(20'000, LongestDelay(60'000));
}

TEST(CommandText, QuotesWhatAShellWouldSplit) {
  EXPECT_EQ(R"(--bin "/a b" --delay x=1 "")", CommandText({"--bin", "/a b", "--delay", "x=1", ""}));
}

}  // namespace
