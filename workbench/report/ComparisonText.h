#pragma once

#include <string>

#include "workbench/timeline/Comparison.h"

/// What differs from earlier runs, in lines: start and stop, slower and faster plugins with the
/// noise band of several earlier runs, new and gone ones, those onto and off the critical path, and
/// changed results.
std::string ComparisonText(const Comparison& comparison, std::int64_t resolution);
