#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <map>
#include <set>
#include <string>
#include <vector>

#include "workbench/record/FrameEvent.h"
#include "workbench/record/RunEvent.h"

/// Makes the events of a run from the frame's log lines and the pool's tasks, with the time and
/// thread of each. Determines which plugin's code a thread runs, which reason belongs to which
/// plugin, and which plugin became ready when another was counted.
///
/// Not thread-safe; the calls must come in the order of their times. Inconsistent input (a plugin
/// that SetPlugins did not name, a thread without a task, an end without a begin) is accepted; a
/// plugin that was not named gets no kReady.
class RunEventSource {
 public:
  /// When and on which thread something happened.
  struct Where {
    std::int64_t nanoseconds = 0;
    std::uint64_t thread = 0;
  };

  /// Sets the model's plugins and what each waits for. Call it before the first event of the start.
  /// Of two plugins with the same ID the first one counts; executables and drivers are ignored.
  void SetPlugins(std::vector<PluginHead> plugins);

  // Each returns the resulting events: none, one or several. Reasons are one line, with control
  // bytes as \xNN.

  std::vector<RunEvent> OnFrameEvent(const Where& where, const FrameEvent& event);
  /// A message of the system's loader while that thread loads a library: "path: message".
  std::vector<RunEvent> OnLoaderMessage(const Where& where, const std::string& text);
  /// Any other log line, preceded by its module. On a thread that runs a plugin's Init the plugin
  /// has logged it: the last such line is part of the reason when that Init returns false.
  std::vector<RunEvent> OnOtherLine(const Where& where, const std::string& text);
  std::vector<RunEvent> OnTaskPosted(const Where& where, std::uint64_t task);
  std::vector<RunEvent> OnTaskBegun(const Where& where, std::uint64_t task);
  std::vector<RunEvent> OnTaskEnded(const Where& where, std::uint64_t task);

 private:
  using Events = std::vector<RunEvent>;

  /// The order of the start or of the stop: which plugins still wait for which.
  struct Order {
    explicit Order(const char* name) : phase(name) {}

    const char* phase;
    bool open = false;                                        // the phase has begun and not ended
    std::map<std::string, std::set<std::string>> waitsFor;    // by plugin: those not counted yet
    std::map<std::string, std::vector<std::string>> waiters;  // by plugin: those that wait for
                                                              // it, in the model's order
    std::set<std::string> ready;                              // plugins whose kReady was added
    std::vector<std::string> done;                            // plugins whose Init or UnInit has
                                                              // returned, in order
  };

  /// The start or stop of one plugin on a thread, from its begin until the plugin is counted.
  struct Turn {
    enum class Step { kNone, kLoad, kInit, kUnInit, kUnInitReturned };

    std::string plugin;
    Step step = Step::kNone;
    std::string path;               // of the library that is being loaded
    std::string message;            // of the loader; in Init, the last line that the plugin logged
    std::string reason;             // why Init or UnInit failed; empty: not known yet
    std::int64_t milliseconds = 0;  // how long UnInit took, once it has returned
  };

  static void OnPhase(const Where& where, const FrameEvent& event, Events& events);
  void OnStartLine(const Where& where, const FrameEvent& event, Events& events);
  void OnStopLine(const Where& where, const FrameEvent& event, Events& events);

  // Which plugin waits for which.
  void Open(const Where& where, Order& order, Events& events) const;
  void AddReady(const Where& where, Order& order, const std::string& plugin,
                const std::string& last, Events& events) const;
  void AddMissingReady(const Where& where, Order& order, const std::string& plugin,
                       Events& events) const;
  void Count(const Where& where, Order& order, const FrameEvent& event, RunEvent::Result result,
             const std::string& reason, Events& events);

  // What a thread does.
  Turn& BeginTurn(const Where& where, const std::string& plugin);
  Turn& TurnOf(const Where& where, const std::string& plugin);
  Turn* FindTurn(const Where& where);
  void EndLoad(const Where& where, const FrameEvent& event, Events& events);
  void EndInit(const Where& where, const FrameEvent& event, Events& events);
  void EndUnInit(const Where& where, RunEvent::Result result, const std::string& reason,
                 Events& events);

  std::vector<std::string> m_plugins;  // in the model's order
  Order m_start{RunPhase::kStart};
  Order m_stop{RunPhase::kStop};
  std::map<std::uint64_t, std::uint64_t> m_tasks;  // by thread
  std::map<std::uint64_t, Turn> m_turns;           // by thread
};
