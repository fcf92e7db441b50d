#include <gtest/gtest.h>

#include <fstream>

#include "tests/workbench/check/Reports.h"
#include "workbench/check/FindingsJson.h"
#include "workbench/check/FindingsSarif.h"

// Writes reports in both formats, which the schema tests validate.

namespace {

void Write(const std::string& name, const CheckReport& report) {
  const std::string file = std::string(TEV_REPORTS) + "/" + name;
  std::ofstream(file + ".json", std::ios::binary) << FindingsJson(report);
  std::ofstream(file + ".sarif", std::ios::binary) << FindingsSarif(report);
}

TEST(WrittenReports, AreForTheSchemas) {
  Write("clean", Report({}));
  Write("findings", FullReport());
  Write("baseline", FullReportWithBaseline());

  CheckReport elsewhere = FullReport();
  elsewhere.elsewhere["bin/META_INFO"] = {"/srv/a {b}", "a {b}"};
  elsewhere.elsewhere["Product.xml"] = {"C:/new/Product.xml", "Product.xml"};
  Write("elsewhere", elsewhere);

  CheckReport changed = FullReportWithBaseline();
  changed.findings[2].choices = {{1}, {0, 1}};
  changed.changes.emplace();
  changed.changes->folder = "old/";
  changed.changes->productBefore = changed.changes->productAfter = "NVX 1";
  changed.changes->addons = {{"New", "addon", "", "1", false, "", false},
                             {"Gone", "tool", "1", "", false, "", false}};
  changed.changes->plugins = {{"a", "plugin", "2", "1", true, "", false},
                              {"b", "program", "1", "1", false, "plugin", false},
                              {"c", "driver", "1", "1", false, "", true}};
  changed.changes->order = {{"a", "c", false}};
  Write("changes", changed);
  changed.changes.emplace(ProductChanges{
      "old/", "NVX 1", "NVX 2", FrameAnswer::kRefused, FrameAnswer::kNotAsked, {}, {}, {}, {}});
  Write("refused", changed);

  CheckReport hostile = FullReport();
  for (RuleFinding& finding : hostile.findings) {
    finding.place.file = "a\\b\xff:c {0}\n.xml";
    finding.message = "\xff[a](b) {0}\n";
    finding.plugin = finding.subject = "\xff\n";
  }
  hostile.findings.push_back(Finding(kSampleMissingFile, {}, "nowhere"));
  hostile.productName = "\xff";
  hostile.folder = "C:/\xff x";
  Write("hostile", hostile);
}

}  // namespace
