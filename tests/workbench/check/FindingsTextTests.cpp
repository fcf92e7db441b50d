#include "workbench/check/FindingsText.h"

#include <gtest/gtest.h>

#include <map>

#include "tests/workbench/check/Reports.h"

namespace {

/// The lines of the files of FullReport.
std::string LineOf(const std::string& file, int line) {
  static const std::map<std::string, std::string> lines = {
      {"Product.xml:3", "    <Plugns>"},
      {"Product.xml:9", "\t<Dependency/>\r"},
      {"bin/META_INFO/a/a.xml:7", "  <Version>1.9</Version>"},
      {"bin/META_INFO/b/b.xml:2", "  <Version>1.10</Version>"}};
  const auto found = lines.find(file + ":" + std::to_string(line));
  return found == lines.end() ? "" : found->second;
}

std::string Text(const CheckReport& report, const TextStyle& style = {}) {
  return FindingsText(report, LineOf, style);
}

/// The text of one finding at `column` of `line`.
std::string TextAt(const std::string& line, int column, std::size_t columns = 100) {
  const CheckReport report =
      Report({Finding(kSampleUnknownElement, {"a.xml", 1, column}, "wrong")});
  return FindingsText(report, [&](const std::string&, int) { return line; }, {false, columns});
}

TEST(FindingsText, IsALineForEachFindingWithItsSourceAndRelatedPlaces) {
  EXPECT_EQ(R"(site/bin/META_INFO/Portal.xml: error: missing [TEV101]
site/Product.xml:3:5: error: <Plugns>: unknown; did you mean <Plugins>? [TEV106]
    3 |     <Plugns>
      |     ^~~~~~~
site/bin/META_INFO/a/a.xml:7: warning: version "1.9" wins against "1.10" [TEV207]
    7 |   <Version>1.9</Version>
site/bin/META_INFO/b/b.xml:2:3: note: "1.10" stands here
    2 |   <Version>1.10</Version>
      |   ^~~~~~~~
site/bin/META_INFO/c d.xml: note: this file is not read
site/Product.xml:9:2: note: used by nothing [TEV312]
    9 |     <Dependency/>
      |     ^~~~~~~~~~~
2 errors, 1 warning, 1 note
)",
            Text(FullReport()));
}

TEST(FindingsText, IsNoFindingsWithoutAny) {
  EXPECT_EQ("no findings\n", Text(Report({})));
}

TEST(FindingsText, DoesNotShowWhatTheBaselineAcceptsAndCountsWhatIsGone) {
  EXPECT_EQ(R"(site/bin/META_INFO/Portal.xml: error: missing [TEV101]
site/Product.xml:9:2: note: used by nothing [TEV312]
    9 |     <Dependency/>
      |     ^~~~~~~~~~~
3 findings of the baseline are no longer found; --write-baseline writes a baseline without them
1 error, 1 note; 2 more accepted by the baseline
)",
            Text(FullReportWithBaseline()));
}

TEST(FindingsText, HasNoNewFindingsWhenTheBaselineAcceptsAll) {
  const RuleFinding finding = Finding(kSampleMissingFile, {"a.xml", 0, 0}, "missing");
  EXPECT_EQ("no new findings; 1 accepted by the baseline\n",
            Text(WithBaseline(Report({finding}), {finding})));
}

TEST(FindingsText, NamesOneFindingThatIsGoneAndRulesThatAreUnknown) {
  RuleFindings known = {Finding(kSampleMissingFile, {}, "", "", "a.xml")};
  known.push_back(known[0]);
  known[1].rule = "TEV999";
  EXPECT_EQ(
      "1 finding of the baseline is no longer found; --write-baseline writes a baseline without "
      "it\n"
      "the baseline names rules that this version does not have: TEV999\n"
      "no findings\n",
      Text(WithBaseline(Report({}), known)));
}

TEST(FindingsText, IsColoredWhenAsked) {
  CheckReport report = FullReport();
  report.findings.erase(report.findings.begin());
  EXPECT_EQ(
      "\x1b[1msite/Product.xml:3:5:\x1b[0m \x1b[31merror:\x1b[0m <Plugns>: unknown; did you mean "
      "<Plugins>? [TEV106]\n"
      "    3 |     <Plugns>\n"
      "      |     \x1b[32m^~~~~~~\x1b[0m\n"
      "\x1b[1msite/bin/META_INFO/a/a.xml:7:\x1b[0m \x1b[35mwarning:\x1b[0m version \"1.9\" wins "
      "against \"1.10\" [TEV207]\n"
      "    7 |   <Version>1.9</Version>\n"
      "\x1b[1msite/bin/META_INFO/b/b.xml:2:3:\x1b[0m \x1b[36mnote:\x1b[0m \"1.10\" stands here\n"
      "    2 |   <Version>1.10</Version>\n"
      "      |   \x1b[32m^~~~~~~~\x1b[0m\n"
      "\x1b[1msite/bin/META_INFO/c d.xml:\x1b[0m \x1b[36mnote:\x1b[0m this file is not read\n"
      "\x1b[1msite/Product.xml:9:2:\x1b[0m \x1b[36mnote:\x1b[0m used by nothing [TEV312]\n"
      "    9 |     <Dependency/>\n"
      "      |     \x1b[32m^~~~~~~~~~~\x1b[0m\n"
      "1 error, 1 warning, 1 note\n",
      Text(report, {true, 100}));
}

TEST(FindingsText, EscapesNamesAndMessagesAndTheSource) {
  CheckReport report = Report(
      {Finding(kSampleUnknownElement, {"a\x1b[2J\xff.xml", 1, 2}, "one\ntwo\x07\xe2\x80\xae")});
  report.shownFolder = "s\te/";
  EXPECT_EQ(
      "s\\x09e/a\\x1b[2J\\xff.xml:1:2: error: one\\x0atwo\\x07\\u202e [TEV106]\n"
      "    1 | \\x07<a\\x1b b>\n"
      "      |     ^~~~~~\n"
      "1 error\n",
      FindingsText(report, [](const std::string&, int) { return "\x07<a\x1b b>"; }, {}));
}

TEST(FindingsText, NamesFilesThatLieElsewhereAsTheyAreShown) {
  CheckReport report = Report({Finding(kSampleMissingFile, {"bin/a/b.xml", 0, 0}, "one"),
                               Finding(kSampleMissingFile, {"bin/ab.xml", 0, 0}, "two")});
  report.elsewhere["bin/a"] = {"/srv/new/a", "new/a"};
  EXPECT_EQ("new/a/b.xml: error: one [TEV101]\nsite/bin/ab.xml: error: two [TEV101]\n2 errors\n",
            Text(report));
}

TEST(FindingsText, HasNoPathWithoutAFile) {
  EXPECT_EQ("error: the product is empty [TEV101]\n1 error\n",
            Text(Report({Finding(kSampleMissingFile, {}, "the product is empty")})));
}

TEST(FindingsText, ShowsTheSourceOfARelatedPlaceOnlyInAnotherLine) {
  RuleFinding finding = Finding(kSampleUnknownElement, {"Product.xml", 3, 5}, "wrong");
  finding.related = {{{"Product.xml", 3, 6}, "the same line"},
                     {{"Product.xml", 9, 2}, "another line"},
                     {{"Product.xml", 9, 3}, "the same again"}};
  EXPECT_EQ(R"(site/Product.xml:3:5: error: wrong [TEV106]
    3 |     <Plugns>
      |     ^~~~~~~
site/Product.xml:3:6: note: the same line
site/Product.xml:9:2: note: another line
    9 |     <Dependency/>
      |     ^~~~~~~~~~~
site/Product.xml:9:3: note: the same again
1 error
)",
            Text(Report({finding})));
}

TEST(FindingsText, ShowsTwentyRelatedPlaces) {
  RuleFinding finding = Finding(kSampleMissingFile, {}, "many");
  std::string notes;
  for (int i = 1; i <= 20; ++i) {
    finding.related.push_back({{}, "place " + std::to_string(i)});
    notes += "note: place " + std::to_string(i) + "\n";
  }
  EXPECT_EQ("error: many [TEV101]\n" + notes + "1 error\n", Text(Report({finding})));
  finding.related.push_back({{}, "place 21"});
  EXPECT_EQ(
      "error: many [TEV101]\n" + notes + "note: 1 more place; --format json shows all\n1 error\n",
      Text(Report({finding})));
}

TEST(FindingsText, CutsALongLineToTheColumnsBesideTheLineNumber) {
  EXPECT_EQ(
      "site/a.xml:1:31: error: wrong [TEV106]\n"
      "    1 | ...aaaaaaa bbbbbbbbbbbbbbbb...\n"
      "      |            ^~~~~~~~~~~~~~~~\n"
      "1 error\n",
      TextAt(std::string(29, 'a') + " " + std::string(40, 'b'), 31, 38));
}

TEST(FindingsText, ShowsAPartOfTheLineHoweverNarrowTheTerminalIs) {
  EXPECT_EQ(
      "site/a.xml:1:1: error: wrong [TEV106]\n"
      "    1 | aaaaaaaaaaaaaa...\n"
      "      | ^~~~~~~~~~~~~~\n"
      "1 error\n",
      TextAt(std::string(99, 'a'), 1, 1));
}

TEST(FindingsText, WidensTheGutterForALongLineNumber) {
  const CheckReport report =
      Report({Finding(kSampleUnknownElement, {"a.xml", 1234567, 1}, "wrong")});
  EXPECT_EQ(
      "site/a.xml:1234567:1: error: wrong [TEV106]\n"
      "1234567 | <a/>\n"
      "        | ^~\n"
      "1 error\n",
      FindingsText(report, [](const std::string&, int) { return "<a/>"; }, {}));
}

TEST(FindingsText, TakesALineOfTwoThousandFindingsOnce) {
  constexpr int kFindings = 2'000;
  std::string line;
  RuleFindings findings;
  for (int i = 0; i < kFindings; ++i) {
    findings.push_back(
        Finding(kSampleUnknownElement, {"a.xml", 1, static_cast<int>(line.size()) + 1}, "wrong"));
    line += "<Plugin ID=\"" + std::string(200, 'a') + "\"/>";
  }
  int taken = 0;
  const std::string text = FindingsText(Report(std::move(findings)),
                                        [&](const std::string&, int) {
                                          ++taken;
                                          return line;
                                        },
                                        {});
  EXPECT_EQ(1, taken);
  EXPECT_EQ("2000 errors\n", text.substr(text.rfind('\n', text.size() - 2) + 1));
}

}  // namespace
