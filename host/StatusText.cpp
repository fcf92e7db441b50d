#include "host/StatusText.h"

#include <fmt/format.h>

#include <algorithm>
#include <limits>
#include <set>

#include "host/RunVerdict.h"
#include "workbench/output/Text.h"

namespace {

using State = PluginRun::State;

constexpr std::size_t kMostNames = 5;
constexpr std::int64_t kNanosecondsInAMinute = 60'000'000'000;

/// Whether the start or stop waits for the plugin's code to return. A stop does not wait for an
/// Init that still runs.
bool Running(const PluginRun& plugin) {
  const bool starting = plugin.state == State::kLoading || plugin.state == State::kInInit;
  return (starting && !plugin.stopCounted) || plugin.state == State::kInUnInit;
}

bool Stopping(const RunState& state) {
  return state.FindPhase(RunPhase::kFrameStop) != nullptr;
}

bool Done(const RunState& state, const PluginRun& plugin) {
  return Stopping(state) ? plugin.stopCounted : plugin.startCounted;
}

/// Whether the stop waits for a plugin that the frame never counts.
bool NeverCounted(const RunState& state, const PluginRun& plugin) {
  return Stopping(state) && plugin.head.kind == "platform" && plugin.head.id.empty();
}

/// Whether some plugin can begin as soon as the frame next checks what is ready.
bool AnyIsReady(const RunState& state) {
  std::set<std::string> stillNeeded;  // at the stop: dependencies of plugins not yet stopped
  for (const PluginRun& plugin : state.Plugins()) {
    if (!Stopping(state) || Done(state, plugin)) continue;
    stillNeeded.insert(plugin.head.dependsOn.begin(), plugin.head.dependsOn.end());
  }
  return std::any_of(state.Plugins().begin(), state.Plugins().end(), [&](const PluginRun& plugin) {
    if (!IsStarted(plugin.head) || Done(state, plugin)) return false;
    if (!Stopping(state)) return plugin.state == State::kReady;
    return !NeverCounted(state, plugin) && stillNeeded.count(plugin.head.id) == 0;
  });
}

/// What blocks the start or stop for ever, when no plugin's code runs and none is ready.
std::string EndlessWaitText(const RunState& state, const std::vector<std::string>& cycles) {
  if (!OnlyWaiting(state) || AnyIsReady(state)) return std::string();
  std::string text;
  if (!cycles.empty()) {
    text = cycles.size() == 1 ? "waiting for the cycle " : "waiting for the cycles ";
    text += JoinNames(cycles, kMostNames);
  }
  if (std::any_of(state.Plugins().begin(), state.Plugins().end(),
                  [&](const PluginRun& plugin) { return NeverCounted(state, plugin); })) {
    text += text.empty() ? "waiting for " : ", and for ";
    text += "a sub platform without an ID, whose stop is never counted";
  }
  return text;
}

template <typename Text>
std::string WaitText(const RunState& state, const std::vector<std::string>& cycles, Text text) {
  std::vector<std::string> names;
  for (const PluginRun& plugin : state.Plugins()) {
    if (Running(plugin)) names.push_back(text(plugin));
  }
  if (names.empty()) return EndlessWaitText(state, cycles);
  return "waiting for " + JoinNames(names, kMostNames);
}

/// "16 of 20 started, 1 failed"; at the stop "9 of 18 stopped, 1 refused", where plugins that had
/// nothing to stop are not counted.
std::string DoneText(const RunState& state) {
  const bool stopping = Stopping(state);
  std::size_t all = 0;
  std::size_t well = 0;
  std::size_t badly = 0;
  for (const PluginRun& plugin : state.Plugins()) {
    if (!IsStarted(plugin.head)) continue;
    const bool done = Done(state, plugin);
    const bool isWell =
        stopping ? plugin.state == State::kStopped : plugin.started == State::kStarted;
    const bool isBad = stopping ? plugin.state == State::kStopRefused : !isWell;
    if (done && !isWell && !isBad) continue;  // there was nothing to stop
    ++all;
    if (done) ++(isWell ? well : badly);
  }
  std::string text = fmt::format("{} of {} {}", well, all, stopping ? "stopped" : "started");
  if (badly != 0) text += fmt::format(", {} {}", badly, stopping ? "refused" : "failed");
  return text;
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

std::string WaitedFor(const RunState& state, const std::vector<std::string>& cycles) {
  return WaitText(state, cycles, [](const PluginRun& plugin) { return plugin.head.id; });
}

std::string WaitingLine(const RunState& state, const std::vector<std::string>& cycles,
                        std::int64_t nowNs) {
  const std::string waited = WaitText(state, cycles, [nowNs](const PluginRun& plugin) {
    return fmt::format("{} ({:.1f} s)", ShownID(plugin.head.id),
                       static_cast<double>(nowNs - plugin.sinceNs) * 1e-9);
  });
  return waited.empty() ? waited : DoneText(state) + "; " + waited;
}

std::string WaitingForCall(const std::string& call, double seconds) {
  constexpr double usual = 2;
  return seconds < usual ? std::string() : fmt::format("waiting for {} ({:.1f} s)", call, seconds);
}

std::size_t NameColumns(std::size_t columns) {
  constexpr std::size_t usual = 24;       // for the name, on a terminal with 80 columns
  constexpr std::size_t besideName = 80;  // for the table's other columns and a reason
  if (columns == 0) return std::numeric_limits<std::size_t>::max();
  return columns > besideName + usual ? columns - besideName : std::min(usual, columns / 2);
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
