#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "host/Commands.h"
#include "workbench/record/RunOutcome.h"
#include "workbench/record/RunState.h"

/// What is known about a run in addition to its events.
struct RunFacts {
  std::optional<std::int32_t> initResult;   // none: Frame_Init has not returned
  std::optional<std::int32_t> startResult;  // of Frame_Start
  std::optional<bool> callbackResult;       // of the start callback
  std::string failure;                      // why it failed, in a sentence without a full stop
  std::string stoppedBy;            // "SIGINT", "--start-timeout 5", ...; empty: no stop request
  std::size_t unfinishedTasks = 0;  // pool tasks that have not ended
  std::string pendingCall;          // the call that has not returned: "Frame_Stop", ...
};

/// How a run ended: as the status of `run --json`, as an exit status and as a sentence.
struct Verdict {
  std::string status;  // up, degraded, failed, cut-short, left-behind, crashed
  ExitStatus exitStatus = kOk;
  std::string sentence;
};

/// Judges a run that has ended. Returns the first that applies of: crashed, failed, left behind,
/// cut short, degraded, up.
Verdict Judge(const RunFacts& facts, const RunState& state);

/// The frame's call that comes next, when none is pending once Frame_Start has returned.
std::string NextCall(const RunState& state);
