#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "workbench/timeline/Timeline.h"

/// What the fault of one plugin does to a run: compared with a run without the fault. Plugins are
/// indices into the timeline of the run without it.
struct RunHarm {
  struct Later {
    std::size_t plugin = 0;
    std::int64_t milliseconds = 0;
  };

  std::size_t plugin = 0;                // that has the fault
  std::vector<std::size_t> dependents;   // of it, directly or not
  std::vector<std::size_t> neverBegun;   // although they began without the fault
  std::vector<std::size_t> failed;       // others that failed or were not loaded, only now
  std::vector<std::size_t> begunAnyway;  // direct dependents, if the plugin with the fault failed
  std::vector<Later> later;              // dependents that began later, the latest first
  std::int64_t up = kUnknown;            // milliseconds until the product was up
  std::int64_t upLater = 0;              // than without the fault
  bool crashed = false;                  // the process, and every plugin with it
  bool stopHung = false;                 // the stop of the plugins did not end
  std::string end;                       // of the process: "exit status 3"
};

/// How many milliseconds apart a plugin begins in two runs of the same product, at most.
std::int64_t BeginsApart(const Timeline& a, const Timeline& b);

/// Compares two runs of a product. `id`: the plugin with the fault. `apart`: differences of begins
/// up to so many milliseconds are not counted.
RunHarm CompareRuns(const Timeline& without, const Timeline& with, const std::string& id,
                    std::int64_t apart);

/// Sorts by harm: first by the plugins that never began, then by those that failed or began
/// although a dependency had failed, then by the time that the start took longer, then by how many
/// plugins depend on the one with the fault.
void SortByHarm(std::vector<RunHarm>& harms);

/// One sentence on what the fault does, without a full stop. `does`: "fails".
std::string HarmSentence(const RunHarm& harm, const Timeline& without, const std::string& does);

/// A table with a line for each of `harms`, without columns that have nothing.
std::string HarmTable(const std::vector<RunHarm>& harms, const Timeline& without);
