#pragma once

#include <cstddef>
#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include "workbench/record/RunEvent.h"

/// What has become of one plugin.
struct PluginRun {
  enum class State {
    kWaiting,  // for plugins that it depends on
    kReady,    // nothing that it waits for is left: for the frame to look again, or a pool thread
    kLoading,
    kInInit,
    kStarted,
    kInitFailed,
    kNotLoaded,
    kInUnInit,  // until it is counted: its library is unmapped first, which runs code of it
    kStopped,
    kStopRefused
  };

  PluginHead head;
  State state = State::kWaiting;
  State started = State::kWaiting;  // how its start ended: kStarted, kInitFailed, kNotLoaded;
                                    // kWaiting while it has not
  bool startCounted = false;
  bool stopCounted = false;       // also of one that had nothing to stop, whose state stays: it may
                                  // be in Init still, or never have begun
  std::int64_t initMs = -1;       // what Init cost; -1 when it has not returned
  std::int64_t uninitMs = -1;     // what UnInit cost
  std::int64_t sinceNs = 0;       // when `state` began; 0 before its first event
  std::int64_t startedAtNs = -1;  // when its load task began; -1: it has not
  std::uint64_t thread = 0;       // that ran its start; 0: none has
  std::string waitedFor;          // the last plugin that its start waited for; empty: none
  std::string reason;             // why its start failed, or how it crashed; one line
  std::string stopReason;         // why its stop was refused, or how it crashed in it; one line
};

/// A run as its events describe it, up to the last one applied: a run that goes on, or a record's.
///
/// Not thread-safe.
class RunState {
 public:
  /// Adds a plugin of the model, before its first event. One that is there already stays.
  void AddPlugin(const PluginHead& head);

  /// Applies one event. Events come in the order of their times; one that makes no sense (of a
  /// plugin in another state) is taken as it is. A plugin that the model does not have is added.
  void Apply(const RunEvent& event);

  /// In the model's order. Executables and drivers are among them only by AddPlugin, and nothing
  /// ever happens to them.
  const std::vector<PluginRun>& Plugins() const { return m_plugins; }
  const PluginRun* Find(const std::string& id) const;

  struct Phase {
    std::string name;
    std::int64_t beginNs = 0;
    std::int64_t endNs = -1;         // -1: it has not ended
    std::int64_t milliseconds = -1;  // as the frame measured them; -1: it did not
  };
  const std::vector<Phase>& Phases() const { return m_phases; }
  const Phase* FindPhase(const std::string& name) const;  // the last of that name

  const std::vector<RunEvent>& Findings() const { return m_findings; }
  const std::vector<RunEvent>& StopRequests() const { return m_stopRequests; }
  const std::optional<RunEvent>& Up() const { return m_up; }
  /// The first one: what crashes after it may be its consequence.
  const std::optional<RunEvent>& Crash() const { return m_crash; }
  const std::optional<RunEvent>& End() const { return m_end; }

 private:
  PluginRun& Plugin(const std::string& id);
  void ApplyToPlugin(const RunEvent& event);
  void ApplyCrash(const RunEvent& event);
  void ApplyCount(const RunEvent& event);
  void BeginPhase(const RunEvent& event);
  void EndPhase(const RunEvent& event);

  std::vector<PluginRun> m_plugins;
  std::map<std::string, std::size_t> m_positions;  // of an ID in m_plugins
  std::vector<Phase> m_phases;
  std::vector<RunEvent> m_findings;
  std::vector<RunEvent> m_stopRequests;
  std::optional<RunEvent> m_up;
  std::optional<RunEvent> m_crash;
  std::optional<RunEvent> m_end;
};
