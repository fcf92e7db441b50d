#include "workbench/check/WaitingPlugins.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace {

/// "0" depends on "1", "1" on "2", ...
StartGraph Chain(int plugins) {
  StartGraph graph;
  for (int i = 0; i < plugins; ++i) {
    graph.ids.push_back(std::to_string(i));
    std::vector<std::string>& others = graph.dependsOn[std::to_string(i)];
    if (i + 1 < plugins) others.push_back(std::to_string(i + 1));
  }
  return graph;
}

TEST(WaitingPlugins, AreNamedInTheGraphsOrder) {
  const StartGraph graph = Chain(4);
  WaitingPlugins waiting(graph);
  EXPECT_EQ("; 3 others wait behind it: \"0\", \"1\" and \"2\"", waiting.Clause({"3"}));
  EXPECT_EQ("; 1 other waits behind them: \"0\"", waiting.Clause({"1", "2"}));
  EXPECT_EQ("", waiting.Clause({"0"}));
}

TEST(WaitingPlugins, OfManyTheFirstFiveAreNamed) {
  const StartGraph graph = Chain(9);
  EXPECT_EQ("; 8 others wait behind it: \"0\", \"1\", \"2\", \"3\", \"4\" and 3 more",
            WaitingPlugins(graph).Clause({"8"}));
}

TEST(WaitingPlugins, AreNotNamedOnceTheLimitIsReached) {
  const StartGraph graph = Chain(4);
  WaitingPlugins waiting(graph, 4);
  EXPECT_NE("", waiting.Clause({"3"}));
  EXPECT_EQ("", waiting.Clause({"3"}));
  EXPECT_EQ("", waiting.Clause({"1"}));
}

}  // namespace
