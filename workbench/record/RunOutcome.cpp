#include "workbench/record/RunOutcome.h"

using State = PluginRun::State;

bool IsStarted(const PluginHead& plugin) {
  return plugin.kind == "server" || plugin.kind == "platform";
}

RunTotals CountTotals(const RunState& state) {
  RunTotals totals;
  for (const PluginRun& plugin : state.Plugins()) {
    if (!IsStarted(plugin.head)) continue;
    ++totals.plugins;
    if (plugin.started == State::kStarted) ++totals.started;
    if (plugin.started == State::kInitFailed) ++totals.initFailed;
    if (plugin.started == State::kNotLoaded) ++totals.notLoaded;
    if (plugin.state == State::kStopped) ++totals.stopped;
    if (plugin.state == State::kStopRefused) ++totals.stopRefused;
  }
  return totals;
}

std::string OutcomeWord(const PluginRun& plugin) {
  const bool startFailed =
      plugin.started == State::kInitFailed || plugin.started == State::kNotLoaded;
  const bool over = plugin.state != State::kInUnInit;
  switch (startFailed && over ? plugin.started : plugin.state) {
    case State::kWaiting:
      return "waiting";
    case State::kReady:
      return "ready";
    case State::kLoading:
      return "loading";
    case State::kInInit:
      return "in-init";
    case State::kStarted:
      return "started";
    case State::kInitFailed:
      return "init-failed";
    case State::kNotLoaded:
      return "not-loaded";
    case State::kInUnInit:
      return "in-uninit";
    case State::kStopped:
      return "stopped";
    case State::kStopRefused:
      return "stop-refused";
  }
  return std::string();
}

std::string ReasonText(const PluginRun& plugin) {
  if (plugin.reason.empty() || plugin.stopReason.empty()) return plugin.reason + plugin.stopReason;
  return plugin.reason + "; stop: " + plugin.stopReason;
}

bool NeedsAttention(const PluginRun& plugin) {
  if (!IsStarted(plugin.head)) return false;
  return plugin.started != State::kStarted || plugin.state == State::kStopRefused ||
         plugin.state == State::kInUnInit;
}
