#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "workbench/record/RunState.h"

// What a run says while it goes on, as texts.

/// Whom the run waits for now, without times: "" for nobody; the same as long as the same plugins
/// are waited for.
///
/// Those whose library is being loaded or whose Init or UnInit is running; when there are none,
/// those that are waited for for ever: `cycles` (each as "a → b → a"), and at the stop a sub
/// platform without an ID. At most five names. Nobody while the frame only has to look again.
std::string WaitedFor(const RunState& state, const std::vector<std::string>& cycles);

/// That line with what is done and how long each has taken: "16 of 20 started, 1 failed; waiting
/// for video.server (1.2 s)". Empty when nobody is waited for.
std::string WaitingLine(const RunState& state, const std::vector<std::string>& cycles,
                        std::int64_t nowNs);

/// What is waited for when that is no plugin: "waiting for Frame_Init (12.0 s)"; empty as long as
/// that takes no longer than usual.
std::string WaitingForCall(const std::string& call, double seconds);

/// Decides when the log is told whom the run waits for: when that changes, and once a minute.
/// Not thread-safe.
class WaitingLog {
 public:
  /// `waiting`: as WaitedFor has it. `nowNs`: of the steady clock.
  bool IsDue(const std::string& waiting, std::int64_t nowNs);

 private:
  std::string m_last;
  std::int64_t m_lastNs = 0;
};

/// Whether a phase goes on in which some plugin is not done, though nothing says that one of them
/// is on the way: those that are left may wait for each other.
bool OnlyWaiting(const RunState& state);

/// How many plugins have been counted in the stop.
std::size_t CountStopped(const RunState& state);

/// How many columns of a terminal that has `columns` a plugin's name may take beside other things;
/// of 0 columns, as many as it has.
std::size_t NameColumns(std::size_t columns);

/// What has just become of a plugin, as a line without its name; empty when it is not worth one.
std::string EventText(const PluginRun& plugin);
