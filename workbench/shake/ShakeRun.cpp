#include "workbench/shake/ShakeRun.h"

#include <optional>
#include <set>

namespace {

using Kind = StartOutcome::Kind;

/// Collects the outcomes of a run from its events.
class OutcomeReader {
 public:
  explicit OutcomeReader(const FlightRecord& record) {
    for (const PluginHead& plugin : record.plugins) {
      if (plugin.kind != "executable" && plugin.kind != "driver") m_run.plugins[plugin.id];
    }
    for (const RunEvent& event : record.events) Apply(event);
    for (const std::string& plugin : m_inInit) m_run.plugins[plugin].kind = UnfinishedKind(plugin);
    if (m_begin) m_run.startNs = m_last - *m_begin;
  }

  ShakeRun Take() { return std::move(m_run); }

 private:
  void Apply(const RunEvent& event) {
    if (event.kind == RunEvent::Kind::kPhaseBegin && event.phase == RunPhase::kStart) {
      m_begin = m_last = event.nanoseconds;
    }
    if (event.kind == RunEvent::Kind::kCrash) return ApplyCrash(event);
    const auto found = m_run.plugins.find(event.plugin);
    if (found != m_run.plugins.end()) ApplyToPlugin(event, found->second);
  }

  void ApplyToPlugin(const RunEvent& event, StartOutcome& plugin) {
    switch (event.kind) {
      case RunEvent::Kind::kLoadBegin:
        plugin.begin = plugin.end = event.nanoseconds;
        return;
      case RunEvent::Kind::kInitBegin:
        plugin.begin = plugin.end = event.nanoseconds;
        m_inInit.insert(event.plugin);
        return;
      case RunEvent::Kind::kLoadEnd:
        if (event.result == RunEvent::Result::kOk) return;
        return End(event, plugin, Kind::kNotLoaded);
      case RunEvent::Kind::kInitEnd:
        m_inInit.erase(event.plugin);
        return End(event, plugin,
                   event.result == RunEvent::Result::kOk ? Kind::kOk : Kind::kFailed);
      case RunEvent::Kind::kCounted:
        return ApplyCount(event, plugin);
      default:
        return;
    }
  }

  /// For a start whose failure no earlier event has said.
  void ApplyCount(const RunEvent& event, StartOutcome& plugin) {
    if (event.phase != RunPhase::kStart) return;
    m_last = event.nanoseconds;
    if (plugin.kind != Kind::kUnknown || m_inInit.count(event.plugin) != 0) return;
    if (plugin.begin == 0) return;
    if (event.result == RunEvent::Result::kFailed) End(event, plugin, Kind::kFailed);
    if (event.result == RunEvent::Result::kNotLoaded) End(event, plugin, Kind::kNotLoaded);
  }

  void ApplyCrash(const RunEvent& event) {
    m_isCrashed = true;
    const auto found = m_run.plugins.find(event.plugin);
    if (event.phase == RunPhase::kStop || found == m_run.plugins.end()) return;
    m_inInit.erase(event.plugin);
    found->second.kind = Kind::kCrashed;
    found->second.reason = event.text;
  }

  void End(const RunEvent& event, StartOutcome& plugin, Kind kind) {
    plugin.kind = kind;
    plugin.end = m_last = event.nanoseconds;
    if (kind != Kind::kOk) plugin.reason = event.text;
  }

  Kind UnfinishedKind(const std::string& plugin) const {
    return m_isCrashed || m_run.Of(plugin).begin == 0 ? Kind::kUnknown : Kind::kHung;
  }

  ShakeRun m_run;
  std::set<std::string> m_inInit;
  bool m_isCrashed = false;
  std::optional<std::int64_t> m_begin;  // of the plugins' start
  std::int64_t m_last = 0;              // end of the last start
};

}  // namespace

const StartOutcome& ShakeRun::Of(const std::string& plugin) const {
  static const StartOutcome none;
  const auto found = plugins.find(plugin);
  return found == plugins.end() ? none : found->second;
}

StartOrder ShakeRun::Order(const std::string& plugin, const std::string& other) const {
  const StartOutcome& one = Of(plugin);
  const StartOutcome& second = Of(other);
  if (second.IsUp() && second.end <= one.begin) return StartOrder::kAfter;
  return second.IsUp() && second.end <= one.end ? StartOrder::kDuring : StartOrder::kBefore;
}

ShakeRun MakeShakeRun(const FlightRecord& record) {
  return OutcomeReader(record).Take();
}

std::string ReasonClass(const std::string& reason) {
  std::string text;
  for (const char c : reason) {
    const bool isDigit = c >= '0' && c <= '9';
    if (isDigit && !text.empty() && text.back() == '#') continue;
    text += isDigit ? '#' : c;
  }
  return text;
}
