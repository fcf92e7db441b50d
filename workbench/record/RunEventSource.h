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

/// Makes the events of a run from what the frame logs and what the pool does, on which thread and
/// when: it knows which plugin's code a thread runs, which reason belongs to which plugin, and
/// which plugin became ready when another was counted.
///
/// Not thread-safe: the caller serialises the calls, which come in the order of their times. What
/// makes no sense (a plugin that SetPlugins did not name, a thread without a task, an end without a
/// begin) is accepted as it is; a plugin that was not named only gets no kReady.
class RunEventSource {
 public:
  struct Where {
    std::int64_t nanoseconds = 0;
    std::uint64_t thread = 0;
  };

  /// Names the plugins of the model, with what each waits for, before the first event of the start.
  /// Of two with one ID the first one counts; executables and drivers are passed over.
  void SetPlugins(std::vector<PluginHead> plugins);

  // Each returns the events that come of it, none, one or several. Reasons are one line: their
  // control bytes are written as \xNN.

  std::vector<RunEvent> OnFrameEvent(const Where& where, const FrameEvent& event);
  /// What the system's loader says, while a library is loaded on that thread: "path: message".
  std::vector<RunEvent> OnLoaderMessage(const Where& where, const std::string& text);
  /// Any other log line, with its module as it is to be shown. On a thread that runs a plugin's
  /// Init it is the plugin's own: the last one is part of the reason when that Init returns false.
  std::vector<RunEvent> OnOtherLine(const Where& where, const std::string& text);
  std::vector<RunEvent> OnTaskPosted(const Where& where, std::uint64_t task);
  std::vector<RunEvent> OnTaskBegun(const Where& where, std::uint64_t task);
  std::vector<RunEvent> OnTaskEnded(const Where& where, std::uint64_t task);

 private:
  using Events = std::vector<RunEvent>;

  /// The start or the stop of all plugins: who still waits for whom.
  struct Order {
    explicit Order(const char* name) : phase(name) {}

    const char* phase;
    bool open = false;                                        // between its begin and its end
    std::map<std::string, std::set<std::string>> waitsFor;    // of a plugin: those not counted yet
    std::map<std::string, std::vector<std::string>> waiters;  // of a plugin: those that wait for
                                                              // it, in the model's order
    std::set<std::string> ready;                              // whose kReady was added
    std::vector<std::string> done;                            // whose code has returned, in order
  };

  /// A plugin's turn on a thread, from its begin until the plugin is counted.
  struct Turn {
    enum class Step { kNone, kLoad, kInit, kUnInit, kUnInitReturned };

    std::string plugin;
    Step step = Step::kNone;
    std::string path;               // of the library that is loaded
    std::string message;            // of the loader; in Init, the last line that the plugin logged
    std::string reason;             // why Init or UnInit will have failed; empty: not known yet
    std::int64_t milliseconds = 0;  // how long UnInit took, once it has returned
  };

  static void OnPhase(const Where& where, const FrameEvent& event, Events& events);
  void OnStartLine(const Where& where, const FrameEvent& event, Events& events);
  void OnStopLine(const Where& where, const FrameEvent& event, Events& events);

  // Who waits for whom.
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
