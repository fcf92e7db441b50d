#include "workbench/timeline/RecordedLooks.h"

#include <algorithm>
#include <limits>

#include "workbench/timeline/RecordedWork.h"

namespace {

constexpr std::int64_t kLeastInterval = 1'000'000;  // between two looks after an early end
constexpr std::int64_t kLongestPost = 20'000'000;   // of what is taken for a slow post

/// The middle one, 0 of none.
std::int64_t Median(std::vector<std::int64_t> values) {
  if (values.empty()) return 0;
  const auto middle = values.begin() + static_cast<std::ptrdiff_t>(values.size() / 2);
  std::nth_element(values.begin(), middle, values.end());
  return *middle;
}

/// A look that posted something, from the first to the last post; or the one that found all ended.
/// The sleeps before it all took the same time, as far as is known.
struct Look {
  std::int64_t first = 0;
  std::int64_t last = 0;
  std::vector<std::size_t> plugins;  // in the order of their posts
  std::int64_t ready = 0;            // when the first thing that it found was ready
  Sleeps before;                     // since the last look that posted something
};

class Measuring {
 public:
  Measuring(const PhaseTimeline& phase, const std::vector<std::size_t>& byPost, PhaseWork& work)
      : m_phase(phase), m_work(work) {
    m_ready.resize(work.plugins.size());
    for (std::size_t i = 0; i < m_ready.size(); ++i) m_ready[i] = ReadyOf(i);
    for (const std::size_t plugin : byPost) AddPost(plugin);
    Look end;
    end.first = end.last = phase.end - phase.begin;
    for (std::size_t i = 0; i < m_ready.size(); ++i) end.ready = std::max(end.ready, End(i));
    m_looks.push_back(end);
    m_work.looks.first = m_looks.front().first;
    FillToPost();
  }

  std::int64_t Fill() {
    return m_work.looks.mode == FrameLooks::Mode::kSleep ? FillSleeps() : FillWakes();
  }

 private:
  std::int64_t Posted(std::size_t plugin) const {
    return m_phase.spans[plugin].posted - m_phase.begin;
  }
  std::int64_t End(std::size_t plugin) const { return m_phase.spans[plugin].end - m_phase.begin; }

  /// When the plugin was ready. The frame may find another one ended a moment before that one's
  /// `end`, once its code has returned.
  std::int64_t ReadyOf(std::size_t plugin) {
    std::int64_t ends = 0;
    std::int64_t returns = 0;
    for (const std::size_t other : m_work.plugins[plugin].waitsFor) {
      const PluginSpan& span = m_phase.spans[other];
      ends = std::max(ends, End(other));
      returns =
          std::max(returns, std::max({span.begin, span.loaded, span.codeEnd}) - m_phase.begin);
    }
    const std::int64_t posted = Posted(plugin);
    if (posted >= ends || posted < returns) return ends;
    m_work.plugins[plugin].readyLag = posted - ends;
    return posted;
  }

  void AddPost(std::size_t plugin) {
    const std::int64_t posted = Posted(plugin);
    if (m_looks.empty() || !IsOfLook(plugin, m_looks.back())) {
      m_looks.emplace_back();
      m_looks.back().first = m_looks.back().last = posted;
    }
    Look& look = m_looks.back();
    // It was visited right after the post before it, and only its own post took until `posted`.
    const std::int64_t early = m_ready[plugin] - look.last;
    if (early > 0 && posted - look.last < kLongestPost) {
      m_work.plugins[plugin].readyLag -= early;
      m_ready[plugin] = look.last;
    }
    look.last = posted;
    look.ready = look.plugins.empty() ? m_ready[plugin] : std::min(look.ready, m_ready[plugin]);
    look.plugins.push_back(plugin);
  }

  /// Whether the plugin was posted by this look, to which all before it belong.
  bool IsOfLook(std::size_t plugin, const Look& look) const {
    const std::int64_t posted = Posted(plugin);
    if (m_work.looks.mode == FrameLooks::Mode::kSleep) return posted - look.last < kFrameSleep;
    const bool isVisitedLater =
        m_work.plugins[plugin].position > m_work.plugins[look.plugins.back()].position;
    return isVisitedLater &&
           (m_ready[plugin] <= look.first || posted - look.last < kLeastInterval / 2);
  }

  /// What the first post of a look takes is not known: its time is the look's.
  void FillToPost() {
    std::vector<std::int64_t> known;
    std::vector<bool> isKnown(m_work.plugins.size());
    for (const Look& look : m_looks) {
      for (std::size_t i = 1; i < look.plugins.size(); ++i) {
        const std::size_t plugin = look.plugins[i];
        known.push_back(Posted(plugin) - Posted(look.plugins[i - 1]));
        m_work.plugins[plugin].toPost = known.back();
        isKnown[plugin] = true;
      }
    }
    const std::int64_t usual = Median(known);
    for (std::size_t i = 0; i < isKnown.size(); ++i) {
      if (!isKnown[i]) m_work.plugins[i].toPost = usual;
    }
  }

  // Of a frame that sleeps its whole time.

  std::int64_t FillSleeps() {
    CountSleeps();
    FrameLooks& looks = m_work.looks;
    Sleeps all;
    std::int64_t late = 0;
    for (std::size_t i = 1; i < m_looks.size(); ++i) {
      const auto [count, length] = m_looks[i].before;
      if (count == 0) continue;
      const std::int64_t interval = Interval(i);
      const std::int64_t rest = interval - count * length;
      if (count > rest) looks.sleeps.push_back({count - rest, length});
      if (rest > 0) looks.sleeps.push_back({rest, length + 1});
      all.count += count;
      all.length += interval;
      late = std::max(late, length + (rest > 0 ? 1 : 0) - kFrameSleep);
    }
    looks.sleep = all.count > 0 ? all.length / all.count : kFrameSleep;
    for (std::size_t i = 1; i < m_looks.size(); ++i) {
      for (const std::size_t plugin : m_looks[i].plugins) FillReadyLag(i, plugin, late);
    }
    FillEndLag(late);
    return late;
  }

  /// From the last post of the look before this one to this one.
  std::int64_t Interval(std::size_t look) const {
    return m_looks[look].first - m_looks[look - 1].last;
  }

  /// How many sleeps there were before each look. All took about as long as those of the shortest
  /// interval. None is known before a look that came too early for a whole sleep.
  void CountSleeps() {
    std::int64_t usual = kFrameSleep;
    std::int64_t shortest = std::numeric_limits<std::int64_t>::max();
    for (std::size_t i = 1; i < m_looks.size(); ++i) {
      const std::int64_t interval = Interval(i);
      if (interval < kFrameSleep || interval >= shortest) continue;
      shortest = interval;
      usual = interval / (interval / kFrameSleep);
    }
    for (std::size_t i = 1; i < m_looks.size(); ++i) {
      const std::int64_t most = Interval(i) / kFrameSleep;
      if (most == 0) continue;
      Sleeps& before = m_looks[i].before;
      before.count = std::clamp<std::int64_t>((Interval(i) + usual / 2) / usual, 1, most);
      before.length = Interval(i) / before.count;
    }
  }

  /// The last plugin that ended about when the look before the last one came, and was not found.
  void FillEndLag(std::int64_t late) {
    const Look& end = m_looks.back();
    if (end.before.count < 2) return;
    const std::int64_t missed = end.first - end.before.length;
    if (!IsSameTime(end.ready, missed, m_looks[m_looks.size() - 2], end, late)) return;
    m_work.looks.endLag = missed - end.ready + 1;
  }

  /// A plugin that was ready about when the look before its own one came, and was not found ready.
  void FillReadyLag(std::size_t look, std::size_t plugin, std::int64_t late) {
    const Look& before = m_looks[look - 1];
    std::int64_t missed = before.first;
    if (m_looks[look].before.count > 1) {
      missed = m_looks[look].first - m_looks[look].before.length;
    } else {
      for (const std::size_t other : before.plugins) {
        if (m_work.plugins[other].position < m_work.plugins[plugin].position) {
          missed = Posted(other);
        }
      }
    }
    if (!IsSameTime(m_ready[plugin], missed, before, m_looks[look], late)) return;
    m_work.plugins[plugin].readyLag += missed - m_ready[plugin] + 1;
  }

  /// Whether something at `ready` may have come after the look that is taken to be at `missed`,
  /// though its time is before: between known looks the time of a look is not known exactly, and a
  /// known one began before its first post.
  bool IsSameTime(std::int64_t ready, std::int64_t missed, const Look& before, const Look& next,
                  std::int64_t late) const {
    if (ready > missed) return false;
    const std::int64_t sleeps = next.before.count - 1;
    const std::int64_t earliest = sleeps > 0 ? before.last + sleeps * kFrameSleep : missed - late;
    return ready >= std::min(earliest, missed - late);
  }

  // Of a frame whose sleep ends when a task ends.

  std::int64_t FillWakes() {
    FrameLooks& looks = m_work.looks;
    looks.sleep = kFrameSleep;
    looks.interval = kLeastInterval;
    std::vector<std::int64_t> delays;
    for (std::size_t i = 1; i < m_looks.size(); ++i) {
      delays.push_back(std::max<std::int64_t>(m_looks[i].first - m_looks[i].ready, 0));
    }
    m_usualWake = Median(delays);
    for (std::size_t i = 0; i < m_work.plugins.size(); ++i) {
      m_work.plugins[i].toWake = m_usualWake;
      m_ends.push_back(i);
    }
    std::sort(m_ends.begin(), m_ends.end(),
              [&](std::size_t a, std::size_t b) { return End(a) < End(b); });
    for (std::size_t i = 1; i < m_looks.size(); ++i) FillWakeOf(m_looks[i]);
    // Looks that found nothing are not known, and the next one may have waited for the interval.
    return std::max(*std::max_element(delays.begin(), delays.end()), kLeastInterval);
  }

  /// Finds the end that led to this look, after those that led to looks that found nothing.
  void FillWakeOf(const Look& look) {
    bool isFound = false;
    while (!isFound && m_nextEnd < m_ends.size() && End(m_ends[m_nextEnd]) <= look.first) {
      const std::int64_t end = End(m_ends[m_nextEnd]);
      const std::int64_t usual = std::max(end + m_usualWake, m_lastEarly + kLeastInterval);
      isFound = usual >= look.ready || usual + kLeastInterval > look.first;
      m_lastEarly = isFound ? look.first : usual;
      if (isFound) m_work.plugins[m_ends[m_nextEnd]].toWake = look.first - end;
      ++m_nextEnd;
      SkipServedEnds(isFound);
    }
  }

  /// The ends that the last look after an early end served too. Of one that is `known` they came
  /// too late to lead to an earlier one.
  void SkipServedEnds(bool known) {
    for (; m_nextEnd < m_ends.size(); ++m_nextEnd) {
      const std::size_t plugin = m_ends[m_nextEnd];
      if (End(plugin) + m_usualWake > m_lastEarly) return;
      if (known) m_work.plugins[plugin].toWake = m_lastEarly - End(plugin);
    }
  }

  const PhaseTimeline& m_phase;
  PhaseWork& m_work;
  std::vector<std::int64_t> m_ready;  // when each plugin was ready
  std::vector<Look> m_looks;          // that posted something, and the one that found all ended
  std::int64_t m_usualWake = 0;
  std::int64_t m_lastEarly = -kLeastInterval;
  std::vector<std::size_t> m_ends;  // the plugins in the order of their ends
  std::size_t m_nextEnd = 0;        // of m_ends, the first that has not led to a look
};

}  // namespace

std::int64_t FillLooks(const PhaseTimeline& phase, const std::vector<std::size_t>& byPost,
                       PhaseWork& work) {
  return Measuring(phase, byPost, work).Fill();
}
