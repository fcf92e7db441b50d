#pragma once

#include <cstddef>
#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include "workbench/record/RunEvent.h"

/// The state of one plugin in a run.
struct PluginRun {
  enum class State {
    kWaiting,  // for plugins that it depends on
    kReady,    // waits for no other plugin, only to be posted and for a pool thread
    kLoading,
    kInInit,
    kStarted,
    kInitFailed,
    kNotLoaded,
    kInUnInit,  // from UnInit until it is counted; unmapping its library also runs its code
    kStopped,
    kStopRefused
  };

  PluginHead head;
  State state = State::kWaiting;
  State started = State::kWaiting;  // how its start ended: kStarted, kInitFailed, kNotLoaded;
                                    // kWaiting before its end
  bool startCounted = false;        // when a log does not say with which result, the states stay
  bool stopCounted = false;       // also for a plugin that had nothing to stop; its `state` stays:
                                  // its Init may still run, or its start never began
  std::int64_t initMs = -1;       // duration of Init; -1: it has not returned
  std::int64_t uninitMs = -1;     // duration of UnInit; -1: it has not returned
  std::int64_t sinceNs = 0;       // when `state` began; 0 before its first event
  std::int64_t startedAtNs = -1;  // when its load task began; -1: not yet
  std::uint64_t thread = 0;       // the thread of its start; 0: not started
  std::string waitedFor;          // the last plugin that its start waited for; empty: none
  std::string reason;             // why its start failed, or how it crashed; one line
  std::string stopReason;         // why its stop was refused, or how it crashed in it; one line
};

/// The state of a run after the events applied so far; of a running one, or one read from a record.
///
/// Not thread-safe.
class RunState {
 public:
  /// Adds a plugin of the model, before its first event. A second one with the same ID is ignored.
  void AddPlugin(const PluginHead& head);

  /// Applies one event. Events must come in the order of their times. An inconsistent event (a
  /// plugin in another state) is applied all the same; an unknown plugin is added.
  void Apply(const RunEvent& event);

  /// In the model's order, with the executables and drivers that were added, whose state never
  /// changes.
  const std::vector<PluginRun>& Plugins() const { return m_plugins; }
  const PluginRun* Find(const std::string& id) const;

  struct Phase {
    std::string name;
    std::int64_t beginNs = 0;
    std::int64_t endNs = -1;         // -1: it has not ended
    std::int64_t milliseconds = -1;  // as measured by the frame; -1: not measured
  };
  const std::vector<Phase>& Phases() const { return m_phases; }
  const Phase* FindPhase(const std::string& name) const;  // the last of that name

  const std::vector<RunEvent>& Findings() const { return m_findings; }
  const std::vector<RunEvent>& StopRequests() const { return m_stopRequests; }
  const std::optional<RunEvent>& Up() const { return m_up; }
  /// The first crash; later ones may be its consequences.
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
  std::map<std::string, std::size_t> m_positions;  // indices into m_plugins by ID
  std::vector<Phase> m_phases;
  std::vector<RunEvent> m_findings;
  std::vector<RunEvent> m_stopRequests;
  std::optional<RunEvent> m_up;
  std::optional<RunEvent> m_crash;
  std::optional<RunEvent> m_end;
};
