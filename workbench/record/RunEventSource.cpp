#include "workbench/record/RunEventSource.h"

#include <algorithm>
#include <utility>

#include "workbench/record/OneLine.h"

namespace {

using Kind = FrameEvent::Kind;
using Result = RunEvent::Result;

RunEvent MakeEvent(const RunEventSource::Where& where, RunEvent::Kind kind) {
  RunEvent event;
  event.kind = kind;
  event.nanoseconds = where.nanoseconds;
  event.thread = where.thread;
  return event;
}

RunEvent PluginEvent(const RunEventSource::Where& where, RunEvent::Kind kind,
                     const std::string& plugin) {
  RunEvent event = MakeEvent(where, kind);
  event.plugin = plugin;
  return event;
}

RunEvent TaskEvent(const RunEventSource::Where& where, RunEvent::Kind kind, std::uint64_t task) {
  RunEvent event = MakeEvent(where, kind);
  event.task = task;
  return event;
}

/// The meaning of the loader's error code, for a loader that gives no message.
std::string LoadErrorText(std::int64_t code) {
  switch (code) {
    case 5:
      return "may not be read";
    case 126:
      return "is missing, or a library that it needs is";
    case 127:
      return "needs a symbol that no library offers";
    case 193:
      return "is no library for this machine";
    default:
      return "cannot be loaded";
  }
}

/// The loader's message without the "path: " before it.
std::string WithoutPath(const std::string& message, const std::string& path) {
  const std::string prefix = path + ": ";
  if (message.compare(0, prefix.size(), prefix) == 0) return message.substr(prefix.size());
  const std::size_t end = message.find(": ");
  return end == std::string::npos ? message : message.substr(end + 2);
}

/// Why a library was not loaded. `message`: the loader's message; empty when there is none.
std::string NotLoaded(const FrameEvent& event, const std::string& message) {
  if (!event.reason.empty()) return event.reason;
  if (!message.empty()) return message;
  return event.path + " " + LoadErrorText(event.number) + " (error " +
         std::to_string(event.number) + ")";
}

std::string NoInit(const FrameEvent& event) {
  return "its library exports no Init" + (event.reason.empty() ? "" : "; it is " + event.reason);
}

std::string Threw(const char* entry, const FrameEvent& event) {
  return std::string("its ") + entry +
         (event.reason.empty() ? " threw an exception without a text" : " threw: " + event.reason);
}

std::string ThrewNoException(const char* entry) {
  return std::string("its ") + entry + " threw something that is no exception object";
}

bool Runs(const PluginHead& plugin) {
  return plugin.kind != "driver" && plugin.kind != "executable";
}

}  // namespace

void RunEventSource::SetPlugins(std::vector<PluginHead> plugins) {
  std::map<std::string, PluginHead> byId;
  for (PluginHead& plugin : plugins) {
    if (!Runs(plugin)) continue;
    const std::string id = plugin.id;
    if (byId.emplace(id, std::move(plugin)).second) m_plugins.push_back(id);
  }
  for (const std::string& id : m_plugins) {
    m_start.waitsFor[id];
    m_stop.waitsFor[id];
  }
  for (const auto& [id, plugin] : byId) {
    for (const std::string& other : plugin.dependsOn) {
      if (byId.count(other) == 0) continue;
      m_start.waitsFor[id].insert(other);
      m_stop.waitsFor[other].insert(id);
    }
  }
  for (Order* order : {&m_start, &m_stop}) {
    for (const std::string& id : m_plugins) {
      for (const std::string& other : order->waitsFor[id]) order->waiters[other].push_back(id);
    }
  }
}

std::vector<RunEvent> RunEventSource::OnTaskPosted(const Where& where, std::uint64_t task) {
  return {TaskEvent(where, RunEvent::Kind::kPosted, task)};
}

std::vector<RunEvent> RunEventSource::OnTaskBegun(const Where& where, std::uint64_t task) {
  m_turns.erase(where.thread);  // a previous task whose end was not reported
  m_tasks[where.thread] = task;
  return {TaskEvent(where, RunEvent::Kind::kTaskBegin, task)};
}

std::vector<RunEvent> RunEventSource::OnTaskEnded(const Where& where, std::uint64_t task) {
  m_turns.erase(where.thread);
  m_tasks.erase(where.thread);
  return {TaskEvent(where, RunEvent::Kind::kTaskEnd, task)};
}

std::vector<RunEvent> RunEventSource::OnLoaderMessage(const Where& where, const std::string& text) {
  Turn* turn = FindTurn(where);
  if (turn != nullptr && turn->step == Turn::Step::kLoad) turn->message = text;
  return {};
}

std::vector<RunEvent> RunEventSource::OnOtherLine(const Where& where, const std::string& text) {
  Turn* turn = FindTurn(where);
  if (turn != nullptr && turn->step == Turn::Step::kInit) turn->message = text;
  return {};
}

std::vector<RunEvent> RunEventSource::OnFrameEvent(const Where& where, const FrameEvent& event) {
  Events events;
  OnPhase(where, event, events);
  OnStartLine(where, event, events);
  OnStopLine(where, event, events);
  return events;
}

void RunEventSource::OnPhase(const Where& where, const FrameEvent& event, Events& events) {
  const auto add = [&](RunEvent::Kind kind, const char* phase) {
    RunEvent made = MakeEvent(where, kind);
    made.phase = phase;
    made.milliseconds = event.milliseconds;
    events.push_back(std::move(made));
  };
  switch (event.kind) {
    case Kind::kPlatformStartBegin:
      return add(RunEvent::Kind::kPhaseBegin, RunPhase::kPlatformStart);
    case Kind::kPlatformStarted:
      return add(RunEvent::Kind::kPhaseEnd, RunPhase::kPlatformStart);
    case Kind::kPluginsStartBegin:
      return add(RunEvent::Kind::kPhaseBegin, RunPhase::kStart);
    case Kind::kPluginsStartEnd:
      return add(RunEvent::Kind::kPhaseEnd, RunPhase::kStart);
    case Kind::kFrameStopBegin:
      return add(RunEvent::Kind::kPhaseBegin, RunPhase::kFrameStop);
    case Kind::kFrameStopEnd:
      return add(RunEvent::Kind::kPhaseEnd, RunPhase::kFrameStop);
    case Kind::kPluginsStopBegin:
      return add(RunEvent::Kind::kPhaseBegin, RunPhase::kStop);
    case Kind::kPluginsStopEnd:
      return add(RunEvent::Kind::kPhaseEnd, RunPhase::kStop);
    case Kind::kPlatformStopBegin:
      return add(RunEvent::Kind::kPhaseBegin, RunPhase::kPlatformStop);
    case Kind::kPlatformStopEnd:
      return add(RunEvent::Kind::kPhaseEnd, RunPhase::kPlatformStop);
    case Kind::kFrameUnInitBegin:
      return add(RunEvent::Kind::kPhaseBegin, RunPhase::kFrameUnInit);
    case Kind::kFrameUnInitEnd:
      return add(RunEvent::Kind::kPhaseEnd, RunPhase::kFrameUnInit);
    default:
      return;
  }
}

void RunEventSource::OnStartLine(const Where& where, const FrameEvent& event, Events& events) {
  Turn* turn = FindTurn(where);
  switch (event.kind) {
    case Kind::kPluginsStartBegin:
      return Open(where, m_start, events);
    case Kind::kPluginsStartEnd:
      m_start.open = false;
      return;
    case Kind::kLoadTaskBegin: {
      BeginTurn(where, event.plugin);
      AddMissingReady(where, m_start, event.plugin, events);
      const auto task = m_tasks.find(where.thread);
      events.push_back(PluginEvent(where, RunEvent::Kind::kLoadBegin, event.plugin));
      events.back().task = task == m_tasks.end() ? 0 : task->second;
      return;
    }
    case Kind::kLoadBegin:
      if (turn == nullptr) return;
      turn->step = Turn::Step::kLoad;
      turn->path = event.path;
      turn->message.clear();
      return;
    case Kind::kLoadSucceeded:
    case Kind::kLoadFailed:
      return EndLoad(where, event, events);
    case Kind::kInitBegin: {
      Turn& begun = TurnOf(where, event.plugin);
      begun.step = Turn::Step::kInit;
      begun.message.clear();
      events.push_back(PluginEvent(where, RunEvent::Kind::kInitBegin, event.plugin));
      return;
    }
    case Kind::kInitThrew:
    case Kind::kInitThrewNoException:
    case Kind::kInitMissing:
      if (turn == nullptr) return;
      turn->reason = event.kind == Kind::kInitThrew     ? Threw("Init", event)
                     : event.kind == Kind::kInitMissing ? NoInit(event)
                                                        : ThrewNoException("Init");
      return;
    case Kind::kInitSucceeded:
    case Kind::kInitFailed:
      return EndInit(where, event, events);
    case Kind::kStartCounted:
      return Count(where, m_start, event, Result::kOk, "", events);
    case Kind::kStartFailedCounted:
      return Count(where, m_start, event, Result::kFailed, "", events);
    case Kind::kStartCountedSomehow:
      return Count(where, m_start, event, Result::kNone, "", events);
    case Kind::kStartAbandoned:
      return Count(where, m_start, event, Result::kFailed, "its start task threw: " + event.reason,
                   events);
    case Kind::kNotLoadedCounted:
      return Count(where, m_start, event, Result::kNotLoaded, "", events);
    case Kind::kLoadSkipped:
      return Count(where, m_start, event, Result::kNotLoaded, event.reason, events);
    default:
      return;
  }
}

void RunEventSource::OnStopLine(const Where& where, const FrameEvent& event, Events& events) {
  Turn* turn = FindTurn(where);
  switch (event.kind) {
    case Kind::kPluginsStopBegin:
      return Open(where, m_stop, events);
    case Kind::kPluginsStopEnd:
      m_stop.open = false;
      return;
    case Kind::kUnloadTaskBegin:
      BeginTurn(where, event.plugin);
      return AddMissingReady(where, m_stop, event.plugin, events);
    case Kind::kNamelessNotCounted:
      m_turns.erase(where.thread);
      return;
    case Kind::kUnInitBegin: {
      TurnOf(where, event.plugin).step = Turn::Step::kUnInit;
      events.push_back(PluginEvent(where, RunEvent::Kind::kUnInitBegin, event.plugin));
      return;
    }
    case Kind::kUnInitThrew:
      if (turn != nullptr) turn->reason = Threw("UnInit", event);
      return;
    case Kind::kUnInitThrewNoException:
      if (turn != nullptr) turn->reason = ThrewNoException("UnInit");
      return;
    case Kind::kUnInitMissing:
      if (turn != nullptr) turn->reason = "its library exports no UnInit";
      return;
    case Kind::kUnInitEnd: {
      // The line does not contain the result. If no earlier line gave a reason, the next line shows
      // it: the library is unmapped, or the plugin is counted.
      Turn& returned = TurnOf(where, event.plugin);
      returned.step = Turn::Step::kUnInitReturned;
      returned.milliseconds = event.milliseconds;
      m_stop.done.push_back(event.plugin);
      if (!returned.reason.empty()) EndUnInit(where, Result::kRefused, returned.reason, events);
      return;
    }
    case Kind::kFreeBegin:
      return EndUnInit(where, Result::kOk, "", events);
    case Kind::kStopCounted:
      EndUnInit(where, Result::kOk, "", events);
      return Count(where, m_stop, event, Result::kOk, "", events);
    case Kind::kStopRefusedCounted:
      EndUnInit(where, Result::kRefused, "its UnInit returned false", events);
      return Count(where, m_stop, event, Result::kRefused, "", events);
    case Kind::kStopCountedSomehow:
      EndUnInit(where, Result::kNone, "", events);
      return Count(where, m_stop, event, Result::kNone, "", events);
    case Kind::kNothingToStopCounted:
      return Count(where, m_stop, event, Result::kNotLoaded, "", events);
    case Kind::kUnloadSkipped:
      return Count(where, m_stop, event, Result::kRefused, event.reason, events);
    default:
      return;
  }
}

// ---------------------------------------------------------------- the order of start and stop

void RunEventSource::Open(const Where& where, Order& order, Events& events) const {
  order.open = true;
  for (const std::string& plugin : m_plugins) {
    if (order.waitsFor[plugin].empty()) AddReady(where, order, plugin, "", events);
  }
}

void RunEventSource::AddReady(const Where& where, Order& order, const std::string& plugin,
                              const std::string& last, Events& events) const {
  if (!order.ready.insert(plugin).second) return;
  events.push_back(PluginEvent(where, RunEvent::Kind::kReady, plugin));
  events.back().phase = order.phase;
  events.back().text = last;
}

/// The frame begins a plugin's dependents once the plugin's Init or UnInit has returned, which may
/// be before the plugin is counted. The kReady of such a dependent is added here, as it begins.
void RunEventSource::AddMissingReady(const Where& where, Order& order, const std::string& plugin,
                                     Events& events) const {
  const auto waitsFor = order.waitsFor.find(plugin);
  if (waitsFor == order.waitsFor.end()) return;
  const auto last =
      std::find_if(order.done.rbegin(), order.done.rend(),
                   [&](const std::string& other) { return waitsFor->second.count(other) != 0; });
  AddReady(where, order, plugin, last == order.done.rend() ? "" : *last, events);
}

void RunEventSource::Count(const Where& where, Order& order, const FrameEvent& event, Result result,
                           const std::string& reason, Events& events) {
  m_turns.erase(where.thread);
  RunEvent counted = PluginEvent(where, RunEvent::Kind::kCounted, event.plugin);
  counted.phase = order.phase;
  counted.number = event.number;
  counted.result = result;
  counted.text = OneLine(reason);
  events.push_back(std::move(counted));
  const auto waiters = order.waiters.find(event.plugin);
  if (waiters == order.waiters.end()) return;
  for (const std::string& plugin : waiters->second) {
    std::set<std::string>& waitsFor = order.waitsFor[plugin];
    waitsFor.erase(event.plugin);
    if (waitsFor.empty() && order.open) AddReady(where, order, plugin, event.plugin, events);
  }
}

// ---------------------------------------------------------------- the threads

RunEventSource::Turn& RunEventSource::BeginTurn(const Where& where, const std::string& plugin) {
  Turn& turn = m_turns[where.thread];
  turn = Turn();
  turn.plugin = plugin;
  return turn;
}

/// The thread's turn; begins one if the line that begins it is missing.
RunEventSource::Turn& RunEventSource::TurnOf(const Where& where, const std::string& plugin) {
  Turn* turn = FindTurn(where);
  return turn != nullptr && turn->plugin == plugin ? *turn : BeginTurn(where, plugin);
}

RunEventSource::Turn* RunEventSource::FindTurn(const Where& where) {
  const auto turn = m_turns.find(where.thread);
  return turn == m_turns.end() ? nullptr : &turn->second;
}

void RunEventSource::EndLoad(const Where& where, const FrameEvent& event, Events& events) {
  Turn* turn = FindTurn(where);
  if (turn == nullptr) return;
  RunEvent ended = PluginEvent(where, RunEvent::Kind::kLoadEnd, turn->plugin);
  ended.result = event.kind == Kind::kLoadSucceeded ? Result::kOk : Result::kFailed;
  if (ended.result == Result::kFailed) {
    m_start.done.push_back(turn->plugin);
    ended.text = OneLine(NotLoaded(event, WithoutPath(turn->message, turn->path)));
  }
  events.push_back(std::move(ended));
}

void RunEventSource::EndInit(const Where& where, const FrameEvent& event, Events& events) {
  Turn& turn = TurnOf(where, event.plugin);
  m_start.done.push_back(event.plugin);
  RunEvent ended = PluginEvent(where, RunEvent::Kind::kInitEnd, event.plugin);
  ended.milliseconds = event.milliseconds;
  ended.result = event.kind == Kind::kInitSucceeded ? Result::kOk : Result::kFailed;
  if (ended.result == Result::kFailed) {
    std::string reason = turn.reason;
    if (reason.empty()) {
      reason = "its Init returned false" + (turn.message.empty() ? "" : ": " + turn.message);
    }
    ended.text = OneLine(reason);
  }
  events.push_back(std::move(ended));
}

/// Adds the kUnInitEnd of an UnInit that has returned, unless it was added before.
void RunEventSource::EndUnInit(const Where& where, Result result, const std::string& reason,
                               Events& events) {
  Turn* turn = FindTurn(where);
  if (turn == nullptr || turn->step != Turn::Step::kUnInitReturned) return;
  turn->step = Turn::Step::kNone;
  RunEvent ended = PluginEvent(where, RunEvent::Kind::kUnInitEnd, turn->plugin);
  ended.milliseconds = turn->milliseconds;
  ended.result = result;
  ended.text = OneLine(reason);
  events.push_back(std::move(ended));
}
