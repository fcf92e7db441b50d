#pragma once

#include <cstddef>
#include <string>

#include "workbench/timeline/Problems.h"
#include "workbench/timeline/Timeline.h"

struct ReportStyle {
  std::size_t columns = 0;  // of the terminal; 0: no terminal, nothing is cut or wrapped
  bool color = false;
};

/// The run for people: how it ended, where the time of start and stop went, the critical paths, the
/// plugins with the least slack, failures, and who never returned. In lines.
std::string ReportText(const Timeline& timeline, const ReportStyle& style);

/// How the run ended, in a sentence: its own last sentence, a crash, or that its record has no end.
std::string HowItEnded(const Timeline& timeline);

/// Where a plugin did not return from: "in Init".
const char* WhereText(NotReturned::Where where);
