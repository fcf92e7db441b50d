#include "workbench/timeline/Problems.h"

#include <algorithm>
#include <utility>

namespace {

using Where = NotReturned::Where;
using Result = PluginSpan::Result;

bool HasFailed(const PluginSpan& span) {
  return span.result == Result::kFailed || span.result == Result::kNotLoaded;
}

/// What waits for the plugin, directly or not, and has not begun.
std::vector<bool> WaitingFor(const PhaseTimeline& phase,
                             const std::vector<std::vector<std::size_t>>& waiters,
                             std::size_t plugin) {
  std::vector<bool> reached(phase.spans.size());
  std::vector<std::size_t> next = {plugin};
  while (!next.empty()) {
    const std::size_t at = next.back();
    next.pop_back();
    for (const std::size_t waiter : waiters[at]) {
      if (reached[waiter] || phase.spans[waiter].HasBegun()) continue;
      reached[waiter] = true;
      next.push_back(waiter);
    }
  }
  return reached;
}

std::vector<std::size_t> Indices(const std::vector<bool>& flags) {
  std::vector<std::size_t> indices;
  for (std::size_t i = 0; i < flags.size(); ++i) {
    if (flags[i]) indices.push_back(i);
  }
  return indices;
}

void AddNotReturned(const PhaseTimeline& phase, bool starts, std::vector<NotReturned>& found) {
  const std::vector<std::vector<std::size_t>> waiters = phase.Waiters();
  for (std::size_t i = 0; i < phase.spans.size(); ++i) {
    const PluginSpan& span = phase.spans[i];
    if (span.result != Result::kNotReturned) continue;
    NotReturned plugin;
    plugin.plugin = i;
    plugin.where = starts && span.codeEnd != kUnknown ? Where::kCounting
                   : span.codeBegin == kUnknown       ? Where::kLoading
                   : starts                           ? Where::kInit
                   : span.codeEnd == kUnknown         ? Where::kUnInit
                                                      : Where::kUnmapping;
    const bool isOver = plugin.where == Where::kUnmapping || plugin.where == Where::kCounting;
    plugin.since = isOver ? span.codeEnd : span.codeBegin != kUnknown ? span.codeBegin : span.begin;
    plugin.waiting = Indices(WaitingFor(phase, waiters, i));
    found.push_back(std::move(plugin));
  }
}

}  // namespace

std::vector<NotReturned> FindNotReturned(const Timeline& timeline) {
  std::vector<NotReturned> found;
  AddNotReturned(timeline.start, true, found);
  AddNotReturned(timeline.stop, false, found);
  std::stable_sort(found.begin(), found.end(),
                   [](const NotReturned& a, const NotReturned& b) { return a.since < b.since; });
  return found;
}

std::vector<StartedAnyway> FindStartedAnyway(const Timeline& timeline) {
  std::vector<StartedAnyway> found;
  const PhaseTimeline& start = timeline.start;
  for (std::size_t i = 0; i < start.spans.size(); ++i) {
    if (!start.spans[i].HasBegun()) continue;
    StartedAnyway plugin;
    plugin.plugin = i;
    for (const std::size_t other : start.waitsFor[i]) {
      if (HasFailed(start.spans[other])) plugin.failed.push_back(other);
    }
    if (!plugin.failed.empty()) found.push_back(std::move(plugin));
  }
  return found;
}

std::vector<std::size_t> FindNeverBegun(const Timeline& timeline, const PhaseTimeline& phase) {
  std::vector<bool> behind(phase.spans.size());
  for (const NotReturned& plugin : FindNotReturned(timeline)) {
    for (const std::size_t waiting : plugin.waiting) behind[waiting] = true;
  }
  std::vector<bool> never(phase.spans.size());
  for (std::size_t i = 0; i < phase.spans.size(); ++i) {
    never[i] = phase.begun && !phase.spans[i].HasBegun() && !behind[i];
  }
  return Indices(never);
}
