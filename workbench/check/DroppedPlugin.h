#pragma once

#include "workbench/check/PluginLists.h"
#include "workbench/check/RuleFinding.h"

/// A finding on the <ID> of `loser`, which the frame drops for `winner`: that it does, and why.
RuleFinding DroppedFinding(const PluginEntry& winner, const PluginEntry& loser);
