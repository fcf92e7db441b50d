#include "host/RunJson.h"

#include <chrono>
#include <cstdint>
#include <optional>

namespace {

using Json = nlohmann::ordered_json;

template <typename Value>
Json OrNull(const std::optional<Value>& value) {
  return value ? Json(*value) : Json();
}

Json OrNull(const std::string& text) {
  return text.empty() ? Json() : Json(text);
}

Json OrNull(std::int64_t number) {
  return number < 0 ? Json() : Json(number);
}

Json Timing(const PlatformRecord& platform) {
  Json timing = Json::array();
  for (const TimingLine& line : platform.timing) {
    timing.push_back({{"text", line.text}, {"ms", line.milliseconds}});
  }
  return timing;
}

Json Totals(const RunTotals& totals) {
  return {{"plugins", totals.plugins},       {"started", totals.started},
          {"initFailed", totals.initFailed}, {"notLoaded", totals.notLoaded},
          {"stopped", totals.stopped},       {"stopRefused", totals.stopRefused}};
}

Json Phases(const RunClock& clock, const RunState& state) {
  Json phases = Json::array();
  for (const RunState::Phase& phase : state.Phases()) {
    const bool ended = phase.endNs >= 0;
    phases.push_back({{"name", phase.name},
                      {"startedAt", clock.UtcText(phase.beginNs)},
                      {"ms", ended ? Json((phase.endNs - phase.beginNs) / 1'000'000) : Json()}});
  }
  return phases;
}

Json Plugins(const RunClock& clock, const RunState& state) {
  Json plugins = Json::array();
  for (const PluginRun& plugin : state.Plugins()) {
    plugins.push_back(
        {{"id", plugin.head.id},
         {"kind", plugin.head.kind},
         {"version", plugin.head.version},
         {"dependsOn", plugin.head.dependsOn},
         {"waitedFor", OrNull(plugin.waitedFor)},
         {"state", IsStarted(plugin.head) ? Json(OutcomeWord(plugin)) : Json()},
         {"reason", OrNull(ReasonText(plugin))},
         {"initMs", OrNull(plugin.initMs)},
         {"uninitMs", OrNull(plugin.uninitMs)},
         {"startedAt", plugin.startedAtNs < 0 ? Json() : Json(clock.UtcText(plugin.startedAtNs))},
         {"thread", plugin.thread == 0 ? Json() : Json(plugin.thread)}});
  }
  return plugins;
}

Json Findings(const RunState& state) {
  Json findings = Json::array();
  for (const RunEvent& finding : state.Findings()) {
    findings.push_back({{"severity", Word(finding.severity)}, {"text", finding.text}});
  }
  return findings;
}

}  // namespace

nlohmann::ordered_json RunJson(const RunHead& head, const RunClock& clock, const RunFacts& facts,
                               const RunState& state, const Verdict& verdict,
                               const PlatformRecord& platform, const LpcRecord& lpc,
                               const std::string& record) {
  Json json;
  json["schema"] = 2;
  json["product"] = {{"name", OrNull(head.product)},
                     {"version", OrNull(head.productVersion)},
                     {"path", head.path}};
  json["status"] = verdict.status;
  json["sentence"] = verdict.sentence;
  json["exitStatus"] = OrNull(static_cast<std::int64_t>(verdict.exitStatus));
  json["totals"] = Totals(CountTotals(state));
  json["Frame_Init"] = OrNull(facts.initResult);
  json["Frame_Start"] = OrNull(facts.startResult);
  json["CallbackResult"] = OrNull(platform.callbackResult);
  json["LoadState"] = OrNull(platform.loadState);
  json["Handles"] = platform.handles;
  json["Timing"] = Timing(platform);
  json["Notified"] = lpc.notified;
  json["phases"] = Phases(clock, state);
  json["plugins"] = Plugins(clock, state);
  json["findings"] = Findings(state);
  json["record"] = OrNull(record);
  return json;
}
