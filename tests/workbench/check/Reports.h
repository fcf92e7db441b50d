#pragma once

#include <string>
#include <utility>
#include <vector>

#include "workbench/check/CheckReport.h"

// Rules and findings for the tests of what HUB check prints.

inline const Rule kSampleMissingFile = {
    "TEV101",
    Severity::kError,
    "model file is missing",
    "The frame asks for the file and does not find it. The product does not start.",
    "bin/META_INFO/a/a.xml does not exist",
    "Add the file.",
    nullptr};
inline const Rule kSampleUnknownElement = {
    "TEV106",
    Severity::kError,
    "unknown element",
    "The frame looks for elements by their names. An element <X> of another name, and all that "
    "lies in it, is not read.\n\nA {list} of [such](elements) reads as *empty*.",
    "<ProductDescription>\n  <Plugns/>\n\n</ProductDescription>",
    "Correct the name, or remove the element.",
    nullptr};
inline const Rule kSampleTwoVersions = {"TEV207",
                                        Severity::kWarning,
                                        "plugin's versions in another order as texts",
                                        "\"1.9\" wins against \"1.10\".",
                                        "<Plugin ID=\"a\" Version=\"1.9\"/>",
                                        "Use as many digits.",
                                        nullptr};
inline const Rule kSampleUnusedDependency = {"TEV312",
                                             Severity::kNote,
                                             "dependency that nothing uses",
                                             "It only orders the start.",
                                             "<Dependency ID=\"a\"/>",
                                             "Remove it.",
                                             nullptr};

inline std::vector<const Rule*> SampleRules() {
  return {&kSampleMissingFile, &kSampleUnknownElement, &kSampleTwoVersions,
          &kSampleUnusedDependency};
}

inline RuleFinding Finding(const Rule& rule, Place place, std::string message,
                           std::string plugin = "", std::string subject = "") {
  RuleFinding finding;
  finding.rule = rule.id;
  finding.severity = rule.severity;
  finding.place = std::move(place);
  finding.message = std::move(message);
  finding.plugin = std::move(plugin);
  finding.subject = std::move(subject);
  return finding;
}

/// A finding with 30 related places, of which the second is no place in a file.
inline RuleFinding FindingWithChoices() {
  RuleFinding finding = Finding(kSampleMissingFile, {"a.xml", 1, 1}, "m");
  finding.related.resize(30, {{"b.xml", 2, 0}, "here"});
  finding.related[1].place = {};
  finding.choices = {{0, 2}, {29}};
  return finding;
}

inline CheckReport Report(RuleFindings findings) {
  CheckReport report;
  report.toolVersion = "1.0.0";
  report.folder = "/srv/site";
  report.shownFolder = "site/";
  report.rules = SampleRules();
  report.findings = std::move(findings);
  return report;
}

/// A report with findings of every kind: at a place, in a line, in a file; with related places.
inline CheckReport FullReport() {
  RuleFinding unknown = Finding(kSampleUnknownElement, {"Product.xml", 3, 5},
                                "<Plugns>: unknown; did you mean <Plugins>?", "", "Plugns");
  RuleFinding versions = Finding(kSampleTwoVersions, {"bin/META_INFO/a/a.xml", 7, 0},
                                 "version \"1.9\" wins against \"1.10\"", "a.server", "1.9");
  versions.related = {{{"bin/META_INFO/b/b.xml", 2, 3}, "\"1.10\" stands here"},
                      {{"bin/META_INFO/c d.xml", 0, 0}, "this file is not read"}};
  CheckReport report = Report(
      {Finding(kSampleMissingFile, {"bin/META_INFO/Portal.xml", 0, 0}, "missing"), unknown,
       versions, Finding(kSampleUnusedDependency, {"Product.xml", 9, 2}, "used by nothing", "b")});
  report.productName = "NVX";
  report.productVersion = "2.6";
  return report;
}

/// The report with a baseline that accepts `known`.
inline CheckReport WithBaseline(CheckReport report, const RuleFindings& known) {
  report.baseline = Apply(BaselineOf(known), report.findings, report.rules, SampleRules());
  return report;
}

/// FullReport with a baseline that accepts two of its findings and three that are no longer found.
inline CheckReport FullReportWithBaseline() {
  CheckReport report = FullReport();
  RuleFindings known = {report.findings[1], report.findings[2], report.findings[2]};
  known.push_back(Finding(kSampleMissingFile, {}, "", "gone.server", "gone.xml"));
  known.push_back(known.back());
  return WithBaseline(std::move(report), known);
}
