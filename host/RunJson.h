#pragma once

#include <nlohmann/json.hpp>
#include <string>

#include "host/RunClock.h"
#include "host/RunVerdict.h"
#include "reference/kpx/PlatformRecord.h"
#include "reference/lpc/LpcRecord.h"
#include "workbench/record/RunEvent.h"
#include "workbench/record/RunState.h"

/// The object that `run --json` prints; docs/run-json.md describes it and schemas/run.schema.json
/// checks it. `record`: the flight record's path; empty when there is no record.
nlohmann::ordered_json RunJson(const RunHead& head, const RunClock& clock, const RunFacts& facts,
                               const RunState& state, const Verdict& verdict,
                               const PlatformRecord& platform, const LpcRecord& lpc,
                               const std::string& record);
