#include "workbench/check/RuleText.h"

#include <gtest/gtest.h>

#include "tests/workbench/check/Reports.h"

namespace {

/// The IDs of the chosen rules, or the problem.
std::string Chosen(const std::string& select, const std::string& ignore = "") {
  const RuleChoice choice = ChooseRules(SampleRules(), select, ignore);
  std::string text = choice.problem;
  for (const Rule* rule : choice.rules) text += (text.empty() ? "" : " ") + std::string(rule->id);
  return text;
}

TEST(RuleList, IsGroupedByAreaAndAligned) {
  EXPECT_EQ(R"(files
  TEV101  error    model file is missing
  TEV106  error    unknown element

plugins
  TEV207  warning  plugin's versions in another order as texts

dependencies
  TEV312  note     dependency that nothing uses
)",
            RuleList(SampleRules()));
}

TEST(RuleList, IsEmptyWithoutRules) {
  EXPECT_EQ("", RuleList({}));
}

TEST(AreaOf, IsNamedByTheFirstDigit) {
  EXPECT_EQ("files plugins dependencies libraries catalogue portal ",
            AreaOf("TEV199") + " " + AreaOf("TEV201") + " " + AreaOf("TEV301") + " " +
                AreaOf("TEV401") + " " + AreaOf("TEV501") + " " + AreaOf("TEV601") + " " +
                AreaOf("TEV701"));
}

TEST(ExplainedRule, IsWrappedButForItsExample) {
  EXPECT_EQ(R"(TEV106: error: unknown element

The frame looks for elements by their
names. An element <X> of another name,
and all that lies in it, is not read.

A {list} of [such](elements) reads as
*empty*.

Example:

    <ProductDescription>
      <Plugns/>

    </ProductDescription>

Remedy: Correct the name, or remove the
element.
)",
            ExplainedRule(kSampleUnknownElement, 40));
}

TEST(ChooseRules, AreAllWithoutWords) {
  EXPECT_EQ("TEV101 TEV106 TEV207 TEV312", Chosen(""));
}

TEST(ChooseRules, AreNamedByIdOrArea) {
  EXPECT_EQ("TEV106", Chosen("TEV106"));
  EXPECT_EQ("TEV101 TEV106", Chosen("TEV1"));
  EXPECT_EQ("TEV101 TEV106", Chosen("files"));
  EXPECT_EQ("TEV106 TEV207 TEV312", Chosen(" dependencies, TEV2 ,TEV106"));
}

TEST(ChooseRules, AreNamedInAnyLetterCase) {
  EXPECT_EQ("TEV106 TEV207", Chosen("tev106,Tev2"));
  EXPECT_EQ("TEV101 TEV106", Chosen("Files"));
  EXPECT_EQ("TEV101 TEV207 TEV312", Chosen("", "tev106"));
}

TEST(RuleNamed, IsFoundInAnyLetterCase) {
  EXPECT_EQ(&kSampleUnknownElement, RuleNamed(SampleRules(), "tev106"));
  EXPECT_EQ(nullptr, RuleNamed(SampleRules(), "TEV1O6"));
}

TEST(ChooseRules, AreAtLeastOne) {
  EXPECT_EQ("--select and --ignore leave no rule", Chosen("portal"));
  EXPECT_EQ("--select and --ignore leave no rule", Chosen("TEV106", "files"));
}

TEST(ChooseRules, AreWithoutTheIgnoredOnes) {
  EXPECT_EQ("TEV207 TEV312", Chosen("", "TEV1"));
  EXPECT_EQ("TEV106", Chosen("files", "TEV101,plugins"));
}

TEST(ChooseRules, RefusesAWordWithTheNearestOne) {
  EXPECT_EQ("--select: \"TEV1O6\" is no rule and no area; did you mean \"TEV106\"?",
            Chosen("TEV101,TEV1O6"));
  EXPECT_EQ("--ignore: \"plugin\" is no rule and no area; did you mean \"plugins\"?",
            Chosen("files", "plugin"));
}

TEST(ChooseRules, RefusesAWordThatNothingIsNear) {
  EXPECT_EQ("--select: \"every\\x1bthing\" is no rule and no area; --list-rules shows them",
            Chosen("every\x1bthing"));
}

TEST(ChooseRules, RefusesAMissingWord) {
  EXPECT_EQ("--select: a rule or an area is missing", Chosen("TEV1,"));
  EXPECT_EQ("--ignore: a rule or an area is missing", Chosen("", ","));
}

TEST(NoSuchRule, NamesTheNearestOne) {
  EXPECT_EQ("there is no rule \"TEV1O6\"; did you mean \"TEV106\"?",
            NoSuchRule(SampleRules(), "TEV1O6"));
  EXPECT_EQ("there is no rule \"\\x07\"; --list-rules shows them",
            NoSuchRule(SampleRules(), "\x07"));
}

}  // namespace
