#pragma once

#include <string>

#include "workbench/record/RunState.h"

// What the table, JSON and reports say of a run's plugins: one wording for all of them.

/// Whether the frame starts this plugin; it does not start drivers and executables.
bool IsStarted(const PluginHead& plugin);

/// How many plugins there are, started, failed, were stopped, and so on.
RunTotals CountTotals(const RunState& state);

/// The state of a plugin, or how its start failed, as one word for JSON ("init-failed").
std::string OutcomeWord(const PluginRun& plugin);

/// Why the plugin's start failed and why it refused to stop, in one line; empty when neither.
std::string ReasonText(const PluginRun& plugin);

/// Whether the plugin is to be highlighted: its start failed or has not ended, it refused to stop,
/// or its stop has not ended.
bool NeedsAttention(const PluginRun& plugin);
