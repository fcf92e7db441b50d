#include "workbench/replay/RunHarm.h"

#include <algorithm>
#include <cstdlib>
#include <map>
#include <optional>
#include <tuple>

namespace {

using Result = PluginSpan::Result;

constexpr std::int64_t kMillisecond = 1'000'000;

/// The plugins of a run by their IDs.
class SpansByID {
 public:
  explicit SpansByID(const Timeline& timeline) : m_timeline(timeline) {
    for (std::size_t i = 0; i < timeline.plugins.size(); ++i) {
      m_positions.emplace(timeline.plugins[i].id, i);
    }
  }

  /// What a plugin did in the start; null for an unknown one.
  const PluginSpan* Find(const std::string& id) const {
    const auto position = m_positions.find(id);
    return position == m_positions.end() ? nullptr : &m_timeline.start.spans[position->second];
  }

  /// When it began, in milliseconds since the phase began; nothing when it did not.
  std::optional<std::int64_t> Begin(const std::string& id) const {
    const PluginSpan* span = Find(id);
    if (span == nullptr || !span->HasBegun()) return std::nullopt;
    return (span->begin - m_timeline.start.begin) / kMillisecond;
  }

 private:
  const Timeline& m_timeline;
  std::map<std::string, std::size_t> m_positions;
};

bool HasFailed(const PluginSpan* span) {
  return span != nullptr && (span->result == Result::kFailed || span->result == Result::kNotLoaded);
}

/// All that depend on a plugin, directly or not, sorted.
std::vector<std::size_t> DependentsOf(std::size_t plugin,
                                      const std::vector<std::vector<std::size_t>>& waiters) {
  std::vector<bool> known(waiters.size(), false);
  known[plugin] = true;
  std::vector<std::size_t> found = {plugin};
  for (std::size_t i = 0; i < found.size(); ++i) {
    for (const std::size_t waiter : waiters[found[i]]) {
      if (known[waiter]) continue;
      known[waiter] = true;
      found.push_back(waiter);
    }
  }
  found.erase(found.begin());
  std::sort(found.begin(), found.end());
  return found;
}

std::int64_t UpOf(const Timeline& timeline) {
  return timeline.state.Up() ? timeline.state.Up()->milliseconds : kUnknown;
}

std::size_t PositionOf(const Timeline& timeline, const std::string& id) {
  const auto isOne = [&id](const PluginHead& head) { return head.id == id; };
  const auto& plugins = timeline.plugins;
  return static_cast<std::size_t>(std::find_if(plugins.begin(), plugins.end(), isOne) -
                                  plugins.begin());
}

auto Badness(const RunHarm& harm) {
  return std::make_tuple(harm.crashed, harm.neverBegun.size(), harm.stopHung,
                         harm.failed.size() + harm.begunAnyway.size(), harm.upLater,
                         harm.dependents.size());
}

}  // namespace

std::int64_t BeginsApart(const Timeline& a, const Timeline& b) {
  const SpansByID first(a);
  const SpansByID second(b);
  std::int64_t apart = 0;
  for (const PluginHead& head : a.plugins) {
    const auto begin = first.Begin(head.id);
    const auto other = second.Begin(head.id);
    if (begin && other) apart = std::max<std::int64_t>(apart, std::abs(*begin - *other));
  }
  return apart;
}

RunHarm CompareRuns(const Timeline& without, const Timeline& with, const std::string& id,
                    std::int64_t apart) {
  const SpansByID before(without);
  const SpansByID now(with);
  RunHarm harm;
  harm.plugin = PositionOf(without, id);
  if (harm.plugin == without.plugins.size()) return harm;
  const std::vector<std::vector<std::size_t>>& waiters = without.stop.waitsFor;
  harm.dependents = DependentsOf(harm.plugin, waiters);
  for (std::size_t i = 0; i < without.plugins.size(); ++i) {
    const std::string& other = without.plugins[i].id;
    if (i == harm.plugin || !before.Begin(other)) continue;
    if (!now.Begin(other)) harm.neverBegun.push_back(i);
    if (HasFailed(now.Find(other)) && !HasFailed(before.Find(other))) harm.failed.push_back(i);
  }
  for (const std::size_t waiter : waiters[harm.plugin]) {
    const bool began = now.Begin(without.plugins[waiter].id).has_value();
    if (HasFailed(now.Find(id)) && waiter != harm.plugin && began) {
      harm.begunAnyway.push_back(waiter);
    }
  }
  for (const std::size_t other : harm.dependents) {
    const auto begin = before.Begin(without.plugins[other].id);
    const auto later = now.Begin(without.plugins[other].id);
    if (begin && later && *later - *begin > apart) harm.later.push_back({other, *later - *begin});
  }
  std::stable_sort(harm.later.begin(), harm.later.end(),
                   [](const RunHarm::Later& a, const RunHarm::Later& b) {
                     return a.milliseconds > b.milliseconds;
                   });
  harm.up = UpOf(with);
  if (harm.up != kUnknown && UpOf(without) != kUnknown) harm.upLater = harm.up - UpOf(without);
  harm.crashed = with.state.Crash().has_value();
  harm.stopHung = with.stop.begun && !with.stop.ended && !harm.crashed;
  return harm;
}

void SortByHarm(std::vector<RunHarm>& harms) {
  std::stable_sort(harms.begin(), harms.end(),
                   [](const RunHarm& a, const RunHarm& b) { return Badness(a) > Badness(b); });
}
