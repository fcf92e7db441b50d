#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "workbench/timeline/Timeline.h"

/// How long something may take.
struct BudgetItem {
  enum class Kind {
    kUp,     // from Frame_Start until every plugin has been counted
    kPhase,  // name: of RunPhase
    kPlugin  // name: its ID; its work in the start
  };

  Kind kind = Kind::kPhase;
  std::string name;
  std::int64_t most = 0;  // nanoseconds
};

/// The result of one item.
struct BudgetResult {
  BudgetItem item;
  std::int64_t taken = kUnknown;  // kUnknown: it did not happen, or did not end
  bool exceeded = false;          // also when it is not known what was taken
};

/// Compares a run with a budget; the results in the budget's order.
std::vector<BudgetResult> CompareWithBudget(const Timeline& run,
                                            const std::vector<BudgetItem>& budget);
