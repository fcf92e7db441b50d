#pragma once

#include <string>

#include "workbench/timeline/Timeline.h"

/// The run as one JSON object with a schema number, described in docs/report.md; ended by a line
/// feed. Bytes that are not valid UTF-8 become U+FFFD.
std::string ReportJson(const Timeline& timeline);
