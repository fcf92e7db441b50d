#include "workbench/report/ReportJson.h"

#include <gtest/gtest.h>

#include <nlohmann/json.hpp>

#include "tests/support/RunText.h"

namespace {

using Json = nlohmann::json;

Json Report(RecordedRun run) {
  return Json::parse(ReportJson(MakeTimeline(std::move(run))));
}

TEST(ReportJsons, HoldTheWholeRun) {
  RecordedRun run = RunFromText(R"(
    a:
    b: a
    start 10 400
    a start 11 12 13 40 41
    b start 210 211 - - 212 not-loaded no such file)");
  run.record.plugins[0].version = "2.7";
  run.record.head.product = "NVX";
  RunEvent finding;
  finding.kind = RunEvent::Kind::kFinding;
  finding.severity = Severity::kWarning;
  finding.text = "odd";
  run.record.events.push_back(finding);
  EXPECT_EQ(Json::parse(R"({
    "schema": 1,
    "source": {"kind": "record", "name": "run.jsonl", "resolutionMs": 0.000001,
      "unreadableLines": 0, "notes": [], "knows": {"tasks": true, "threads": true, "dependencies": true}},
    "product": "NVX", "productVersion": null, "path": null, "time": "2026-11-21T18:46:59.123Z",
    "zone": null, "hubVersion": null, "frameVersion": null, "end": null,
    "phases": [{"name": "start", "beginMs": 10.0, "ms": 390.0}],
    "start": {"beginMs": 10.0, "ended": true, "wallMs": 390.0, "criticalPathMs": 30.0,
      "lookMs": 357.0, "idleMs": 3.0, "waitingMs": 360.0, "workMs": 30.0,
      "parallelism": 0.07692307692307693, "lastLookMs": 188.0, "criticalPath": [
        {"plugin": "a", "releasedBy": null, "lookMs": 0.0, "idleMs": 2.0, "workMs": 29.0},
        {"plugin": "b", "releasedBy": "a", "lookMs": 169.0, "idleMs": 1.0, "workMs": 1.0}]},
    "stop": null,
    "plugins": [
      {"id": "a", "kind": "server", "version": "2.7", "dependsOn": [], "state": "started",
       "reason": null, "stop": null,
       "start": {"result": "ok", "readyMs": 10.0, "postedMs": 11.0, "beginMs": 12.0,
         "loadedMs": 13.0, "codeBeginMs": 13.0, "codeEndMs": 40.0, "endMs": 41.0, "ms": 27,
         "slackMs": 0.0, "thread": 1, "releasedBy": null}},
      {"id": "b", "kind": "server", "version": null, "dependsOn": ["a"], "state": "not-loaded",
       "reason": "no such file", "stop": null,
       "start": {"result": "not-loaded", "readyMs": 41.0, "postedMs": 210.0, "beginMs": 211.0,
         "loadedMs": 212.0, "codeBeginMs": null, "codeEndMs": null, "endMs": 212.0, "ms": null,
         "slackMs": 0.0, "thread": 2, "releasedBy": "a"}}],
    "startedAnyway": [], "notReturned": [], "neverBegun": [],
    "findings": [{"severity": "warning", "text": "odd"}]})"),
            Report(std::move(run)));
}

TEST(ReportJsons, HoldHowTheRunEnded) {
  RecordedRun run = RunFromText("a:");
  RunEvent end;
  end.kind = RunEvent::Kind::kEnd;
  end.status = "cut-short";
  end.number = 4;
  end.text = "cut short: stopped";
  run.record.events.push_back(end);
  EXPECT_EQ(
      Json::parse(R"({"status": "cut-short", "exitStatus": 4, "text": "cut short: stopped"})"),
      Report(run)["end"]);
  end.kind = RunEvent::Kind::kCrash;
  run.record.events.push_back(end);
  EXPECT_EQ(Json::parse(R"({"status": "crashed", "text": "cut short: stopped"})"),
            Report(run)["end"]);
}

TEST(ReportJsons, HoldWhatWentWrong) {
  const Json report = Report(RunFromText(R"(
    bad:
    hangs: bad
    next: hangs
    x: x
    start 0 -
    bad start 0 1 2 3 4 failed
    hangs start 200 200 201 - -)"));
  EXPECT_EQ(Json::parse(R"([{"plugin": "hangs", "failed": ["bad"]}])"), report["startedAnyway"]);
  EXPECT_EQ(Json::parse(R"([{"plugin": "hangs", "where": "init", "sinceMs": 201.0,
                             "waiting": ["next"]}])"),
            report["notReturned"]);
  EXPECT_EQ(Json::parse(R"(["x"])"), report["neverBegun"]);
}

TEST(ReportJsons, TellAnInitThatIsOverFromOneThatRuns) {
  const Json report = Report(RunFromText(R"(
    counting:
    hangs:
    start 0 -
    counting start 0 0 1 5 -
    hangs start 0 0 1 - -)"));
  EXPECT_EQ(Json::parse(R"([
    {"plugin": "hangs", "where": "init", "sinceMs": 1.0, "waiting": []},
    {"plugin": "counting", "where": "counting", "sinceMs": 5.0, "waiting": []}])"),
            report["notReturned"]);
}

TEST(ReportJsons, HaveNullForWhatALogDoesNotKnow) {
  RecordedRun run = RunFromText("a:\nstart 0 200\na start - 1 1 40 41");
  run.source = RecordedRun::Source::kLog;
  run.resolution = 1'000'000;
  run.knowsTasks = run.knowsThreads = run.knowsEdges = false;
  run.notes = {"its begin is missing"};
  const Json report = Report(std::move(run));
  EXPECT_EQ("log", report["source"]["kind"]);
  EXPECT_EQ(Json::parse(R"(["its begin is missing"])"), report["source"]["notes"]);
  EXPECT_EQ(Json(), report["start"]["criticalPathMs"]);
  EXPECT_EQ(Json(), report["start"]["waitingMs"]);
  EXPECT_EQ(Json(), report["plugins"][0]["dependsOn"]);
  EXPECT_EQ(Json(), report["plugins"][0]["start"]["thread"]);
}

TEST(ReportJsons, HoldAComparisonAndABudgetWhenGiven) {
  const Timeline timeline =
      MakeTimeline(RunFromText("a:\nstart 0 200\na start 0 0 0 90 90 failed"));
  ReportAdditions additions;
  additions.comparison = Comparison();
  additions.comparison->runs = 2;
  additions.comparison->slower = {{"a", 9'000'000, 5'000'000, 4'000'000, 6'000'000}};
  additions.comparison->added = {"a"};
  additions.comparison->incomplete = {"stop"};
  additions.comparison->results = {{"a", PluginSpan::Result::kOk, PluginSpan::Result::kFailed}};
  additions.budget = {{{BudgetItem::Kind::kPlugin, "a", 80'000'000}, 90'000'000, true},
                      {{BudgetItem::Kind::kUp, "up", 80'000'000}, kUnknown, true}};
  const Json report = Json::parse(ReportJson(timeline, additions));
  EXPECT_EQ(Json::parse(R"({
    "runs": 2, "sleepsDiffer": false, "phases": [], "incomplete": ["stop"], "faster": [], "new": ["a"], "gone": [], "ontoPath": [], "offPath": [],
    "slower": [{"what": "a", "ms": 9.0, "beforeMs": 5.0, "leastMs": 4.0, "mostMs": 6.0,
                "changed": true}],
    "results": [{"plugin": "a", "result": "failed", "before": "ok"}]})"),
            report["comparison"]);
  EXPECT_EQ(Json::parse(R"([
    {"kind": "plugin", "name": "a", "mostMs": 80.0, "ms": 90.0, "exceeded": true},
    {"kind": "up", "name": "up", "mostMs": 80.0, "ms": null, "exceeded": true}])"),
            report["budget"]);
}

}  // namespace
