#pragma once

#include <string>

#include "workbench/record/RecordedRun.h"

/// Makes a recorded run from a text, for tests. Times are milliseconds; "-" stands for an event
/// that is not in the record. A line is one of
///
///     start BEGIN END                   the phase `start`; or `stop`
///     a: x y                            plugin a, which depends on x and y; before its spans
///     a start POSTED BEGIN CODE CODE COUNTED [RESULT [REASON...]]     or `stop`
///
/// where CODE CODE is from when to when Init or UnInit ran, and RESULT is ok (the default), failed,
/// not-loaded or refused. Each span has a task and a thread of its own, numbered from 1 in the
/// order of the lines; `ready` is when the last plugin was counted that this one waits for.
RecordedRun RunFromText(const std::string& text);
