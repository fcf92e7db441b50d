#include "workbench/check/Baseline.h"

#include <gtest/gtest.h>

#include "tests/workbench/check/Reports.h"

namespace {

RuleFinding Known(const std::string& rule, const std::string& plugin, const std::string& subject) {
  RuleFinding finding;
  finding.rule = rule;
  finding.plugin = plugin;
  finding.subject = subject;
  return finding;
}

std::string Problem(const std::string& text) {
  const BaselineReading reading = ReadBaseline(text);
  EXPECT_TRUE(reading.problem.empty() || reading.baseline.empty());
  return reading.problem;
}

/// The problem of a baseline with one finding.
std::string ProblemOf(const std::string& finding) {
  return Problem("{\n\"schema\": 1,\n\"findings\": [\n" + finding + "\n]\n}\n");
}

/// "accepted" or "new" for each finding, then what is gone and the rules that do not exist.
std::string Applied(const RuleFindings& known, const RuleFindings& findings,
                    const std::vector<const Rule*>& ran = SampleRules()) {
  const AppliedBaseline applied = Apply(BaselineOf(known), findings, ran, SampleRules());
  std::string text;
  for (const bool accepted : applied.accepted) text += accepted ? "accepted " : "new ";
  for (const auto& [key, count] : applied.absent) {
    text += "| " + key.rule + "," + key.plugin + "," + key.subject + " " + std::to_string(count);
  }
  for (const std::string& rule : applied.unknownRules) text += "? " + rule;
  return text;
}

TEST(Baseline, IsWrittenSortedAndAFindingALine) {
  EXPECT_EQ(
      R"({
"schema": 1,
"findings": [
{"rule":"TEV101","plugin":"","subject":"a.xml","count":1},
{"rule":"TEV207","plugin":"a.server","subject":"1.9","count":2},
{"rule":"TEV207","plugin":"b.server","subject":"\"q\" \\","count":1}
]
}
)",
      WriteBaseline({Known("TEV207", "b.server", "\"q\" \\"), Known("TEV207", "a.server", "1.9"),
                     Known("TEV101", "", "a.xml"), Known("TEV207", "a.server", "1.9")}));
}

TEST(Baseline, WithoutFindingsIsAnEmptyList) {
  EXPECT_EQ("{\n\"schema\": 1,\n\"findings\": [\n]\n}\n", WriteBaseline({}));
  EXPECT_EQ("", Problem(WriteBaseline({})));
}

TEST(Baseline, DoesNotKnowALine) {
  RuleFinding moved = Known("TEV101", "a", "b");
  moved.place = {"Product.xml", 7, 3};
  EXPECT_EQ(WriteBaseline({Known("TEV101", "a", "b")}), WriteBaseline({moved}));
}

TEST(Baseline, ReadsWhatItWrote) {
  const RuleFindings findings = {Known("TEV101", "a", "b"), Known("TEV101", "a", "b"),
                                 Known("TEV207", "\xff\x01", "\"\\/\n名"), Known("TEV9", "", "")};
  const BaselineReading reading = ReadBaseline(WriteBaseline(findings));
  EXPECT_EQ("", reading.problem);
  EXPECT_EQ(BaselineOf(findings), reading.baseline);
  EXPECT_EQ(4U, Apply(reading.baseline, findings, {}, {}).accepted.size());
  EXPECT_EQ(std::vector<bool>(4, true), Apply(reading.baseline, findings, {}, {}).accepted);
}

TEST(Baseline, ReadsJsonInAnyLayout) {
  const Baseline expected = {{{"TEV101", "", "b"}, 3}, {{"TEV102", "a", ""}, 1}};
  EXPECT_EQ(expected, ReadBaseline(R"({"findings": [ {"count": 3,
    "subject": "b", "rule": "TEV101"},{"plugin":"a","rule":"TEV102","count":1}], "schema":1})")
                          .baseline);
}

TEST(Baseline, RefusesWhatIsNoJsonAndNamesTheLine) {
  EXPECT_EQ("line 1: this is no JSON", Problem(""));
  EXPECT_EQ("line 3: this is no JSON", Problem("{\n\"schema\": 1,\nfindings: []}"));
  EXPECT_EQ("line 2: this is no JSON", Problem("{\"schema\": 1, \"findings\": []}\n}"));
  EXPECT_EQ("line 4: this is no JSON", ProblemOf("<<<<<<< ours"));
  EXPECT_EQ("line 4: this is no JSON", ProblemOf("{\"rule\": \"\xff\"}"));
  EXPECT_EQ("line 4: this is no JSON", ProblemOf("{\"count\": 1e999}"));
}

TEST(Baseline, RefusesADeeplyNestedValue) {
  EXPECT_EQ("line 1: a baseline must be a JSON object", Problem(std::string(1'000'000, '[')));
  EXPECT_EQ("line 4: a finding must be a JSON object", ProblemOf(std::string(1'000'000, '[')));
}

TEST(Baseline, RefusesAnotherSchema) {
  EXPECT_EQ("line 2: this is a baseline of schema 2; this version reads schema 1",
            Problem("{\n\"schema\": 2,\n\"other\": []}"));
  EXPECT_EQ("line 2: \"schema\" must be a number", Problem("{\n\"schema\":\n\"1\"}"));
  EXPECT_EQ("line 2: \"schema\" is missing", Problem("{\"findings\": []\n}"));
}

TEST(Baseline, RefusesMembersThatItDoesNotKnow) {
  EXPECT_EQ("line 2: \"findngs\" is no member of a baseline; did you mean \"findings\"?",
            Problem("{\"schema\": 1,\n\"findngs\": []}"));
  EXPECT_EQ("line 4: \"suject\" is no member of a finding; did you mean \"subject\"?",
            ProblemOf("{\"rule\": \"TEV101\", \"suject\": \"a\"}"));
  EXPECT_EQ("line 4: \"\\x1b\" is no member of a finding", ProblemOf("{\"\\u001b\": 1}"));
}

TEST(Baseline, RefusesWhatIsMissing) {
  EXPECT_EQ("line 1: \"findings\" is missing", Problem("{\"schema\": 1}"));
  EXPECT_EQ("line 4: \"rule\" is missing", ProblemOf("{\"count\": 1\n\n}"));
  EXPECT_EQ("line 4: \"count\" is missing", ProblemOf("{\"rule\": \"TEV101\"}"));
}

TEST(Baseline, RefusesValuesOfTheWrongKind) {
  EXPECT_EQ("line 1: a baseline must be a JSON object", Problem("7"));
  EXPECT_EQ("line 1: a baseline must be a JSON object", Problem("\"text\""));
  EXPECT_EQ("line 2: \"findings\" must be a list", Problem("{\"schema\": 1,\n\"findings\": {}}"));
  EXPECT_EQ("line 2: \"findings\" must be a list", Problem("{\"schema\": 1,\n\"findings\": 5}"));
  EXPECT_EQ("line 4: a finding must be a JSON object", ProblemOf("5"));
  EXPECT_EQ("line 4: a finding must be a JSON object", ProblemOf("true"));
  EXPECT_EQ("line 4: \"rule\" must be a text", ProblemOf("{\"rule\": null}"));
  EXPECT_EQ("line 4: \"plugin\" must be a text", ProblemOf("{\"plugin\": {}}"));
  EXPECT_EQ("line 4: \"subject\" must be a text", ProblemOf("{\"subject\": [\"a\"]}"));
  for (const char* count : {"0", "-1", "1.5", "\"1\"", "1000000001", "99999999999999999999"}) {
    EXPECT_EQ("line 4: \"count\" must be a whole number from 1 to 1000000000",
              ProblemOf("{\"count\":\n" + std::string(count) + "}"));
  }
}

TEST(Baseline, RefusesAMemberOrAFindingThatStandsThereTwice) {
  EXPECT_EQ("line 2: \"schema\" stands there twice", Problem("{\"schema\": 1,\n\"schema\": 1}"));
  EXPECT_EQ("line 4: \"rule\" stands there twice", ProblemOf("{\"rule\": \"a\", \"rule\": \"a\"}"));
  EXPECT_EQ(
      "line 6: the same rule, plugin and subject as in line 4; write one finding with the sum of "
      "the counts",
      ProblemOf("{\"rule\": \"a\", \"count\": 1},\n{\"rule\": \"b\", \"count\": 1},\n"
                "{\"rule\": \"a\", \"plugin\": \"\", \"count\": 2}"));
}

TEST(Baseline, AcceptsTheFirstOfSeveralEqualFindings) {
  const RuleFinding known = Known("TEV101", "a", "b");
  EXPECT_EQ("accepted accepted new ", Applied({known, known}, {known, known, known}));
}

TEST(Baseline, AcceptsByRulePluginAndSubject) {
  EXPECT_EQ(
      "new new new accepted ",
      Applied({Known("TEV101", "a", "b")}, {Known("TEV106", "a", "b"), Known("TEV101", "x", "b"),
                                            Known("TEV101", "a", "x"), Known("TEV101", "a", "b")}));
}

TEST(Baseline, NamesWhatIsNoLongerFound) {
  const RuleFinding known = Known("TEV101", "a", "b");
  EXPECT_EQ("accepted | TEV101,a,b 2", Applied({known, known, known}, {known}));
}

TEST(Baseline, DoesNotMissFindingsOfRulesThatDidNotRun) {
  EXPECT_EQ("", Applied({Known("TEV101", "a", "b")}, {}, {&kSampleTwoVersions}));
}

TEST(Baseline, NamesEachUnknownRuleOnce) {
  EXPECT_EQ(
      "? TEV998? TEV999",
      Applied({Known("TEV999", "a", ""), Known("TEV999", "b", ""), Known("TEV998", "", "")}, {}));
}

TEST(Baseline, OfTwoThousandFindingsAcceptsEachOfThem) {
  RuleFindings findings;
  for (int i = 0; i < 2'000; ++i) {
    findings.push_back(Known("TEV101", std::to_string(i), "subject"));
  }
  const BaselineReading reading = ReadBaseline(WriteBaseline(findings));
  const AppliedBaseline applied = Apply(reading.baseline, findings, SampleRules(), SampleRules());
  EXPECT_EQ(std::vector<bool>(2'000, true), applied.accepted);
}

}  // namespace
