#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "workbench/timeline/Timeline.h"

// What went wrong in a run, as far as the events say it.

/// A plugin whose library was being loaded or unmapped, or whose Init or UnInit ran, when the run
/// or its record ended; or whose Init was over and which was not yet counted.
struct NotReturned {
  enum class Where { kLoading, kInit, kCounting, kUnInit, kUnmapping };

  std::size_t plugin = 0;
  Where where = Where::kLoading;
  std::int64_t since = 0;            // nanoseconds since the run began
  std::vector<std::size_t> waiting;  // those that wait for it, directly or not, and never began
};

/// In the order of `since`. A plugin whose Init returned after the start had ended is none.
std::vector<NotReturned> FindNotReturned(const Timeline& timeline);

/// A plugin that was started although a plugin that it depends on had failed or was not loaded.
struct StartedAnyway {
  std::size_t plugin = 0;
  std::vector<std::size_t> failed;
};

/// In the model's order. Only what the run says of the dependencies.
std::vector<StartedAnyway> FindStartedAnyway(const Timeline& timeline);

/// The plugins that never began because they wait for each other, or for such a plugin; in the
/// model's order. Those that wait for a plugin of FindNotReturned are none.
std::vector<std::size_t> FindNeverBegun(const Timeline& timeline, const PhaseTimeline& phase);
