#pragma once

#include <chrono>
#include <cstdint>
#include <string>
#include <vector>

#include "host/PluginLives.h"

// How a product's life looks on a terminal, as texts.

/// The one line that is shown while plugins are starting or stopping: which are being waited for,
/// for how long, and at the start how many are done. Empty when nothing is waited for.
std::string WaitingLine(const std::vector<PluginLife>& lives,
                        std::chrono::steady_clock::time_point now);

/// What has changed of one plugin, as a line; empty when the change is not worth one.
std::string EventLine(const PluginLife& life);

/// The table at the end: each plugin, how it started and stopped and what that cost, why it failed;
/// then the totals. `startMs` and `stopMs`: wall time of both phases.
std::string LifeTable(const std::vector<PluginLife>& lives, std::int64_t startMs,
                      std::int64_t stopMs);
