#include "fuzz/ReportTarget.h"

#include <nlohmann/json.hpp>
#include <utility>

#include "fuzz/FuzzTarget.h"
#include "workbench/report/ReportDot.h"
#include "workbench/report/ReportJson.h"
#include "workbench/report/ReportText.h"
#include "workbench/report/ReportTrace.h"
#include "workbench/report/WhatIfText.h"
#include "workbench/timeline/Advice.h"
#include "workbench/timeline/RecordedWork.h"
#include "workbench/timeline/Timeline.h"

namespace {

void CheckPhase(const Timeline& timeline, const PhaseTimeline& phase) {
  Check(phase.spans.size() == timeline.plugins.size(), "each plugin has a span in each phase");
  const TimeBalance& balance = phase.balance;
  const bool isDivided = phase.begun && timeline.run.knowsEdges;
  Check(!isDivided || balance.path + balance.look + balance.idle == balance.wall,
        "the parts of a phase's time add up to it");
}

}  // namespace

void FuzzReport(RecordedRun run) {
  const Timeline timeline = MakeTimeline(std::move(run));
  CheckPhase(timeline, timeline.start);
  CheckPhase(timeline, timeline.stop);
  Check(!ReportText(timeline, {}).empty(), "every run has a report as text");
  Check(nlohmann::json::accept(ReportJson(timeline)), "the report as JSON is JSON");
  Check(nlohmann::json::accept(ReportTrace(timeline)), "the trace is JSON");
  Check(!ReportDot(timeline, {}).empty(), "every run has a graph");
  Check(!AdviceText(timeline, Advise(timeline, ModeOf(timeline)), {}).empty(),
        "every run has an advice, or why there is none");
}
