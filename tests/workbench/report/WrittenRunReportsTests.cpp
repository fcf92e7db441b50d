#include <gtest/gtest.h>

#include <fstream>

#include "tests/support/RunText.h"
#include "workbench/report/ReportJson.h"

// Writes reports, which the schema tests validate.

namespace {

void Write(const std::string& name, RecordedRun run, const ReportAdditions& additions = {}) {
  std::ofstream(std::string(TEV_REPORTS) + "/run_" + name + ".json", std::ios::binary)
      << ReportJson(MakeTimeline(std::move(run)), additions);
}

RunEvent End() {
  RunEvent end;
  end.kind = RunEvent::Kind::kEnd;
  end.status = "up";
  end.number = 0;
  end.text = "up: all";
  return end;
}

TEST(WrittenRunReports, AreForTheSchema) {
  RecordedRun full = RunFromText(R"(
    a:
    b: a
    start 10 400
    stop 1000 1200
    a start 11 12 13 40 41 failed why
    b start 210 211 212 220 221
    a stop 1000 1000 - - 1001 not-loaded
    b stop 1000 1000 1000 1001 1002 refused why)");
  full.record.events.push_back(End());
  ReportAdditions additions;
  additions.comparison = Comparison();
  additions.comparison->runs = 2;
  additions.comparison->phases = additions.comparison->slower =
      additions.comparison->faster = {{"a", 9'000'000, 5'000'000, 4'000'000, 6'000'000}};
  additions.comparison->added = additions.comparison->gone = {"a"};
  additions.comparison->ontoPath = additions.comparison->offPath = {"b"};
  additions.comparison->results = {{"a", PluginSpan::Result::kOk, PluginSpan::Result::kFailed}};
  additions.budget = {{{BudgetItem::Kind::kPlugin, "a", 80'000'000}, 90'000'000, true},
                      {{BudgetItem::Kind::kUp, "up", 80'000'000}, kUnknown, true}};
  Write("full", std::move(full), additions);

  Write("hung", RunFromText(R"(
    hangs:
    a: hangs
    x: x
    start 0 -
    hangs start 0 0 0 - -)"));

  RecordedRun log = RunFromText("a:\nstart 0 200\na start - 1 1 40 41");
  log.source = RecordedRun::Source::kLog;
  log.knowsTasks = log.knowsThreads = log.knowsEdges = false;
  Write("log", std::move(log));

  RecordedRun hostile = RunFromText("a:\nstart 0 200\na start 0 1 1 40 41 failed why");
  hostile.record.plugins.front().id = "\xff\n";
  hostile.record.head.product = "\xff\"";
  for (RunEvent& event : hostile.record.events) event.plugin = event.plugin.empty() ? "" : "\xff\n";
  Write("hostile", std::move(hostile));

  Write("empty", RunFromText(""));
}

}  // namespace
