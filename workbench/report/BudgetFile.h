#pragma once

#include <string>
#include <vector>

#include "workbench/timeline/Budget.h"

/// Reads a budget from JSON, as docs/report.md describes it:
///
///     { "up": 3000, "phases": { "start": 2800 }, "plugins": { "video.server": 1600 } }
///
/// in milliseconds. Throws std::runtime_error with a sentence that names what is wrong.
std::vector<BudgetItem> ReadBudget(const std::string& text);

/// The items that are exceeded, or whose time the run does not say, one line each; and a last line
/// on how many were kept.
std::string BudgetText(const std::vector<BudgetResult>& results, std::int64_t resolution);
