#include "workbench/timeline/Schedule.h"

#include <algorithm>
#include <functional>
#include <queue>
#include <set>
#include <tuple>
#include <utility>

namespace {

template <typename Value>
using LeastFirst = std::priority_queue<Value, std::vector<Value>, std::greater<Value>>;

/// Which plugins wait for each plugin, in one array.
class Waiters {
 public:
  explicit Waiters(const std::vector<PluginWork>& plugins) : m_first(plugins.size() + 1) {
    for (const PluginWork& plugin : plugins) {
      for (const std::size_t other : plugin.waitsFor) ++m_first[other + 1];
    }
    for (std::size_t i = 1; i < m_first.size(); ++i) m_first[i] += m_first[i - 1];
    m_waiters.resize(m_first.back());
    std::vector<std::size_t> next(m_first.begin(), m_first.end() - 1);
    for (std::size_t i = 0; i < plugins.size(); ++i) {
      for (const std::size_t other : plugins[i].waitsFor) m_waiters[next[other]++] = i;
    }
  }

  template <typename Visit>
  void ForEach(std::size_t plugin, Visit visit) const {
    for (std::size_t i = m_first[plugin]; i < m_first[plugin + 1]; ++i) visit(m_waiters[i]);
  }

 private:
  std::vector<std::size_t> m_first;  // index into m_waiters for each plugin, and the end
  std::vector<std::size_t> m_waiters;
};

/// The least number of sleeps, at least one, after which `time` is reached.
std::int64_t SleepsUntil(std::int64_t time, std::int64_t from, std::int64_t length) {
  if (time <= from) return 1;
  return (time - from - 1) / length + 1;
}

/// When the frame looks.
class Looks {
 public:
  explicit Looks(const FrameLooks& looks) : m_looks(looks) {}

  /// A task ends the sleep that the frame is in at `time`.
  void AddWake(std::int64_t time) {
    if (m_looks.mode == FrameLooks::Mode::kEarlyEnd) m_wakes.push(time);
  }

  /// The next look of interest, after one that ended at `now`: the first at or after `change`, when
  /// the frame would find something new, or an earlier one after a sleep that ended early.
  std::int64_t Next(std::int64_t now, std::int64_t change) {
    if (m_looks.always) return std::max(now, change);
    if (m_looks.mode == FrameLooks::Mode::kSleep) return AfterSleeps(now, change);
    return AfterEarlyEnd(now, change);
  }

 private:
  std::int64_t AfterSleeps(std::int64_t now, std::int64_t change) {
    for (; m_used < m_looks.sleeps.size(); ++m_used, m_usedOfThese = 0) {
      const Sleeps& sleeps = m_looks.sleeps[m_used];
      const std::int64_t left = sleeps.count - m_usedOfThese;
      const std::int64_t taken = std::min(left, SleepsUntil(change, now, sleeps.length));
      if (taken <= 0) continue;
      now += taken * sleeps.length;
      m_usedOfThese += taken;
      if (now >= change) return now;
    }
    return now + SleepsUntil(change, now, m_looks.sleep) * m_looks.sleep;
  }

  std::int64_t AfterEarlyEnd(std::int64_t now, std::int64_t change) {
    const std::int64_t full =
        now + SleepsUntil(change, now, m_looks.sleep) * m_looks.sleep;  // without a wake
    if (m_wakes.empty() || m_wakes.top() > full) return full;
    const std::int64_t wake = m_wakes.top();
    const std::int64_t sleepEnd = now + SleepsUntil(wake, now, m_looks.sleep) * m_looks.sleep;
    const std::int64_t allowed = m_lastEarly ? *m_lastEarly + m_looks.interval : now;
    const std::int64_t look = std::min(sleepEnd, std::max({wake, allowed, now}));
    while (!m_wakes.empty() && m_wakes.top() <= look) m_wakes.pop();
    m_lastEarly = look;
    return look;
  }

  const FrameLooks& m_looks;
  std::size_t m_used = 0;  // elements of `sleeps`
  std::int64_t m_usedOfThese = 0;
  LeastFirst<std::int64_t> m_wakes;
  std::optional<std::int64_t> m_lastEarly;  // the last look after a sleep that ended early
};

class Scheduler {
 public:
  explicit Scheduler(const PhaseWork& work)
      : m_work(work), m_waiters(work.plugins), m_looks(work.looks) {
    const std::size_t plugins = work.plugins.size();
    m_schedule.tasks.resize(plugins);
    m_pending.resize(plugins);
    m_lastEnd.assign(plugins, 0);
    m_byPosition.resize(plugins);
    for (std::size_t i = 0; i < plugins; ++i) {
      m_byPosition[work.plugins[i].position] = i;
      m_pending[i] = work.plugins[i].waitsFor.size();
      if (m_pending[i] == 0) AddReady(i);
    }
    const std::size_t threads =
        std::clamp<std::size_t>(work.threads, 1, std::max(plugins, std::size_t{1}));
    for (std::size_t i = 0; i < threads; ++i) m_freeThreads.push(0);
  }

  Schedule Run() {
    m_clock = m_work.looks.first;
    while (!HasEnded()) {
      PostReady();
      m_clock = m_looks.Next(m_clock, NextChange());
    }
    m_schedule.end = m_clock;
    return std::move(m_schedule);
  }

 private:
  std::int64_t AllEnded() const { return m_latestEnd + m_work.looks.endLag; }

  bool HasEnded() const {
    return m_posted == m_work.plugins.size() && (m_posted == 0 || AllEnded() <= m_clock);
  }

  /// When the frame would find something that it has not yet found.
  std::int64_t NextChange() const {
    if (!m_ready.empty()) return m_clock;
    if (!m_becomeReady.empty()) return m_becomeReady.top().first;
    return AllEnded();
  }

  void AddReady(std::size_t plugin) {
    const PluginWork& work = m_work.plugins[plugin];
    m_becomeReady.emplace(m_lastEnd[plugin] + (work.waitsFor.empty() ? 0 : work.readyLag),
                          work.position);
  }

  /// One look: visits the plugins in order and posts those that it finds ready.
  void PostReady() {
    std::size_t visited = 0;
    bool isFirst = true;
    while (true) {
      while (!m_becomeReady.empty() && m_becomeReady.top().first <= m_clock) {
        m_ready.insert(m_becomeReady.top().second);
        m_becomeReady.pop();
      }
      const auto next = m_ready.lower_bound(visited);
      if (next == m_ready.end()) return;
      visited = *next + 1;
      const std::size_t plugin = m_byPosition[*next];
      m_ready.erase(next);
      if (!isFirst) m_clock += m_work.plugins[plugin].toPost;
      isFirst = false;
      Post(plugin);
    }
  }

  /// A pool takes its tasks in the order of the posts, so that the task's times are known now.
  void Post(std::size_t plugin) {
    const PluginWork& work = m_work.plugins[plugin];
    ScheduledTask& task = m_schedule.tasks[plugin];
    task.posted = m_clock;
    const std::int64_t free = m_freeThreads.top();
    m_freeThreads.pop();
    m_schedule.threadsWereShort |= free > task.posted;
    task.begin = std::max(task.posted, free) + work.toBegin;
    task.end = task.begin + work.work;
    m_freeThreads.push(task.end);
    m_latestEnd = std::max(m_latestEnd, task.end);
    ++m_posted;
    m_looks.AddWake(task.end + work.toWake);
    m_waiters.ForEach(plugin, [&](std::size_t waiter) {
      std::optional<std::size_t>& releasedBy = m_schedule.tasks[waiter].releasedBy;
      if (!releasedBy || task.end >= m_lastEnd[waiter]) {
        releasedBy = plugin;
        m_lastEnd[waiter] = task.end;
      }
      if (--m_pending[waiter] == 0) AddReady(waiter);
    });
  }

  const PhaseWork& m_work;
  const Waiters m_waiters;
  Looks m_looks;

  Schedule m_schedule;
  std::int64_t m_clock = 0;
  std::size_t m_posted = 0;
  std::int64_t m_latestEnd = 0;
  std::vector<std::size_t> m_pending;   // plugins that each one waits for and that are not posted
  std::vector<std::int64_t> m_lastEnd;  // of those that each one waits for and that are posted
  std::vector<std::size_t> m_byPosition;
  LeastFirst<std::pair<std::int64_t, std::size_t>> m_becomeReady;  // when; position
  std::set<std::size_t> m_ready;                                   // positions
  LeastFirst<std::int64_t> m_freeThreads;                          // when each thread is free
};

}  // namespace

bool ScheduledTask::operator==(const ScheduledTask& other) const {
  return std::tie(posted, begin, end, releasedBy) ==
         std::tie(other.posted, other.begin, other.end, other.releasedBy);
}

bool Schedule::operator==(const Schedule& other) const {
  return tasks == other.tasks && end == other.end && threadsWereShort == other.threadsWereShort;
}

bool HasNoCycle(const std::vector<PluginWork>& plugins) {
  const Waiters waiters(plugins);
  std::vector<std::size_t> pending(plugins.size());
  std::vector<std::size_t> order;
  for (std::size_t i = 0; i < plugins.size(); ++i) {
    pending[i] = plugins[i].waitsFor.size();
    if (pending[i] == 0) order.push_back(i);
  }
  for (std::size_t next = 0; next < order.size(); ++next) {
    waiters.ForEach(order[next], [&](std::size_t waiter) {
      if (--pending[waiter] == 0) order.push_back(waiter);
    });
  }
  return order.size() == plugins.size();
}

Schedule MakeSchedule(const PhaseWork& work) {
  return Scheduler(work).Run();
}
