#pragma once

#include <cstddef>
#include <string>

#include "host/RunVerdict.h"
#include "workbench/record/RunState.h"

/// How the table at the end of a run is to look.
struct TableStyle {
  std::size_t columns = 0;  // of the terminal; 0: it is none, and nothing is cut or wrapped
  bool color = false;
  bool all = false;  // every plugin, however many there are
};

/// Each plugin, how it started and stopped and what that took, and why it failed; those that need
/// attention first. Beyond 40 plugins those that are well are folded into a line. Then the totals,
/// and the verdict's sentence in the last line. No line is wider than the terminal: names are cut,
/// reasons and sentences wrapped.
std::string RunTable(const RunState& state, const Verdict& verdict, const TableStyle& style);
