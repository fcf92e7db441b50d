#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "host/Commands.h"
#include "workbench/record/RunState.h"

/// What is known of a run beyond its events.
struct RunFacts {
  std::optional<std::int32_t> initResult;   // none: Frame_Init has not returned
  std::optional<std::int32_t> startResult;  // of Frame_Start
  std::optional<bool> callbackResult;       // of the start callback
  std::string failure;                      // why it failed, in a sentence without a full stop
  std::string stoppedBy;                    // "SIGINT", "--start-timeout 5", ...; empty: nobody
  std::size_t unfinishedTasks = 0;          // that the run leaves behind
  std::string pendingCall;  // what the run leaves behind: an entry of the frame, ...
};

/// How a run ended, in the words of `run --json`, as an exit status and as a sentence.
struct Verdict {
  std::string status;  // up, degraded, failed, cut-short, left-behind, crashed
  ExitStatus exitStatus = kOk;
  std::string sentence;
};

/// Judges a run that is over. The worst that is true counts: crashed, failed, left behind, cut
/// short, degraded.
Verdict Judge(const RunFacts& facts, const RunState& state);

/// How many plugins there are, and what has become of them.
RunTotals CountTotals(const RunState& state);

/// How the start of a plugin ended, or what it is doing: one word for JSON ("init-failed").
std::string OutcomeWord(const PluginRun& plugin);

/// Why its start failed and its stop was refused, as far as they were; one line, often empty.
std::string ReasonText(const PluginRun& plugin);

/// Whether a plugin needs somebody's attention: anything but started and stopped well, or still
/// running.
bool NeedsAttention(const PluginRun& plugin);

/// Whether the start of a product waits for this plugin: drivers and executables start elsewhere.
bool IsStarted(const PluginHead& plugin);
