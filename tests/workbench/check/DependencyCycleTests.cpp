// TEV307 on graphs that are too large for a case file.

#include <gmock/gmock.h>

#include <string>
#include <vector>

#include "workbench/check/CheckedProduct.h"
#include "workbench/check/Rule.h"

using testing::AllOf;
using testing::Each;
using testing::ElementsAre;
using testing::EndsWith;
using testing::HasSubstr;
using testing::SizeIs;
using testing::StartsWith;
using testing::UnorderedElementsAreArray;

namespace {

/// "0", "1", ...
std::vector<std::string> Ids(std::size_t plugins) {
  std::vector<std::string> ids;
  for (std::size_t i = 0; i < plugins; ++i) ids.push_back(std::to_string(i));
  return ids;
}

/// A product of plugins "0", "1", ... each of which depends on the `reach` next ones, in a ring.
class Ring {
 public:
  Ring(std::size_t plugins, std::size_t reach) {
    m_product.files.emplace_back();
    StartGraph& graph = m_product.graph;
    graph.ids = Ids(plugins);
    for (std::size_t i = 0; i < plugins; ++i) {
      std::vector<std::string>& others = graph.dependsOn[std::to_string(i)];
      for (std::size_t j = 1; j <= reach; ++j) others.push_back(std::to_string((i + j) % plugins));
    }
  }

  RuleFindings Findings() const {
    RuleFindings findings;
    FindRule("TEV307")->check(m_product, findings);
    return findings;
  }

 private:
  CheckedProduct m_product;
};

TEST(DependencyCycle, ALongChainIsShortenedAndSoAreItsChoices) {
  const RuleFindings findings = Ring(20000, 1).Findings();
  ASSERT_THAT(findings, SizeIs(1));
  EXPECT_THAT(findings.front().message,
              StartsWith(CycleText(Ids(20000)) +
                         ": these wait for each other for ever, and the start never ends; to break "
                         "the cycle, remove one dependency: that of "));
  EXPECT_THAT(findings.front().message, EndsWith("; there are other choices"));
}

TEST(DependencyCycle, EveryDependencyIsARelatedPlaceInTheOrderOfTheChain) {
  const RuleFindings findings = Ring(30, 1).Findings();
  ASSERT_THAT(findings, SizeIs(1));
  const std::vector<RelatedPlace>& related = findings.front().related;
  ASSERT_THAT(related, SizeIs(30));
  std::size_t from = std::stoul(related.front().message.substr(1));
  for (std::size_t i = 0; i < 30; ++i, ++from) {
    EXPECT_EQ("\"" + std::to_string(from % 30) + "\" depends on \"" +
                  std::to_string((from + 1) % 30) + "\"" +
                  (i == 0 ? "; the first choice to remove" : ""),
              related[i].message);
  }
}

TEST(DependencyCycle, EverySetToRemoveThatWasFoundIsAChoice) {
  const RuleFindings ring = Ring(30, 1).Findings();
  ASSERT_THAT(ring, SizeIs(1));
  std::vector<std::vector<std::size_t>> each;
  for (std::size_t i = 0; i < 30; ++i) each.push_back({i});
  EXPECT_THAT(ring.front().choices, UnorderedElementsAreArray(each));
  EXPECT_EQ(each.front(), ring.front().choices.front());

  const RuleFindings four = Ring(4, 3).Findings();  // each of the 24 orders of the four is one
  ASSERT_THAT(four, SizeIs(1));
  EXPECT_THAT(four.front().message, EndsWith("; there are 23 other choices"));
  EXPECT_THAT(four.front().choices, AllOf(SizeIs(24), Each(SizeIs(6))));
  EXPECT_THAT(four.front().choices.front(), ElementsAre(0, 1, 2, 3, 4, 5));
}

TEST(DependencyCycle, ChoicesAreLimited) {
  const RuleFindings findings = Ring(700, 1).Findings();
  ASSERT_THAT(findings, SizeIs(1));
  EXPECT_THAT(findings.front().related, SizeIs(700));
  EXPECT_THAT(findings.front().choices, SizeIs(500));
}

TEST(DependencyCycle, ACutThatIsNotProvenSmallestSaysSo) {
  const RuleFindings findings = Ring(301, 150).Findings();
  ASSERT_THAT(findings, SizeIs(1));
  const std::string& message = findings.front().message;
  EXPECT_THAT(message, HasSubstr("; to break the cycles, remove 11325 dependencies: that of "));
  EXPECT_THAT(message,
              HasSubstr(" and 11320 more; whether fewer than 11325 are enough is not known, "
                        "but at least "));
}

}  // namespace
