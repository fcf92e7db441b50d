#include "workbench/check/FindingsSarif.h"

#include <gtest/gtest.h>

#include <nlohmann/json.hpp>

#include "tests/workbench/check/Reports.h"

namespace {

using Json = nlohmann::ordered_json;

Json SarifRun(const CheckReport& report) {
  return Json::parse(FindingsSarif(report))["runs"][0];
}

/// The first result of a report with one finding.
Json ResultOf(const RuleFinding& finding) {
  return SarifRun(Report({finding}))["results"][0];
}

TEST(FindingsSarif, OfACleanProductHasTheRulesThatRan) {
  CheckReport report = Report({});
  report.rules = {&kSampleMissingFile};
  EXPECT_EQ(
      R"({
  "$schema": "https://docs.oasis-open.org/sarif/sarif/v2.1.0/errata01/os/schemas/sarif-schema-2.1.0.json",
  "version": "2.1.0",
  "runs": [
    {
      "tool": {
        "driver": {
          "name": "HUB check",
          "semanticVersion": "1.0.0",
          "rules": [
            {
              "id": "TEV101",
              "name": "ModelFileIsMissing",
              "shortDescription": {
                "text": "model file is missing"
              },
              "fullDescription": {
                "text": "The frame asks for the file and does not find it. The product does not start."
              },
              "help": {
                "text": "The frame asks for the file and does not find it. The product does not start.\n\nExample:\nbin/META_INFO/a/a.xml does not exist\n\nRemedy: Add the file.",
                "markdown": "The frame asks for the file and does not find it. The product does not start.\n\n**Example**\n\n    bin/META_INFO/a/a.xml does not exist\n\n**Remedy**\n\nAdd the file."
              },
              "defaultConfiguration": {
                "level": "error"
              }
            }
          ]
        }
      },
      "invocations": [
        {
          "executionSuccessful": true
        }
      ],
      "originalUriBaseIds": {
        "PRODUCT": {
          "uri": "file:///srv/site/"
        }
      },
      "columnKind": "unicodeCodePoints",
      "results": []
    }
  ]
}
)",
      FindingsSarif(report));
}

TEST(FindingsSarif, HasAResultForEachFinding) {
  Json results = SarifRun(FullReport())["results"];
  for (Json& result : results) result.erase("partialFingerprints");
  EXPECT_EQ(Json::parse(R"([
    {
      "ruleId": "TEV101", "ruleIndex": 0, "level": "error", "message": {"text": "missing"},
      "locations": [{"physicalLocation": {"artifactLocation": {
        "uri": "bin/META_INFO/Portal.xml", "uriBaseId": "PRODUCT"}}}]
    },
    {
      "ruleId": "TEV106", "ruleIndex": 1, "level": "error",
      "message": {"text": "<Plugns>: unknown; did you mean <Plugins>?"},
      "locations": [{"physicalLocation": {
        "artifactLocation": {"uri": "Product.xml", "uriBaseId": "PRODUCT"},
        "region": {"startLine": 3, "startColumn": 5}}}]
    },
    {
      "ruleId": "TEV207", "ruleIndex": 2, "level": "warning",
      "message": {"text": "version \"1.9\" wins against \"1.10\""},
      "locations": [{"physicalLocation": {
        "artifactLocation": {"uri": "bin/META_INFO/a/a.xml", "uriBaseId": "PRODUCT"},
        "region": {"startLine": 7}}}],
      "relatedLocations": [
        {"id": 1, "physicalLocation": {
          "artifactLocation": {"uri": "bin/META_INFO/b/b.xml", "uriBaseId": "PRODUCT"},
          "region": {"startLine": 2, "startColumn": 3}}, "message": {"text": "\"1.10\" stands here"}},
        {"id": 2, "physicalLocation": {
          "artifactLocation": {"uri": "bin/META_INFO/c%20d.xml", "uriBaseId": "PRODUCT"}},
          "message": {"text": "this file is not read"}}
      ]
    },
    {
      "ruleId": "TEV312", "ruleIndex": 3, "level": "note", "message": {"text": "used by nothing"},
      "locations": [{"physicalLocation": {
        "artifactLocation": {"uri": "Product.xml", "uriBaseId": "PRODUCT"},
        "region": {"startLine": 9, "startColumn": 2}}}]
    }
  ])"),
            results);
}

TEST(FindingsSarif, HasTheFingerprintsOfTheFindings) {
  const CheckReport report = FullReport();
  const Json run = SarifRun(report);
  std::vector<std::string> fingerprints;
  for (const Json& result : run["results"]) {
    fingerprints.push_back(result["partialFingerprints"]["ruleAndSubject/v1"]);
  }
  EXPECT_EQ(Fingerprints(report.findings), fingerprints);
}

TEST(FindingsSarif, HasStatesAndWhatIsGoneWithABaseline) {
  const Json run = SarifRun(FullReportWithBaseline());
  std::string states;
  for (const Json& result : run["results"]) {
    states += result["baselineState"].get<std::string>() + " ";
  }
  EXPECT_EQ("new unchanged unchanged new absent absent ", states);
  Json gone = {{"ruleId", "TEV101"},
               {"ruleIndex", 0},
               {"level", "error"},
               {"message",
                {{"text",
                  "accepted by the baseline and no longer found; plugin \"gone.server\"; "
                  "\"gone.xml\""}}},
               {"occurrenceCount", 2},
               {"partialFingerprints",
                {{"ruleAndSubject/v1", Fingerprint({"TEV101", "gone.server", "gone.xml"}, 0)}}},
               {"baselineState", "absent"}};
  EXPECT_EQ(gone, run["results"][4]);
}

TEST(FindingsSarif, OfAFindingThatIsGoneHasTheFingerprintThatItHad) {
  const RuleFinding finding = Finding(kSampleMissingFile, {"a.xml", 0, 0}, "missing", "", "");
  const CheckReport before = Report({finding, finding});
  const Json run = SarifRun(WithBaseline(Report({finding}), before.findings));
  EXPECT_EQ(Fingerprints(before.findings)[1],
            run["results"][1]["partialFingerprints"]["ruleAndSubject/v1"]);
  EXPECT_EQ("accepted by the baseline and no longer found", run["results"][1]["message"]["text"]);
  EXPECT_FALSE(run["results"][1].contains("occurrenceCount"));
}

TEST(FindingsSarif, HasNoRuleIndexForARuleThatIsNotListed) {
  CheckReport report = WithBaseline(FullReport(), {Finding(kSampleMissingFile, {}, "", "x")});
  report.rules = {&kSampleUnknownElement};
  const Json run = SarifRun(report);
  EXPECT_FALSE(run["results"][0].contains("ruleIndex"));
  EXPECT_EQ(0, run["results"][1]["ruleIndex"]);
  EXPECT_EQ("note", run["results"][4]["level"]);
}

TEST(FindingsSarif, HasNoLocationWithoutAFile) {
  RuleFinding finding = Finding(kSampleMissingFile, {}, "the product is empty");
  finding.related = {{{}, "nowhere"}};
  EXPECT_EQ(Json::parse(R"({"ruleId": "TEV101", "ruleIndex": 0, "level": "error",
    "message": {"text": "the product is empty"}, "partialFingerprints": {"ruleAndSubject/v1": ")" +
                        Fingerprint({"TEV101", "", ""}, 0) + "\"}}"),
            ResultOf(finding));
}

TEST(FindingsSarif, HasEveryRelatedPlaceAndTheChoicesAmongThem) {
  const Json result = ResultOf(FindingWithChoices());
  EXPECT_EQ(29U, result["relatedLocations"].size());
  EXPECT_EQ(29, result["relatedLocations"][28]["id"]);
  EXPECT_EQ(Json::parse(R"({"choices": [[1, 2], [29]]})"), result["properties"]);
}

TEST(FindingsSarif, EncodesEverythingInAnAddressThatIsNoPlainCharacter) {
  const Json result = ResultOf(Finding(kSampleMissingFile, {"a b/\\c:%?#\xff[名].xml", 0, 0}, "m"));
  EXPECT_EQ("a%20b/%5Cc%3A%25%3F%23%FF%5B%E5%90%8D%5D.xml",
            result["locations"][0]["physicalLocation"]["artifactLocation"]["uri"]);
}

TEST(FindingsSarif, HasTheAbsoluteAddressOfAFileThatLiesElsewhere) {
  RuleFinding finding = Finding(kSampleMissingFile, {"bin/a.xml", 0, 0}, "m");
  finding.related = {{{"bin/b.xml", 0, 0}, "other"}};
  CheckReport report = Report({finding});
  report.elsewhere["bin/a.xml"] = {"/srv/new %/a.xml", "a.xml"};
  report.elsewhere["bin/b.xml"] = {"C:/new/b.xml", "b.xml"};
  const Json result = SarifRun(report)["results"][0];
  EXPECT_EQ(Json({{"uri", "file:///srv/new%20%25/a.xml"}}),
            result["locations"][0]["physicalLocation"]["artifactLocation"]);
  EXPECT_EQ(Json({{"uri", "file:///C:/new/b.xml"}}),
            result["relatedLocations"][0]["physicalLocation"]["artifactLocation"]);
}

TEST(FindingsSarif, HasNeitherPlaceholdersNorLinksInItsMessages) {
  EXPECT_EQ("an ID {{0}} and [text] (address)",
            ResultOf(Finding(kSampleMissingFile, {},
                             "an ID {0} and [text](address)"))["message"]["text"]);
}

TEST(FindingsSarif, EscapesMessagesSoThatTheyAreOneLineOfUtf8) {
  EXPECT_EQ("a\\x0ab\\xff",
            ResultOf(Finding(kSampleMissingFile, {}, "a\nb\xff"))["message"]["text"]);
}

TEST(FindingsSarif, HasHelpWithoutHtmlAndWithTheExampleAsCode) {
  const Json run = SarifRun(FullReport());
  const Json& rule = run["tool"]["driver"]["rules"][1];
  EXPECT_EQ(
      "The frame looks for elements by their names. An element <X> of another name, and all that "
      "lies in it, is not read.\n\nA {{list}} of [such] (elements) reads as *empty*.",
      rule["fullDescription"]["text"]);
  EXPECT_EQ(
      "The frame looks for elements by their names. An element \\<X\\> of another name, and all "
      "that lies in it, is not read.\n\nA {{list}} of \\[such\\] (elements) reads as \\*empty\\*."
      "\n\n**Example**\n\n    <ProductDescription>\n      <Plugns/>\n\n    </ProductDescription>"
      "\n\n**Remedy**\n\nCorrect the name, or remove the element.",
      rule["help"]["markdown"]);
  EXPECT_EQ("PluginsVersionsInAnotherOrderAsTexts", run["tool"]["driver"]["rules"][2]["name"]);
}

TEST(FolderUri, IsAFileAddressThatEndsInASlash) {
  EXPECT_EQ("file:///", FolderUri("/"));
  EXPECT_EQ("file:///srv/my%20site/", FolderUri("/srv/my site"));
  EXPECT_EQ("file:///srv/site/", FolderUri("/srv/site/"));
  EXPECT_EQ("file:///C%3A/site/", FolderUri("/C:/site"));
  EXPECT_EQ("file:///C:/my%20site/", FolderUri("C:/my site"));
  EXPECT_EQ("file://server/share/a%3A/", FolderUri("//server/share/a:"));
}

TEST(FindingsSarif, HasTenThousandResults) {
  const Json run = SarifRun(Report(RuleFindings(
      10'000, Finding(kSampleMissingFile, {"a.xml", 1, 1}, "missing", "plugin", "s"))));
  EXPECT_EQ(10'000U, run["results"].size());
}

}  // namespace
