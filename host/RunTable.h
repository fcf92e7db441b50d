#pragma once

#include <cstddef>
#include <string>

#include "host/RunVerdict.h"
#include "workbench/record/RunState.h"

/// The format of the table at the end of a run.
struct TableStyle {
  std::size_t columns = 0;  // of the terminal; 0: no terminal, nothing is cut or wrapped
  bool color = false;
  bool all = false;  // show every plugin, however many there are
};

/// A line for each plugin: how it started and stopped, how long that took, why it failed; plugins
/// that need attention first. Of more than 40 plugins the further ones that need no attention are
/// replaced by one line. Then the totals, and the verdict's sentence. No line is wider than the
/// terminal: names are cut, reasons and sentences are wrapped.
std::string RunTable(const RunState& state, const Verdict& verdict, const TableStyle& style);
