#pragma once

#include <string>

#include "workbench/report/page/PhaseView.h"

/// A row for each plugin, by begin: its name, what became of it, its bar and its times.
std::string PluginTable(const PhaseView& view);

/// A lane for each thread that ran a plugin; a sentence when the threads are not known.
std::string ThreadTable(const PhaseView& view);

/// The plugins of the critical path, what released each, and its share of the wall time; a sentence
/// when there is none.
std::string PathTable(const PhaseView& view);
