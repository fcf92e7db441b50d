#include "host/StatusText.h"

#include <fmt/format.h>

#include <algorithm>

#include "host/RunVerdict.h"
#include "workbench/output/Text.h"

namespace {

using State = PluginRun::State;

constexpr std::size_t kMostNames = 5;
constexpr std::int64_t kNanosecondsInAMinute = 60'000'000'000;

bool Running(const PluginRun& plugin) {
  return plugin.state == State::kLoading || plugin.state == State::kInInit ||
         plugin.state == State::kInUnInit;
}

bool Stopping(const RunState& state) {
  return state.FindPhase(RunPhase::kFrameStop) != nullptr;
}

bool Done(const RunState& state, const PluginRun& plugin) {
  return Stopping(state) ? plugin.stopCounted : plugin.startCounted;
}

/// Whether the frame only has to look again for some plugin to begin.
bool SomebodyIsReady(const RunState& state) {
  return std::any_of(state.Plugins().begin(), state.Plugins().end(), [](const PluginRun& plugin) {
    return IsStarted(plugin.head) && plugin.state == State::kReady;
  });
}

template <typename Text>
std::string Waited(const RunState& state, const std::string& cycle, Text text) {
  std::vector<std::string> names;
  for (const PluginRun& plugin : state.Plugins()) {
    if (Running(plugin)) names.push_back(text(plugin));
  }
  if (!names.empty()) return "waiting for " + JoinNames(names, kMostNames);
  if (!cycle.empty() && OnlyWaiting(state) && !SomebodyIsReady(state))
    return "waiting for the cycle " + cycle;
  return std::string();
}

std::string Milliseconds(std::int64_t ms) {
  return fmt::format("{} ms", ms);
}

}  // namespace

bool WaitingLog::IsDue(const std::string& waiting, std::int64_t nowNs) {
  if (waiting == m_last && nowNs - m_lastNs < kNanosecondsInAMinute) return false;
  m_last = waiting;
  m_lastNs = nowNs;
  return !waiting.empty();
}

bool OnlyWaiting(const RunState& state) {
  const auto* phase = state.FindPhase(Stopping(state) ? RunPhase::kStop : RunPhase::kStart);
  if (phase == nullptr || phase->endNs >= 0) return false;
  return std::any_of(state.Plugins().begin(), state.Plugins().end(), [&](const PluginRun& plugin) {
    return IsStarted(plugin.head) && !Done(state, plugin);
  });
}

std::size_t CountStopped(const RunState& state) {
  return static_cast<std::size_t>(
      std::count_if(state.Plugins().begin(), state.Plugins().end(),
                    [](const PluginRun& plugin) { return plugin.stopCounted; }));
}

std::string WaitedFor(const RunState& state, const std::string& cycle) {
  return Waited(state, cycle, [](const PluginRun& plugin) { return plugin.head.id; });
}

std::string WaitingLine(const RunState& state, const std::string& cycle, std::int64_t nowNs) {
  std::string waited = Waited(state, cycle, [nowNs](const PluginRun& plugin) {
    return fmt::format("{} ({:.1f} s)", plugin.head.id.empty() ? "(no ID)" : plugin.head.id,
                       static_cast<double>(nowNs - plugin.sinceNs) * 1e-9);
  });
  if (waited.empty()) return waited;
  std::size_t all = 0;
  std::size_t done = 0;
  for (const PluginRun& plugin : state.Plugins()) {
    if (!IsStarted(plugin.head)) continue;
    ++all;
    if (Done(state, plugin)) ++done;
  }
  return fmt::format("{} of {} {}; {}", done, all, Stopping(state) ? "stopped" : "done", waited);
}

std::string EventText(const PluginRun& plugin) {
  switch (plugin.state) {
    case State::kStarted:
      return "started in " + Milliseconds(plugin.initMs);
    case State::kInitFailed:
      return "INIT FAILED after " + Milliseconds(plugin.initMs) + ": " + plugin.reason;
    case State::kNotLoaded:
      return "NOT LOADED: " + plugin.reason;
    case State::kStopped:
      return plugin.uninitMs < 0 ? std::string() : "stopped in " + Milliseconds(plugin.uninitMs);
    case State::kStopRefused:
      return "STOP REFUSED: " + plugin.stopReason + "; its library stays mapped";
    default:
      return std::string();
  }
}
