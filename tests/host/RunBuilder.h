#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "workbench/record/RunState.h"

/// Builds the state of a run from events; each call is a millisecond later than the previous one.
class RunBuilder {
 public:
  RunBuilder& Plugin(const std::string& id, const std::string& kind = "server",
                     const std::vector<std::string>& dependsOn = {}) {
    PluginHead head;
    head.id = id;
    head.kind = kind;
    head.dependsOn = dependsOn;
    return Plugin(head);
  }

  RunBuilder& Plugin(const PluginHead& head) {
    m_state.AddPlugin(head);
    return *this;
  }

  /// The start of `id` waits for no other plugin any more; `last` was the last one.
  RunBuilder& Ready(const std::string& id, const std::string& last) {
    RunEvent event = Event(RunEvent::Kind::kReady, id);
    event.phase = RunPhase::kStart;
    event.text = last;
    return Apply(event);
  }

  RunBuilder& Phase(RunEvent::Kind kind, const std::string& phase) {
    RunEvent event = Event(kind);
    event.phase = phase;
    return Apply(event);
  }

  /// The plugin's start waits for no other plugin.
  RunBuilder& Ready(const std::string& id) {
    RunEvent event = Event(RunEvent::Kind::kReady, id);
    event.phase = RunPhase::kStart;
    return Apply(event);
  }

  /// A complete, successful start of a plugin.
  RunBuilder& Started(const std::string& id, std::int64_t ms = 5) {
    InInit(id);
    RunEvent end = Event(RunEvent::Kind::kInitEnd, id);
    end.result = RunEvent::Result::kOk;
    end.milliseconds = ms;
    Apply(end);
    return Counted("start", id, RunEvent::Result::kOk);
  }

  RunBuilder& Loading(const std::string& id) {
    return Apply(Event(RunEvent::Kind::kLoadBegin, id));
  }

  RunBuilder& InInit(const std::string& id) {
    Loading(id);
    return Apply(Event(RunEvent::Kind::kInitBegin, id));
  }

  RunBuilder& InitFailed(const std::string& id, const std::string& reason) {
    InInit(id);
    RunEvent end = Event(RunEvent::Kind::kInitEnd, id);
    end.result = RunEvent::Result::kFailed;
    end.milliseconds = 7;
    end.text = reason;
    Apply(end);
    return Counted("start", id, RunEvent::Result::kFailed);
  }

  RunBuilder& NotLoaded(const std::string& id, const std::string& reason) {
    Loading(id);
    RunEvent end = Event(RunEvent::Kind::kLoadEnd, id);
    end.result = RunEvent::Result::kFailed;
    end.text = reason;
    Apply(end);
    return Counted("start", id, RunEvent::Result::kNotLoaded);
  }

  RunBuilder& InUnInit(const std::string& id) {
    return Apply(Event(RunEvent::Kind::kUnInitBegin, id));
  }

  /// The plugin's UnInit has returned; it has not been counted yet.
  RunBuilder& Unmapping(const std::string& id, std::int64_t ms = 3) {
    InUnInit(id);
    RunEvent end = Event(RunEvent::Kind::kUnInitEnd, id);
    end.result = RunEvent::Result::kOk;
    end.milliseconds = ms;
    return Apply(end);
  }

  RunBuilder& Stopped(const std::string& id, std::int64_t ms = 3) {
    return UnInitEnd(id, RunEvent::Result::kOk, ms, "");
  }

  /// The stop counts a plugin that was not loaded.
  RunBuilder& NothingToStop(const std::string& id) {
    return Counted("stop", id, RunEvent::Result::kNotLoaded);
  }

  /// A stop that is counted without an end of UnInit before it.
  RunBuilder& StoppedUnseen(const std::string& id) {
    return Counted("stop", id, RunEvent::Result::kOk);
  }

  RunBuilder& StopRefused(const std::string& id, const std::string& reason) {
    return UnInitEnd(id, RunEvent::Result::kRefused, 4, reason);
  }

  RunBuilder& Up() { return Apply(Event(RunEvent::Kind::kUp)); }

  RunBuilder& Finding(Severity severity, const std::string& text) {
    RunEvent event = Event(RunEvent::Kind::kFinding);
    event.severity = severity;
    event.text = text;
    return Apply(event);
  }

  std::int64_t Now() const { return m_now; }
  const RunState& State() const { return m_state; }

 private:
  RunEvent Event(RunEvent::Kind kind, const std::string& plugin = "") {
    RunEvent event;
    event.kind = kind;
    event.plugin = plugin;
    event.thread = 7;
    event.nanoseconds = m_now += 1'000'000;
    return event;
  }

  RunBuilder& Apply(const RunEvent& event) {
    m_state.Apply(event);
    return *this;
  }

  RunBuilder& Counted(const std::string& phase, const std::string& id, RunEvent::Result result) {
    RunEvent event = Event(RunEvent::Kind::kCounted, id);
    event.phase = phase;
    event.result = result;
    return Apply(event);
  }

  RunBuilder& UnInitEnd(const std::string& id, RunEvent::Result result, std::int64_t ms,
                        const std::string& reason) {
    InUnInit(id);
    RunEvent end = Event(RunEvent::Kind::kUnInitEnd, id);
    end.result = result;
    end.milliseconds = ms;
    end.text = reason;
    Apply(end);
    return Counted("stop", id, result);
  }

  RunState m_state;
  std::int64_t m_now = 0;
};
