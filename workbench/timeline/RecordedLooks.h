#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "workbench/timeline/Schedule.h"
#include "workbench/timeline/Timeline.h"

/// Fills what is known of the frame's looks from when plugins were posted: `looks`, whose mode is
/// set, and of each plugin toPost, toWake and readyLag. Every span of `phase` has ended in it, its
/// times in order. `byPost`: the plugins in the order of their posts. Returns how late the frame
/// woke up at most.
std::int64_t FillLooks(const PhaseTimeline& phase, const std::vector<std::size_t>& byPost,
                       PhaseWork& work);
