#pragma once

#include <string>

#include "workbench/report/page/PhaseView.h"

/// The product, when it ran, how the run ended, what HUB found.
std::string RunSummary(const Timeline& timeline);

/// Where the phase's time went: wall time = critical path + waiting for the next look + idle.
std::string BalanceHtml(const PhaseView& view);

/// Who failed and why, who was started although a dependency failed, who has not returned and who
/// waits behind; empty when there is nothing of these.
std::string AttentionHtml(const PhaseView& view);
