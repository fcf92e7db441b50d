#include "workbench/report/ReportJson.h"

#include <algorithm>
#include <nlohmann/json.hpp>

#include "workbench/record/RunOutcome.h"
#include "workbench/report/ResultName.h"
#include "workbench/timeline/Problems.h"

namespace {

using Json = nlohmann::ordered_json;

constexpr int kSchema = 1;

double Ms(std::int64_t nanoseconds) {
  return static_cast<double>(nanoseconds) / 1e6;
}

Json MsOrNull(std::int64_t nanoseconds) {
  return nanoseconds == kUnknown ? Json() : Json(Ms(nanoseconds));
}

Json OrNull(std::int64_t number) {
  return number < 0 ? Json() : Json(number);
}

Json OrNull(const std::string& text) {
  return text.empty() ? Json() : Json(text);
}

const char* Name(NotReturned::Where where) {
  switch (where) {
    case NotReturned::Where::kLoading:
      return "loading";
    case NotReturned::Where::kCounting:
      return "counting";
    case NotReturned::Where::kInit:
      return "init";
    case NotReturned::Where::kUnInit:
      return "uninit";
    case NotReturned::Where::kUnmapping:
      return "unmapping";
  }
  return "";
}

class Writer {
 public:
  explicit Writer(const Timeline& timeline) : m_timeline(timeline) {}

  Json Write() const {
    const RunHead& head = m_timeline.run.record.head;
    return {{"schema", kSchema},
            {"source", Source()},
            {"product", OrNull(head.product)},
            {"productVersion", OrNull(head.productVersion)},
            {"path", OrNull(head.path)},
            {"time", OrNull(head.time)},
            {"zone", OrNull(head.zone)},
            {"hubVersion", OrNull(head.hubVersion)},
            {"frameVersion", OrNull(head.frameVersion)},
            {"end", End()},
            {"phases", Phases()},
            {"start", Phase(m_timeline.start)},
            {"stop", Phase(m_timeline.stop)},
            {"plugins", Plugins()},
            {"startedAnyway", StartedAnyways()},
            {"notReturned", NotReturneds()},
            {"neverBegun", Ids(FindNeverBegun(m_timeline, m_timeline.start))},
            {"findings", Findings()}};
  }

 private:
  Json Source() const {
    const RecordedRun& run = m_timeline.run;
    return {{"kind", run.source == RecordedRun::Source::kRecord ? "record" : "log"},
            {"name", run.name},
            {"resolutionMs", Ms(run.resolution)},
            {"unreadableLines", run.record.unreadableLines},
            {"notes", run.notes},
            {"knows",
             {{"tasks", run.knowsTasks},
              {"threads", run.knowsThreads},
              {"dependencies", run.knowsEdges}}}};
  }

  Json End() const {
    const RunState& state = m_timeline.state;
    if (state.Crash()) return {{"status", "crashed"}, {"text", state.Crash()->text}};
    if (!state.End()) return Json();
    return {{"status", state.End()->status},
            {"exitStatus", state.End()->number},
            {"text", state.End()->text}};
  }

  std::int64_t SinceBegin(std::int64_t steady) const {
    return std::max<std::int64_t>(steady - m_timeline.run.record.head.nanoseconds, 0);
  }

  Json Phases() const {
    Json phases = Json::array();
    for (const RunState::Phase& phase : m_timeline.state.Phases()) {
      phases.push_back({{"name", phase.name},
                        {"beginMs", Ms(SinceBegin(phase.beginNs))},
                        {"ms", phase.endNs < 0 ? Json() : Json(Ms(phase.endNs - phase.beginNs))}});
    }
    return phases;
  }

  std::string Id(std::size_t plugin) const { return m_timeline.plugins[plugin].id; }

  Json IdOrNull(const std::optional<std::size_t>& plugin) const {
    return plugin ? Json(Id(*plugin)) : Json();
  }

  Json Ids(const std::vector<std::size_t>& plugins) const {
    Json ids = Json::array();
    for (const std::size_t plugin : plugins) ids.push_back(Id(plugin));
    return ids;
  }

  Json Phase(const PhaseTimeline& phase) const {
    if (!phase.begun) return Json();
    const TimeBalance& balance = phase.balance;
    const bool known = !phase.path.empty();
    return {{"beginMs", Ms(phase.begin)},
            {"ended", phase.ended},
            {"wallMs", Ms(balance.wall)},
            {"criticalPathMs", known ? Json(Ms(balance.path)) : Json()},
            {"lookMs", known && m_timeline.run.knowsTasks ? Json(Ms(balance.look)) : Json()},
            {"idleMs", known && m_timeline.run.knowsTasks ? Json(Ms(balance.idle)) : Json()},
            {"waitingMs", known ? Json(Ms(balance.look + balance.idle)) : Json()},
            {"workMs", Ms(balance.work)},
            {"parallelism", balance.Parallelism()},
            {"lastLookMs", known ? Json(Ms(phase.lastWait)) : Json()},
            {"criticalPath", Path(phase)}};
  }

  Json Path(const PhaseTimeline& phase) const {
    Json path = Json::array();
    for (const PathStep& step : phase.path) {
      path.push_back({{"plugin", Id(step.plugin)},
                      {"releasedBy", IdOrNull(step.releasedBy)},
                      {"lookMs", m_timeline.run.knowsTasks ? Json(Ms(step.look)) : Json()},
                      {"idleMs", m_timeline.run.knowsTasks ? Json(Ms(step.idle)) : Json()},
                      {"workMs", Ms(step.work)}});
    }
    return path;
  }

  Json Plugins() const {
    Json plugins = Json::array();
    for (std::size_t i = 0; i < m_timeline.plugins.size(); ++i) {
      const PluginHead& head = m_timeline.plugins[i];
      const PluginRun& plugin = m_timeline.State(i);
      plugins.push_back({{"id", head.id},
                         {"kind", OrNull(head.kind)},
                         {"version", OrNull(head.version)},
                         {"dependsOn", m_timeline.run.knowsEdges ? Json(head.dependsOn) : Json()},
                         {"state", OutcomeWord(plugin)},
                         {"reason", OrNull(ReasonText(plugin))},
                         {"start", Span(m_timeline.start, i)},
                         {"stop", Span(m_timeline.stop, i)}});
    }
    return plugins;
  }

  Json Span(const PhaseTimeline& phase, std::size_t plugin) const {
    if (!phase.begun) return Json();
    const PluginSpan& span = phase.spans[plugin];
    return {{"result", ResultName(span.result)},
            {"readyMs", MsOrNull(span.ready)},
            {"postedMs", MsOrNull(span.posted)},
            {"beginMs", MsOrNull(span.begin)},
            {"loadedMs", MsOrNull(span.loaded)},
            {"codeBeginMs", MsOrNull(span.codeBegin)},
            {"codeEndMs", MsOrNull(span.codeEnd)},
            {"endMs", MsOrNull(span.end)},
            {"ms", OrNull(span.milliseconds)},
            {"slackMs", MsOrNull(span.slack)},
            {"thread", span.thread == 0 ? Json() : Json(span.thread)},
            {"releasedBy", IdOrNull(span.releasedBy)}};
  }

  Json StartedAnyways() const {
    Json plugins = Json::array();
    for (const StartedAnyway& plugin : FindStartedAnyway(m_timeline)) {
      plugins.push_back({{"plugin", Id(plugin.plugin)}, {"failed", Ids(plugin.failed)}});
    }
    return plugins;
  }

  Json NotReturneds() const {
    Json plugins = Json::array();
    for (const NotReturned& plugin : FindNotReturned(m_timeline)) {
      plugins.push_back({{"plugin", Id(plugin.plugin)},
                         {"where", Name(plugin.where)},
                         {"sinceMs", Ms(plugin.since)},
                         {"waiting", Ids(plugin.waiting)}});
    }
    return plugins;
  }

  Json Findings() const {
    Json findings = Json::array();
    for (const RunEvent& finding : m_timeline.state.Findings()) {
      findings.push_back({{"severity", Word(finding.severity)}, {"text", finding.text}});
    }
    return findings;
  }

  const Timeline& m_timeline;
};

Json TimesJson(const std::vector<TimeChange>& changes) {
  Json times = Json::array();
  for (const TimeChange& change : changes) {
    times.push_back({{"what", change.what},
                     {"ms", Ms(change.now)},
                     {"beforeMs", Ms(change.before)},
                     {"leastMs", Ms(change.low)},
                     {"mostMs", Ms(change.high)},
                     {"changed", IsChange(change)}});
  }
  return times;
}

Json ComparisonJson(const Comparison& comparison) {
  Json results = Json::array();
  for (const ResultChange& change : comparison.results) {
    results.push_back({{"plugin", change.plugin},
                       {"result", ResultName(change.now)},
                       {"before", ResultName(change.before)}});
  }
  return {{"runs", comparison.runs},
          {"sleepsDiffer", comparison.sleepsDiffer},
          {"phases", TimesJson(comparison.phases)},
          {"incomplete", comparison.incomplete},
          {"slower", TimesJson(comparison.slower)},
          {"faster", TimesJson(comparison.faster)},
          {"new", comparison.added},
          {"gone", comparison.gone},
          {"ontoPath", comparison.ontoPath},
          {"offPath", comparison.offPath},
          {"results", results}};
}

const char* Name(BudgetItem::Kind kind) {
  switch (kind) {
    case BudgetItem::Kind::kUp:
      return "up";
    case BudgetItem::Kind::kPhase:
      return "phase";
    case BudgetItem::Kind::kPlugin:
      return "plugin";
  }
  return "";
}

Json BudgetJson(const std::vector<BudgetResult>& results) {
  Json budget = Json::array();
  for (const BudgetResult& result : results) {
    budget.push_back({{"kind", Name(result.item.kind)},
                      {"name", result.item.name},
                      {"mostMs", Ms(result.item.most)},
                      {"ms", MsOrNull(result.taken)},
                      {"exceeded", result.exceeded}});
  }
  return budget;
}

}  // namespace

std::string ReportJson(const Timeline& timeline, const ReportAdditions& additions) {
  Json report = Writer(timeline).Write();
  if (additions.comparison) report["comparison"] = ComparisonJson(*additions.comparison);
  if (additions.budget) report["budget"] = BudgetJson(*additions.budget);
  return report.dump(2, ' ', false, Json::error_handler_t::replace) + "\n";
}
