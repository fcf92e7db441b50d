#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "workbench/record/RunState.h"

// The texts that are shown while a run goes on.

/// The plugins that the run waits for now, without times; "" for none. The text stays the same
/// while the same plugins are waited for.
///
/// These are the plugins whose library is being loaded or whose Init or UnInit runs. When there are
/// none, it is what never ends: `cycles` (each as "a → b → a"), and at the stop a sub platform
/// without an ID. At most five names. "" also when the frame is about to begin another plugin.
std::string WaitedFor(const RunState& state, const std::vector<std::string>& cycles);

/// WaitedFor with the number of finished plugins and with times: "16 of 20 started, 1 failed;
/// waiting for video.server (1.2 s)". Empty when WaitedFor is empty.
std::string WaitingLine(const RunState& state, const std::vector<std::string>& cycles,
                        std::int64_t nowNs);

/// The text while the run waits for a call: "waiting for Frame_Init (12.0 s)"; empty for the first
/// two seconds.
std::string WaitingForCall(const std::string& call, double seconds);

/// Decides when to log which plugins the run waits for: when they change, and once a minute.
/// Not thread-safe.
class WaitingLog {
 public:
  /// `waiting`: the text of WaitedFor. `nowNs`: the steady clock's time.
  bool IsDue(const std::string& waiting, std::int64_t nowNs);

 private:
  std::string m_last;
  std::int64_t m_lastNs = 0;
};

/// Whether the start or stop of the plugins has begun and not ended, and some plugin is not done.
/// When no task runs then, the plugins that are left may wait for each other for ever.
bool OnlyWaiting(const RunState& state);

/// How many plugins the frame has counted at the stop.
std::size_t CountStopped(const RunState& state);

/// How many columns a plugin's name may take on a terminal with `columns`, so that the other cells
/// fit; unlimited when `columns` is 0.
std::size_t NameColumns(std::size_t columns);

/// The line for a plugin's new state, without its name; empty for states that are not shown.
std::string EventText(const PluginRun& plugin);
