#include "workbench/shake/ShakeReport.h"

#include <gtest/gtest.h>

#include <fstream>

namespace {

using Kind = StartOutcome::Kind;

/// A report with every kind of line and member.
ShakeReport FullReport() {
  ShakeReport report;
  report.toolVersion = "1.0.0";
  report.productName = "NVX";
  report.productVersion = "2.6.0";
  report.bin = "a site/bin";
  report.shownFolder = "a site/";
  report.folder = "/srv/a site/bin";
  report.plugins = 6;
  report.runs = 21;
  report.runsNotMade = 2;
  report.badRecords = 1;
  report.seconds = 12.4;
  report.stoppedBy = "SIGINT";
  report.analysis.missing = {
      {"report.server",
       Kind::kFailed,
       "no \x1b config",
       {"config.server"},
       true,
       {7, 7, 9, 9},
       "--delay config.server=500"},
      {"map.server", Kind::kCrashed, "", {"a", "b", ""}, false, {1, 1, 3, 2}, "--shuffle 3"}};
  report.analysis.unexplained = {{"user.server", Kind::kHung, "", 2, 21, "", ""}};
  report.analysis.consequences = {
      {"page.server", Kind::kFailed, "no report", 7, 21, "report.server", ""}};
  report.analysis.always = {{"old.server", Kind::kNotLoaded, "no file", 21, 21, "", ""}};
  report.places["report.server"] = {"bin/META_INFO/report.server/report.server.xml", 12};
  return report;
}

TEST(ShakeReport, NamesEachFindingAndHowToSeeItAgain) {
  EXPECT_EQ(
      "NVX 2.6.0 in /srv/a site/bin: 6 plugins, 21 runs in 12 s\n"
      "error: report.server fails when it starts before config.server is up (7 of 7 runs; well in "
      "9 of 9 runs after it): \"no \\x1b config\"\n"
      "    declare the dependency: a site/bin/META_INFO/report.server/report.server.xml:12\n"
      "    see it again: HUB run --bin \"a site/bin\" --delay config.server=500\n"
      "error: map.server crashes when it starts before one of a, b and (no ID) is up (1 of 1 run; "
      "well in 2 of 3 runs after it)\n"
      "    the runs do not say which of them; more runs (--runs) may\n"
      "    see it again: HUB run --bin \"a site/bin\" --shuffle 3\n"
      "warning: user.server does not return from Init in 2 of 21 runs, and no order of two starts "
      "explains it\n"
      "    it did so in: HUB run --bin \"a site/bin\"\n"
      "note: page.server fails in 7 of 21 runs, in each of which report.server, on which it "
      "depends, is not up: \"no report\"\n"
      "note: old.server is not loaded in every run: \"no file\"\n"
      "2 missing dependencies, 1 change without an explanation; 1 run left no record that can be "
      "read; 2 runs of the plan were not made (SIGINT)\n",
      ShakeText(FullReport()));
}

TEST(ShakeReport, WithoutFindingsSaysSo) {
  ShakeReport report;
  report.folder = "/p/bin";
  report.plugins = 1;
  report.runs = 21;
  report.runsNotMade = 1;
  EXPECT_EQ(
      "product without a name in /p/bin: 1 plugin, 21 runs in 0 s\n"
      "no missing dependency found in 21 runs in different orders; 1 run of the plan was not made "
      "(--seconds)\n",
      ShakeText(report));
  EXPECT_FALSE(report.HasFindings());
}

/// The schema tests validate these files.
TEST(WrittenShakeReports, AreForTheSchema) {
  const std::string folder = TEV_REPORTS;
  std::ofstream(folder + "/shake_full.json", std::ios::binary) << ShakeJson(FullReport());
  ShakeReport clean;
  clean.toolVersion = "1.0.0";
  clean.folder = "/p/bin";
  std::ofstream(folder + "/shake_clean.json", std::ios::binary) << ShakeJson(clean);
}

}  // namespace
