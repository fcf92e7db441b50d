#pragma once

#include <chrono>
#include <condition_variable>
#include <functional>
#include <mutex>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "host/Commands.h"
#include "workbench/record/RunEvent.h"

/// Delays the plugins' starts, so that a run begins them in another order than without delays: each
/// begins no earlier than a time of its own after the first one. A plugin that had to wait longer
/// for others begins at once.
///
/// Thread-safe: Wait is called on the plugins' threads, End by the run's thread.
class StartDelays {
 public:
  /// A plugin's time after the first start. Called on the plugins' threads.
  using DelayOf = std::function<std::chrono::milliseconds(const std::string& plugin)>;

  /// Without `delayOf` nothing is delayed.
  explicit StartDelays(DelayOf delayOf) : m_delayOf(std::move(delayOf)) {}
  StartDelays(const StartDelays&) = delete;
  StartDelays& operator=(const StartDelays&) = delete;

  /// Waits until the plugin's time has come, or End is called.
  void Wait(const std::string& plugin);

  /// Ends all waiting, at once and from now on.
  void End();

 private:
  const DelayOf m_delayOf;

  std::mutex m_mutex;
  std::condition_variable m_ends;

  // Guarded by m_mutex.
  std::optional<std::chrono::steady_clock::time_point> m_first;  // when the first start began
  bool m_ended = false;
};

/// A plugin's ID and delay from "PLUGIN=MILLISECONDS"; an ID may contain "=". None for other texts.
std::optional<std::pair<std::string, std::chrono::milliseconds>> ParsePluginDelay(
    const std::string& text);

/// The delays that the options ask for; empty when they ask for none.
StartDelays::DelayOf DelaysOf(const DelayOptions& options);

/// What the record says of the delays, in one sentence; empty for none.
std::string DelaysText(const DelayOptions& options);

/// The plugins that the options delay and the frame does not start.
std::vector<std::string> UnknownDelayed(const DelayOptions& options,
                                        const std::vector<PluginHead>& plugins);
