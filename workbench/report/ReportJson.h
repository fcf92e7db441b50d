#pragma once

#include <optional>
#include <string>
#include <vector>

#include "workbench/timeline/Budget.h"
#include "workbench/timeline/Comparison.h"
#include "workbench/timeline/Timeline.h"

/// What a report has beside the run itself.
struct ReportAdditions {
  std::optional<Comparison> comparison;
  std::optional<std::vector<BudgetResult>> budget;
};

/// The run as one JSON object with a schema number, described in docs/report.md; ended by a line
/// feed. Bytes that are not valid UTF-8 become U+FFFD.
std::string ReportJson(const Timeline& timeline, const ReportAdditions& additions = {});
