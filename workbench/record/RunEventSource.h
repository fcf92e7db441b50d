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
/// begin) is taken as it is; of a plugin that was not named only kReady is never told.
class RunEventSource {
 public:
  struct Where {
    std::int64_t nanoseconds = 0;
    std::uint64_t thread = 0;
  };

  /// May replace the reason why a plugin was not loaded or its Init failed. `event`: the line that
  /// gave the reason, one of kLoadFailed, kInitMissing, kInitThrew, kInitThrewNoException and
  /// kInitFailed, which stands for an Init that returned false.
  using RefineReason = std::function<std::string(const std::string& plugin, const FrameEvent& event,
                                                 const std::string& reason)>;

  /// Names the plugins of the model, with what each waits for, before the first event of the start.
  /// Of two with one ID the first one counts; executables and drivers are passed over.
  void SetPlugins(std::vector<PluginHead> plugins);
  void SetRefineReason(RefineReason refine) { m_refine = std::move(refine); }

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
  /// A phase of all plugins, start or stop: who still waits for whom.
  struct Order {
    std::map<std::string, std::set<std::string>> waitsFor;  // only what is not counted yet
    std::set<std::string> waiting;                          // those that were not told to be ready
    bool open = false;                                      // between the phase's begin and its end
  };

  /// What one thread does.
  struct Work {
    enum class Step { kNone, kLoad, kInit, kUnInit, kUnInitReturned };

    std::uint64_t task = 0;
    bool hasPlugin = false;
    std::string plugin;
    Step step = Step::kNone;
    std::string path;                // of the library that is loaded
    std::string message;             // the loader's, or the plugin's last own line
    std::string reason;              // why Init or UnInit will have failed
    FrameEvent cause;                // the line that gave the reason
    std::int64_t milliseconds = -1;  // what UnInit cost, once it has returned
  };
};
