#include "workbench/record/RunState.h"

#include <algorithm>
#include <cstdint>

namespace {

using Kind = RunEvent::Kind;
using Result = RunEvent::Result;
using State = PluginRun::State;

constexpr std::int64_t kDay = 86'400'000;  // milliseconds

void SetState(PluginRun& plugin, State state, std::int64_t nanoseconds) {
  if (plugin.state == state) return;
  plugin.state = state;
  plugin.sinceNs = nanoseconds;
}

void BeginStart(PluginRun& plugin, State state, const RunEvent& event) {
  SetState(plugin, state, event.nanoseconds);
  plugin.thread = event.thread;
  if (plugin.startedAtNs < 0) plugin.startedAtNs = event.nanoseconds;
}

void EndStart(PluginRun& plugin, State state, const RunEvent& event) {
  SetState(plugin, state, event.nanoseconds);
  plugin.started = state;
  plugin.reason = event.text;
}

/// How a start ended, from the result of the event kCounted.
State StartedBy(Result result) {
  switch (result) {
    case Result::kNotLoaded:
      return State::kNotLoaded;
    case Result::kFailed:
      return State::kInitFailed;
    default:
      return State::kStarted;
  }
}

bool StopHasBegun(const PluginRun& plugin) {
  return plugin.state == State::kInUnInit || plugin.state == State::kStopped ||
         plugin.state == State::kStopRefused;
}

}  // namespace

void RunState::AddPlugin(const PluginHead& head) {
  if (!m_positions.emplace(head.id, m_plugins.size()).second) return;
  m_plugins.emplace_back();
  m_plugins.back().head = head;
}

const PluginRun* RunState::Find(const std::string& id) const {
  const auto position = m_positions.find(id);
  return position == m_positions.end() ? nullptr : &m_plugins[position->second];
}

PluginRun& RunState::Plugin(const std::string& id) {
  const auto position = m_positions.find(id);
  if (position != m_positions.end()) return m_plugins[position->second];
  PluginHead head;
  head.id = id;
  AddPlugin(head);
  return m_plugins.back();
}

const RunState::Phase* RunState::FindPhase(const std::string& name) const {
  const auto phase = std::find_if(m_phases.rbegin(), m_phases.rend(),
                                  [&](const Phase& other) { return other.name == name; });
  return phase == m_phases.rend() ? nullptr : &*phase;
}

void RunState::BeginPhase(const RunEvent& event) {
  Phase phase;
  phase.name = event.phase;
  phase.beginNs = event.nanoseconds;
  m_phases.push_back(phase);
}

/// An end without a begin, which a cut log has, adds a phase as long as the frame says that it was.
void RunState::EndPhase(const RunEvent& event) {
  auto phase = std::find_if(m_phases.rbegin(), m_phases.rend(), [&](const Phase& other) {
    return other.name == event.phase && other.endNs < 0;
  });
  if (phase == m_phases.rend()) {
    BeginPhase(event);
    phase = m_phases.rbegin();
    phase->beginNs -= std::clamp<std::int64_t>(event.milliseconds, 0, kDay) * 1'000'000;
  }
  phase->endNs = event.nanoseconds;
  phase->milliseconds = event.milliseconds;
}

void RunState::Apply(const RunEvent& event) {
  switch (event.kind) {
    case Kind::kPhaseBegin:
      BeginPhase(event);
      break;
    case Kind::kPhaseEnd:
      EndPhase(event);
      break;
    case Kind::kPosted:
    case Kind::kTaskBegin:
    case Kind::kTaskEnd:
      break;  // belong to no plugin
    case Kind::kUp:
      m_up = event;
      break;
    case Kind::kStopRequest:
      m_stopRequests.push_back(event);
      break;
    case Kind::kFinding:
      m_findings.push_back(event);
      break;
    case Kind::kCrash:
      ApplyCrash(event);
      break;
    case Kind::kEnd:
      m_end = event;
      break;
    default:
      ApplyToPlugin(event);
      break;
  }
}

void RunState::ApplyCrash(const RunEvent& event) {
  if (m_crash) return;
  m_crash = event;
  const auto position = m_positions.find(event.plugin);
  if (event.plugin.empty() || position == m_positions.end()) return;
  PluginRun& plugin = m_plugins[position->second];
  (event.phase == RunPhase::kStop ? plugin.stopReason : plugin.reason) = event.text;
}

void RunState::ApplyToPlugin(const RunEvent& event) {
  PluginRun& plugin = Plugin(event.plugin);
  switch (event.kind) {
    case Kind::kReady:
      if (event.phase != RunPhase::kStart) break;
      plugin.waitedFor = event.text;
      if (plugin.state == State::kWaiting) SetState(plugin, State::kReady, event.nanoseconds);
      break;
    case Kind::kLoadBegin:
      BeginStart(plugin, State::kLoading, event);
      break;
    case Kind::kLoadEnd:
      if (event.result != Result::kOk) EndStart(plugin, State::kNotLoaded, event);
      break;
    case Kind::kInitBegin:
      BeginStart(plugin, State::kInInit, event);
      break;
    case Kind::kInitEnd:
      plugin.initMs = event.milliseconds;
      EndStart(plugin, event.result == Result::kOk ? State::kStarted : State::kInitFailed, event);
      break;
    case Kind::kUnInitBegin:
      SetState(plugin, State::kInUnInit, event.nanoseconds);
      break;
    case Kind::kUnInitEnd:
      plugin.uninitMs = event.milliseconds;
      plugin.stopReason = event.text;
      break;
    case Kind::kCounted:
      ApplyCount(event);
      break;
    default:
      break;
  }
}

void RunState::ApplyCount(const RunEvent& event) {
  PluginRun& plugin = Plugin(event.plugin);
  if (event.phase == RunPhase::kStart) {
    // The count decides: a task that runs out of memory after a successful Init counts as failed.
    plugin.startCounted = true;
    if (event.result == Result::kNone) return;
    plugin.started = StartedBy(event.result);
    if (!StopHasBegun(plugin)) SetState(plugin, plugin.started, event.nanoseconds);
    if (!event.text.empty()) plugin.reason = event.text;
    return;
  }
  plugin.stopCounted = true;
  if (event.result == Result::kNotLoaded || event.result == Result::kNone) return;
  SetState(plugin, event.result == Result::kRefused ? State::kStopRefused : State::kStopped,
           event.nanoseconds);
  if (!event.text.empty()) plugin.stopReason = event.text;
}
