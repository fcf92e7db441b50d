#include "workbench/timeline/Budget.h"

#include <algorithm>

namespace {

constexpr std::int64_t kMillisecond = 1'000'000;

std::int64_t Taken(const Timeline& run, const BudgetItem& item) {
  switch (item.kind) {
    case BudgetItem::Kind::kUp:
      return run.state.Up() ? run.state.Up()->milliseconds * kMillisecond : kUnknown;
    case BudgetItem::Kind::kPhase: {
      if (item.name == RunPhase::kStart && !run.start.IsComplete(true)) return kUnknown;
      if (item.name == RunPhase::kStop && !run.stop.IsComplete(false)) return kUnknown;
      const RunState::Phase* phase = run.state.FindPhase(item.name);
      return phase == nullptr || phase->endNs < 0 ? kUnknown : phase->endNs - phase->beginNs;
    }
    case BudgetItem::Kind::kPlugin: {
      const auto plugin =
          std::find_if(run.plugins.begin(), run.plugins.end(),
                       [&](const PluginHead& head) { return head.id == item.name; });
      if (plugin == run.plugins.end()) return kUnknown;
      const PluginSpan& span =
          run.start.spans[static_cast<std::size_t>(plugin - run.plugins.begin())];
      return span.HasEnded() ? span.end - span.begin : kUnknown;
    }
  }
  return kUnknown;
}

}  // namespace

std::vector<BudgetResult> CompareWithBudget(const Timeline& run,
                                            const std::vector<BudgetItem>& budget) {
  std::vector<BudgetResult> results;
  for (const BudgetItem& item : budget) {
    const std::int64_t taken = Taken(run, item);
    results.push_back({item, taken, taken == kUnknown || taken > item.most});
  }
  return results;
}
