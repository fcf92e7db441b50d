#include "workbench/timeline/CriticalPath.h"

#include <algorithm>
#include <limits>
#include <optional>
#include <set>

namespace {

/// Whether a span ended within its phase. A start that was stopped ends before some of its plugins.
bool EndedInTime(const PhaseTimeline& phase, const PluginSpan& span) {
  return span.HasEnded() && span.end <= phase.end;
}

/// When the work of a span was over; of one that did not end in time, the phase's end.
std::int64_t EndOfWork(const PhaseTimeline& phase, const PluginSpan& span) {
  return EndedInTime(phase, span) ? span.end : phase.end;
}

/// The plugin that the phase's end waited for: of those that did not end in time the one that
/// worked longest; when there is none, the last one to end.
std::optional<std::size_t> LastPlugin(const PhaseTimeline& phase) {
  std::optional<std::size_t> last;
  const auto precedes = [&](const PluginSpan& a, const PluginSpan& b) {
    if (EndedInTime(phase, a) != EndedInTime(phase, b)) return EndedInTime(phase, a);
    if (!EndedInTime(phase, a)) return a.begin > b.begin;
    return a.end != b.end ? a.end < b.end : a.endsAs < b.endsAs;
  };
  for (std::size_t i = 0; i < phase.spans.size(); ++i) {
    const PluginSpan& span = phase.spans[i];
    if (!span.HasBegun() || span.begin > phase.end) continue;
    if (!last || precedes(phase.spans[*last], span)) last = i;
  }
  return last;
}

/// Divides the time before `cursor` that belongs to the plugin into work, waiting for a thread and
/// waiting for a look, and moves the cursor to its begin. The parts have no gaps, so that their sum
/// is the phase's time, whatever the spans say.
PathStep TakeStep(const PhaseTimeline& phase, std::size_t plugin, std::int64_t& cursor) {
  const PluginSpan& span = phase.spans[plugin];
  const auto take = [&](std::int64_t from) {
    const std::int64_t begin = std::clamp(from, phase.begin, cursor);
    const std::int64_t taken = cursor - begin;
    cursor = begin;
    return taken;
  };
  PathStep step;
  step.plugin = plugin;
  step.releasedBy = span.releasedBy;
  step.work = take(span.begin);
  if (span.posted != kUnknown) step.idle = take(span.posted);
  const std::int64_t released =
      step.releasedBy ? EndOfWork(phase, phase.spans[*step.releasedBy]) : phase.begin;
  (step.releasedBy ? step.look : step.idle) += take(released);
  return step;
}

std::int64_t SumOfWork(const PhaseTimeline& phase) {
  constexpr std::int64_t kMost = std::numeric_limits<std::int64_t>::max() / 2;  // to be rounded
  std::int64_t sum = 0;
  for (const PluginSpan& span : phase.spans) {
    if (!span.HasBegun() || span.begin > phase.end) continue;
    // Where times are damaged, a plugin may end before its phase begins, or years later.
    const std::int64_t work = EndOfWork(phase, span) - std::max(span.begin, phase.begin);
    sum += std::clamp<std::int64_t>(work, 0, kMost - sum);
  }
  return sum;
}

/// The plugins, each after all that it waits for; those in a cycle are left out.
std::vector<std::size_t> InOrder(const PhaseTimeline& phase,
                                 const std::vector<std::vector<std::size_t>>& waiters) {
  std::vector<std::size_t> pending(phase.spans.size());
  std::vector<std::size_t> order;
  for (std::size_t i = 0; i < phase.spans.size(); ++i) {
    pending[i] = phase.waitsFor[i].size();
    if (pending[i] == 0) order.push_back(i);
  }
  for (std::size_t next = 0; next < order.size(); ++next) {
    for (const std::size_t waiter : waiters[order[next]]) {
      if (--pending[waiter] == 0) order.push_back(waiter);
    }
  }
  return order;
}

}  // namespace

double TimeBalance::Parallelism() const {
  return wall > 0 ? static_cast<double>(work) / static_cast<double>(wall) : 0;
}

std::vector<std::vector<std::size_t>> PhaseTimeline::Waiters() const {
  std::vector<std::vector<std::size_t>> waiters(spans.size());
  for (std::size_t i = 0; i < waitsFor.size(); ++i) {
    for (const std::size_t other : waitsFor[i]) waiters[other].push_back(i);
  }
  return waiters;
}

void FillPath(PhaseTimeline& phase, bool knowsEdges) {
  phase.balance = TimeBalance();
  phase.path.clear();
  phase.balance.wall = phase.end - phase.begin;
  phase.balance.work = SumOfWork(phase);
  std::optional<std::size_t> plugin = LastPlugin(phase);
  if (!knowsEdges || !plugin) {
    phase.balance.idle = plugin ? 0 : phase.balance.wall;
    return;
  }
  std::int64_t cursor = phase.end;
  const std::int64_t lastEnd =
      std::clamp(EndOfWork(phase, phase.spans[*plugin]), phase.begin, cursor);
  phase.lastWait = cursor - lastEnd;
  (phase.EndsWithLook() ? phase.balance.look : phase.balance.idle) += phase.lastWait;
  cursor = lastEnd;
  std::set<std::size_t> seen;
  while (plugin && seen.insert(*plugin).second) {
    phase.path.push_back(TakeStep(phase, *plugin, cursor));
    const PathStep& step = phase.path.back();
    phase.balance.path += step.work;
    phase.balance.look += step.look;
    phase.balance.idle += step.idle;
    plugin = step.releasedBy;
  }
  phase.balance.idle += cursor - phase.begin;  // after a cycle of contradictory events
  std::reverse(phase.path.begin(), phase.path.end());
}

void FillSlack(PhaseTimeline& phase) {
  const auto works = [&](const PluginSpan& span) {
    return span.HasBegun() && span.begin <= phase.end;
  };
  std::int64_t last = phase.begin;
  for (const PluginSpan& span : phase.spans) {
    if (works(span)) last = std::max(last, EndOfWork(phase, span));
  }
  const std::vector<std::vector<std::size_t>> waiters = phase.Waiters();
  const std::vector<std::size_t> order = InOrder(phase, waiters);
  std::vector<std::int64_t> slack(phase.spans.size(), kUnknown);
  for (auto at = order.rbegin(); at != order.rend(); ++at) {
    PluginSpan& span = phase.spans[*at];
    if (!works(span)) continue;
    const std::int64_t end = EndOfWork(phase, span);
    slack[*at] = last - end;
    for (const std::size_t waiter : waiters[*at]) {
      const PluginSpan& later = phase.spans[waiter];
      if (slack[waiter] == kUnknown || !later.releasedBy) continue;
      const std::int64_t gap = EndOfWork(phase, phase.spans[*later.releasedBy]) - end;
      slack[*at] = std::min(slack[*at], std::max<std::int64_t>(gap, 0) + slack[waiter]);
    }
    if (EndedInTime(phase, span)) span.slack = slack[*at];
  }
}
