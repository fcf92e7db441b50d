#include "workbench/timeline/Advice.h"

#include <algorithm>
#include <numeric>
#include <utility>

#include "workbench/timeline/Prediction.h"

namespace {

/// The plugins whose work, or whose wait for the plugin that released them, can be what the end of
/// the phase waited for.
///
/// While every task has a thread, these are the last plugin to end, the one that released it, and
/// so on: a change elsewhere leaves each of them as late as before, but for the microseconds that
/// posts in the same look take, and for the least interval of looks after early ends. When threads
/// were short, any plugin may have held one.
std::vector<std::size_t> Candidates(const Schedule& schedule) {
  std::vector<std::size_t> candidates(schedule.tasks.size());
  std::iota(candidates.begin(), candidates.end(), std::size_t{0});
  if (schedule.threadsWereShort) return candidates;
  const auto last = std::max_element(
      schedule.tasks.begin(), schedule.tasks.end(),
      [](const ScheduledTask& a, const ScheduledTask& b) { return a.end < b.end; });
  candidates.clear();
  std::optional<std::size_t> plugin = static_cast<std::size_t>(last - schedule.tasks.begin());
  for (; plugin; plugin = schedule.tasks[*plugin].releasedBy) candidates.push_back(*plugin);
  return candidates;
}

/// Keeps the greatest gains.
template <typename Gain>
void Rank(std::vector<Gain>& gains) {
  std::stable_sort(gains.begin(), gains.end(),
                   [](const Gain& a, const Gain& b) { return a.gain > b.gain; });
  if (gains.size() > PhaseAdvice::kMost) gains.resize(PhaseAdvice::kMost);
}

class Adviser {
 public:
  Adviser(PhaseWork work, const Schedule& schedule, bool isStop, PhaseAdvice& advice)
      : m_work(std::move(work)), m_schedule(schedule), m_isStop(isStop), m_advice(advice) {}

  void Fill() {
    for (const std::size_t plugin : Candidates(m_schedule)) {
      AddPlugin(plugin);
      if (m_schedule.tasks[plugin].releasedBy) {
        AddEdge(plugin, *m_schedule.tasks[plugin].releasedBy);
      }
    }
    Rank(m_advice.plugins);
    Rank(m_advice.edges);
    const bool always = std::exchange(m_work.looks.always, true);
    m_advice.poll = Gain();
    m_work.looks.always = always;
    m_work.threads = m_work.plugins.size();
    m_advice.workers = Gain();
  }

 private:
  /// What the change that has been made gains, if that can be told.
  std::optional<std::int64_t> Gain() const {
    const std::int64_t gain = m_schedule.end - MakeSchedule(m_work).end;
    return gain > m_advice.resolution ? std::optional(gain) : std::nullopt;
  }

  void AddPlugin(std::size_t plugin) {
    const std::int64_t work = std::exchange(m_work.plugins[plugin].work, 0);
    if (const auto gain = Gain()) m_advice.plugins.push_back({plugin, *gain});
    m_work.plugins[plugin].work = work;
  }

  /// Only the edge that released a plugin can gain: without another one it is ready when it was.
  void AddEdge(std::size_t waiter, std::size_t other) {
    std::vector<std::size_t>& waitsFor = m_work.plugins[waiter].waitsFor;
    const std::vector<std::size_t> all = waitsFor;
    waitsFor.erase(std::remove(waitsFor.begin(), waitsFor.end(), other), waitsFor.end());
    if (const auto gain = Gain()) {
      m_advice.edges.push_back({m_isStop ? other : waiter, m_isStop ? waiter : other, *gain});
    }
    waitsFor = all;
  }

  PhaseWork m_work;  // as recorded, but for the change that is being tried
  const Schedule& m_schedule;
  const bool m_isStop;
  PhaseAdvice& m_advice;
};

}  // namespace

PhaseAdvice Advise(const Timeline& timeline, const PhaseTimeline& phase, FrameLooks::Mode mode) {
  PhaseAdvice advice;
  RecordedWork recorded = WorkOf(timeline, phase, mode);
  advice.unknown = recorded.unknown;
  if (!advice.unknown.empty()) return advice;
  const Schedule schedule = MakeSchedule(recorded.work);
  advice.reproduced = schedule.end;
  advice.resolution = recorded.resolution;
  advice.unknown = WhyNotReproduced(recorded, schedule);
  if (!advice.unknown.empty()) return advice;
  Adviser(std::move(recorded.work), schedule, &phase == &timeline.stop, advice).Fill();
  return advice;
}

RunAdvice Advise(const Timeline& timeline, FrameLooks::Mode mode) {
  return {Advise(timeline, timeline.start, mode), Advise(timeline, timeline.stop, mode)};
}
