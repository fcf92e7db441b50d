#pragma once

#include "workbench/record/RecordedRun.h"

/// Lays the run out in time and writes every form of its report: each plugin has a span in each
/// phase, the parts of a phase's time add up to it, and no form fails.
void FuzzReport(RecordedRun run);
