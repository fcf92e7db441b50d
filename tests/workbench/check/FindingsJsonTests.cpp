#include "workbench/check/FindingsJson.h"

#include <gtest/gtest.h>

#include <nlohmann/json.hpp>
#include <set>

#include "tests/workbench/check/Reports.h"

namespace {

TEST(FindingsJson, HasEveryMemberThatIsKnown) {
  EXPECT_EQ(R"({
  "schema": 1,
  "tool": {
    "name": "HUB check",
    "version": "1.0.0"
  },
  "product": {
    "name": "NVX",
    "version": "2.6",
    "folder": "/srv/site"
  },
  "findings": [
    {
      "rule": "TEV101",
      "severity": "error",
      "file": "bin/META_INFO/Portal.xml",
      "message": "missing",
      "fingerprint": "befff6961bdc7f14"
    },
    {
      "rule": "TEV106",
      "severity": "error",
      "file": "Product.xml",
      "line": 3,
      "column": 5,
      "message": "<Plugns>: unknown; did you mean <Plugins>?",
      "subject": "Plugns",
      "fingerprint": "45c1af5fe802717a"
    },
    {
      "rule": "TEV207",
      "severity": "warning",
      "file": "bin/META_INFO/a/a.xml",
      "line": 7,
      "message": "version \"1.9\" wins against \"1.10\"",
      "plugin": "a.server",
      "subject": "1.9",
      "related": [
        {
          "file": "bin/META_INFO/b/b.xml",
          "line": 2,
          "column": 3,
          "message": "\"1.10\" stands here"
        },
        {
          "file": "bin/META_INFO/c d.xml",
          "message": "this file is not read"
        }
      ],
      "fingerprint": "adadf6d14d685a2d"
    },
    {
      "rule": "TEV312",
      "severity": "note",
      "file": "Product.xml",
      "line": 9,
      "column": 2,
      "message": "used by nothing",
      "plugin": "b",
      "fingerprint": "5efac54d3baef0ac"
    }
  ],
  "counts": {
    "errors": 2,
    "warnings": 1,
    "notes": 1
  }
}
)",
            FindingsJson(FullReport()));
}

TEST(FindingsJson, HasEveryRelatedPlaceAndTheChoicesAmongThem) {
  const CheckReport report = Report({FindingWithChoices()});
  const auto json = nlohmann::json::parse(FindingsJson(report))["findings"][0];
  EXPECT_EQ(30U, json["related"].size());
  EXPECT_EQ(nlohmann::json::parse("[[0, 2], [29]]"), json["choices"]);
}

TEST(FindingsJson, OfACleanProductWithoutAName) {
  EXPECT_EQ(R"({
  "schema": 1,
  "tool": {
    "name": "HUB check",
    "version": "1.0.0"
  },
  "product": {
    "folder": "/srv/site"
  },
  "findings": [],
  "counts": {
    "errors": 0,
    "warnings": 0,
    "notes": 0
  }
}
)",
            FindingsJson(Report({})));
}

TEST(FindingsJson, SaysWhatTheBaselineMakesOfEachFinding) {
  const auto json = nlohmann::json::parse(FindingsJson(FullReportWithBaseline()));
  std::string states;
  for (const auto& finding : json["findings"])
    states += finding["baseline"].get<std::string>() + " ";
  EXPECT_EQ("new unchanged unchanged new ", states);
  EXPECT_EQ(nlohmann::json::parse(R"([
    {"rule": "TEV101", "plugin": "gone.server", "subject": "gone.xml", "count": 2},
    {"rule": "TEV207", "plugin": "a.server", "subject": "1.9", "count": 1}])"),
            json["absent"]);
  EXPECT_EQ(nlohmann::json::parse(
                R"({"errors": 1, "warnings": 0, "notes": 1, "accepted": 2, "absent": 3})"),
            json["counts"]);
}

TEST(FindingsJson, IsValidUtf8WhateverTheNamesAre) {
  CheckReport report = Report({Finding(kSampleMissingFile, {"a\xff.xml", 1, 1}, "one\n\xfe\x1b",
                                       "p\xc3(", "s\xed\xa0\x80")});
  report.productName = "\x80";
  report.folder = "/srv/\xe2\x82";
  const auto json = nlohmann::json::parse(FindingsJson(report));
  EXPECT_EQ("a\uFFFD.xml", json["findings"][0]["file"]);
  EXPECT_EQ("one\\x0a\\xfe\\x1b", json["findings"][0]["message"]);
  EXPECT_EQ("p\uFFFD(", json["findings"][0]["plugin"]);
  EXPECT_EQ("\uFFFD", json["product"]["name"]);
  EXPECT_EQ("/srv/\uFFFD", json["product"]["folder"]);
}

TEST(Fingerprints, DoNotChangeWithPlaceAndMessage) {
  const RuleFindings first = {Finding(kSampleMissingFile, {"a.xml", 1, 1}, "one", "p", "s")};
  const RuleFindings moved = {Finding(kSampleMissingFile, {"b.xml", 7, 2}, "two", "p", "s")};
  EXPECT_EQ(Fingerprints(first), Fingerprints(moved));
}

TEST(Fingerprints, DifferByRulePluginSubjectAndNumber) {
  const Place place = {"a.xml", 1, 1};
  const std::vector<std::string> fingerprints =
      Fingerprints({Finding(kSampleMissingFile, place, "", "p", "s"),
                    Finding(kSampleUnknownElement, place, "", "p", "s"),
                    Finding(kSampleMissingFile, place, "", "ps", ""),
                    Finding(kSampleMissingFile, place, "", "", "ps"),
                    Finding(kSampleMissingFile, place, "", "p", "s")});
  EXPECT_EQ(5U, std::set<std::string>(fingerprints.begin(), fingerprints.end()).size());
  EXPECT_EQ(Fingerprint({"TEV101", "p", "s"}, 1), fingerprints[4]);
}

TEST(FindingsJson, HasTenThousandFindings) {
  const auto json = nlohmann::json::parse(FindingsJson(
      Report(RuleFindings(10'000, Finding(kSampleMissingFile, {"a.xml", 1, 1}, "m", "p", "s")))));
  std::set<std::string> fingerprints;
  for (const auto& finding : json["findings"]) {
    fingerprints.insert(finding["fingerprint"].get<std::string>());
  }
  EXPECT_EQ(10'000U, fingerprints.size());
  EXPECT_EQ(10'000U, json["counts"]["errors"]);
}

TEST(FindingsJson, HasTheAbsolutePathOfAFileThatLiesElsewhere) {
  RuleFinding finding = Finding(kSampleMissingFile, {"bin/a.xml", 0, 0}, "m");
  finding.related = {{{"bin/b.xml", 0, 0}, "other"}};
  CheckReport report = Report({finding});
  report.elsewhere["bin/a.xml"] = {"/srv/new/a.xml", "a.xml"};
  const auto json = nlohmann::json::parse(FindingsJson(report))["findings"][0];
  EXPECT_EQ("/srv/new/a.xml", json["file"]);
  EXPECT_EQ("bin/b.xml", json["related"][0]["file"]);
}

}  // namespace
