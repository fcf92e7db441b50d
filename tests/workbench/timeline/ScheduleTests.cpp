#include "workbench/timeline/Schedule.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <deque>
#include <random>
#include <set>
#include <sstream>

namespace {

constexpr std::int64_t kNotYet = -1;

/// The frame and its pool, moment by moment: what happens at one time is done before the time
/// advances by one.
class StepByStep {
 public:
  explicit StepByStep(const PhaseWork& work)
      : m_work(work), m_order(work.plugins.size()), m_plugins(work.plugins.size()) {
    for (std::size_t i = 0; i < work.plugins.size(); ++i) m_order[work.plugins[i].position] = i;
    m_threads.assign(work.threads, 0);
    m_sleepEnd = work.looks.first;
  }

  Schedule Run() {
    for (m_now = 0; !m_ended; ++m_now) {
      RunPool();
      while (FrameDoesSomething()) RunPool();
    }
    Schedule schedule;
    schedule.end = m_end;
    schedule.threadsWereShort = m_threadsWereShort;
    for (std::size_t i = 0; i < m_plugins.size(); ++i) {
      schedule.tasks.push_back(m_plugins[i].task);
      schedule.tasks.back().releasedBy = ReleasedBy(i);
    }
    return schedule;
  }

 private:
  struct Plugin {
    ScheduledTask task{kNotYet, kNotYet, kNotYet, {}};
    std::size_t number = 0;  // of its post
    bool wakeIsServed = false;
  };

  /// Free threads take the oldest posted tasks.
  void RunPool() {
    while (!m_queue.empty()) {
      const auto thread = std::find_if(m_threads.begin(), m_threads.end(),
                                       [&](std::int64_t free) { return free <= m_now; });
      if (thread == m_threads.end()) return;
      const std::size_t plugin = m_queue.front();
      m_queue.pop_front();
      ScheduledTask& task = m_plugins[plugin].task;
      if (task.posted < m_now) m_threadsWereShort = true;
      task.begin = m_now + m_work.plugins[plugin].toBegin;
      task.end = task.begin + m_work.plugins[plugin].work;
      *thread = task.end;
    }
  }

  bool FrameDoesSomething() {
    if (m_ended) return false;
    if (m_isLooking) return Visit();
    if (!SleepIsOver()) return false;
    if (AllEnded()) {
      m_ended = true;
      m_end = m_now;
      return false;
    }
    m_isLooking = true;
    m_next = 0;
    m_postsOfLook = 0;
    m_readyAt = kNotYet;
    return true;
  }

  /// Visits the next plugin, or goes on with its post. False when that takes time.
  bool Visit() {
    if (m_next == m_order.size()) {
      m_isLooking = false;
      FallAsleep();
      return true;
    }
    const std::size_t plugin = m_order[m_next];
    if (m_readyAt == kNotYet) {
      if (!IsReady(plugin)) {
        ++m_next;
        return true;
      }
      m_readyAt = m_now;
    }
    const std::int64_t cost = m_postsOfLook == 0 ? 0 : m_work.plugins[plugin].toPost;
    if (m_now < m_readyAt + cost) return false;
    m_plugins[plugin].task.posted = m_now;
    m_plugins[plugin].number = m_posts++;
    m_queue.push_back(plugin);
    m_readyAt = kNotYet;
    ++m_postsOfLook;
    ++m_next;
    return true;
  }

  void FallAsleep() {
    const FrameLooks& looks = m_work.looks;
    std::int64_t length = looks.sleep;
    std::int64_t number = m_sleeps;
    for (const Sleeps& sleeps : looks.sleeps) {
      if (number >= 0 && number < sleeps.count) length = sleeps.length;
      number -= sleeps.count;
    }
    ++m_sleeps;
    m_sleepEnd = looks.always ? m_now + (m_postsOfLook > 0 ? 0 : 1) : m_now + length;
  }

  bool SleepIsOver() {
    const FrameLooks& looks = m_work.looks;
    const bool mayWake = looks.mode == FrameLooks::Mode::kEarlyEnd && !looks.always && m_sleeps > 0;
    if (mayWake && WakeHasCome() &&
        (m_now >= m_lastEarly + looks.interval || m_now >= m_sleepEnd)) {
      for (std::size_t i = 0; i < m_plugins.size(); ++i) {
        if (WakeOf(i) != kNotYet && WakeOf(i) <= m_now) m_plugins[i].wakeIsServed = true;
      }
      m_lastEarly = m_now;
      return true;
    }
    return m_now >= m_sleepEnd;
  }

  std::int64_t WakeOf(std::size_t plugin) const {
    const std::int64_t end = m_plugins[plugin].task.end;
    return end == kNotYet ? kNotYet : end + m_work.plugins[plugin].toWake;
  }

  bool WakeHasCome() const {
    for (std::size_t i = 0; i < m_plugins.size(); ++i) {
      if (!m_plugins[i].wakeIsServed && WakeOf(i) != kNotYet && WakeOf(i) <= m_now) return true;
    }
    return false;
  }

  bool AllEnded() const {
    return std::all_of(m_plugins.begin(), m_plugins.end(), [&](const Plugin& plugin) {
      return plugin.task.end != kNotYet && plugin.task.end + m_work.looks.endLag <= m_now;
    });
  }

  bool IsReady(std::size_t plugin) const {
    if (m_plugins[plugin].task.posted != kNotYet) return false;
    const PluginWork& work = m_work.plugins[plugin];
    return std::all_of(work.waitsFor.begin(), work.waitsFor.end(), [&](std::size_t other) {
      const std::int64_t end = m_plugins[other].task.end;
      return end != kNotYet && end + work.readyLag <= m_now;
    });
  }

  /// Of those that end last the one that was posted last.
  std::optional<std::size_t> ReleasedBy(std::size_t plugin) const {
    std::optional<std::size_t> last;
    for (const std::size_t other : m_work.plugins[plugin].waitsFor) {
      const auto key = [&](std::size_t i) {
        return std::pair(m_plugins[i].task.end, m_plugins[i].number);
      };
      if (!last || key(other) > key(*last)) last = other;
    }
    return last;
  }

  const PhaseWork& m_work;
  std::vector<std::size_t> m_order;
  std::vector<Plugin> m_plugins;
  std::vector<std::int64_t> m_threads;  // when each is free
  std::deque<std::size_t> m_queue;
  std::int64_t m_now = 0;
  std::int64_t m_end = 0;
  bool m_ended = false;
  bool m_threadsWereShort = false;
  std::size_t m_posts = 0;

  // The frame.
  bool m_isLooking = false;
  std::size_t m_next = 0;            // place of the plugin that is visited next
  std::int64_t m_readyAt = kNotYet;  // when that one was found ready
  std::size_t m_postsOfLook = 0;
  std::int64_t m_sleeps = 0;
  std::int64_t m_sleepEnd = 0;
  std::int64_t m_lastEarly = -1000;  // when a sleep last ended early
};

class RandomWork {
 public:
  explicit RandomWork(unsigned seed) : m_random(seed) {}

  PhaseWork Make() {
    PhaseWork work;
    work.threads = static_cast<std::size_t>(Number(1, 5));
    MakeLooks(work.looks);
    const int plugins = Number(1, 9);
    std::vector<std::size_t> positions;
    for (int i = 0; i < plugins; ++i) positions.push_back(positions.size());
    std::shuffle(positions.begin(), positions.end(), m_random);
    for (const std::size_t position : positions) {
      work.plugins.push_back(MakePlugin(work.plugins.size(), work.looks.mode));
      work.plugins.back().position = position;
    }
    return work;
  }

 private:
  int Number(int least, int most) {
    return std::uniform_int_distribution<int>(least, most)(m_random);
  }

  void MakeLooks(FrameLooks& looks) {
    looks.mode = Number(0, 1) == 0 ? FrameLooks::Mode::kSleep : FrameLooks::Mode::kEarlyEnd;
    looks.always = Number(0, 3) == 0;
    looks.first = Number(0, 3);
    looks.sleep = Number(1, 15);
    looks.interval = Number(0, 4);
    if (looks.mode == FrameLooks::Mode::kEarlyEnd) return;
    for (int i = Number(0, 3); i > 0; --i) looks.sleeps.push_back({Number(1, 3), Number(1, 15)});
    looks.endLag = Number(0, 2);
  }

  PluginWork MakePlugin(std::size_t earlier, FrameLooks::Mode mode) {
    PluginWork plugin;
    std::set<std::size_t> others;
    for (int i = earlier == 0 ? 0 : Number(0, 3); i > 0; --i) {
      others.insert(static_cast<std::size_t>(Number(0, static_cast<int>(earlier) - 1)));
    }
    plugin.waitsFor.assign(others.begin(), others.end());
    plugin.work = Number(2, 20);
    plugin.toPost = Number(0, 2);
    plugin.toBegin = Number(0, 2);
    plugin.toWake = Number(0, 3);
    plugin.readyLag = Number(-2, mode == FrameLooks::Mode::kSleep ? 2 : 0);
    return plugin;
  }

  std::mt19937 m_random;
};

std::string Text(const Schedule& schedule) {
  std::ostringstream text;
  for (const ScheduledTask& task : schedule.tasks) {
    text << task.posted << " " << task.begin << "-" << task.end;
    if (task.releasedBy) text << " after " << *task.releasedBy;
    text << "; ";
  }
  text << "end " << schedule.end << (schedule.threadsWereShort ? ", threads short" : "");
  return text.str();
}

TEST(Schedule, IsThatOfAFrameAndAPoolStepByStep) {
  for (unsigned seed = 0; seed < 3000; ++seed) {
    const PhaseWork work = RandomWork(seed).Make();
    ASSERT_EQ(Text(StepByStep(work).Run()), Text(MakeSchedule(work))) << "seed " << seed;
  }
}

PhaseWork Chain(FrameLooks::Mode mode) {
  PhaseWork work;
  work.looks.mode = mode;
  work.looks.sleep = 200;
  work.looks.interval = 1;
  work.threads = 2;
  work.plugins.resize(2);
  work.plugins[0].work = 50;
  work.plugins[1].work = 20;
  work.plugins[1].waitsFor = {0};
  work.plugins[1].position = 1;
  return work;
}

TEST(Schedule, WaitsForTheLooksOfAFrameThatSleeps) {
  EXPECT_EQ("0 0-50; 200 200-220 after 0; end 400",
            Text(MakeSchedule(Chain(FrameLooks::Mode::kSleep))));
}

TEST(Schedule, GoesOnAtEachEndWhenThatEndsTheSleep) {
  EXPECT_EQ("0 0-50; 50 50-70 after 0; end 70",
            Text(MakeSchedule(Chain(FrameLooks::Mode::kEarlyEnd))));
}

TEST(Schedule, OfYearsIsMadeAtOnce) {
  PhaseWork work = Chain(FrameLooks::Mode::kSleep);
  work.looks.sleep = 3;
  work.plugins[0].work = 1'000'000'000'000'000'000;
  EXPECT_EQ(
      "0 0-1000000000000000000; 1000000000000000002 1000000000000000002-1000000000000000022 after "
      "0; end 1000000000000000023",
      Text(MakeSchedule(work)));
}

TEST(Schedule, OfNothingEndsWithTheFirstLook) {
  PhaseWork work;
  work.looks.first = 7;
  EXPECT_EQ("end 7", Text(MakeSchedule(work)));
}

TEST(Schedule, HasNoCycleUnlessAPluginWaitsForItself) {
  std::vector<PluginWork> plugins = Chain(FrameLooks::Mode::kSleep).plugins;
  EXPECT_TRUE(HasNoCycle(plugins));
  plugins[0].waitsFor = {1};
  EXPECT_FALSE(HasNoCycle(plugins));
}

}  // namespace
