#include "reference/base/ThreadPools.h"

#include <algorithm>
#include <condition_variable>
#include <deque>
#include <exception>
#include <map>
#include <mutex>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include "sdk/base/log.h"
#include "sdk/base/thread.h"

namespace {

constexpr char kModule[] = "base.thread";

using Task = std::shared_ptr<CTMTask>;

/// One named pool, which runs tasks on detached threads of its own.
///
/// Shared by the manager, until released, and by the pool's threads, the last of which frees it.
/// All members may be called from any thread. A thread that the system refuses is a logged false.
class Pool : public std::enable_shared_from_this<Pool> {
 public:
  /// Raises the bounds and sees to it that `least` threads, and one at the least, are there. False
  /// when there are fewer.
  bool Grow(int least, int most, int reserved) {
    std::string refusal;
    {
      const std::lock_guard<std::mutex> lock(m_mutex);
      m_least = std::max(m_least, least);
      m_most = std::max({m_most, most, m_least});
      m_reserved = std::clamp(reserved, 0, m_most - 1);
      while (m_threads < m_least && refusal.empty()) refusal = AddThread();
    }
    return !LogRefusal(refusal);
  }

  /// False when the pool is released.
  bool Post(Task task, bool urgent) {
    std::string refusal;
    {
      const std::lock_guard<std::mutex> lock(m_mutex);
      if (m_released) return false;
      (urgent ? m_urgent : m_waiting).push_back(std::move(task));
      // Refused another thread, the task waits for one of those that are there.
      if (Waiting() > m_threads - m_running && m_threads < m_most) refusal = AddThread();
      m_changed.notify_all();
    }
    LogRefusal(refusal);
    return true;
  }

  void Release(bool wait) {
    std::unique_lock<std::mutex> lock(m_mutex);
    m_released = true;
    m_changed.notify_all();
    if (wait) m_changed.wait(lock, [this] { return m_running == 0 && Waiting() == 0; });
  }

  std::size_t Unfinished() {
    const std::lock_guard<std::mutex> lock(m_mutex);
    return static_cast<std::size_t>(m_running) + static_cast<std::size_t>(Waiting());
  }

 private:
  int Waiting() const { return static_cast<int>(m_urgent.size() + m_waiting.size()); }

  /// Whether a thread may take one of the tasks that are not urgent.
  bool FreeForAll() const { return m_running - m_urgentRunning < m_most - m_reserved; }

  bool HasWork() const { return !m_urgent.empty() || (!m_waiting.empty() && FreeForAll()); }

  /// Empty, or why the system refused.
  std::string AddThread() {
    try {
      std::thread([pool = shared_from_this()] { pool->Run(); }).detach();
    } catch (const std::exception& error) {
      return error.what();
    }
    ++m_threads;
    return std::string();
  }

  /// Not under the mutex: whoever watches the log may ask for the number of tasks.
  static bool LogRefusal(const std::string& refusal) {
    if (refusal.empty()) return false;
    IKPXFormatLog(4, kModule, "no further thread: %s", refusal.c_str());
    return true;
  }

  void Run() {
    std::unique_lock<std::mutex> lock(m_mutex);
    while (true) {
      m_changed.wait(lock, [this] { return HasWork() || (m_released && Waiting() == 0); });
      if (!HasWork()) return;
      const int urgent = m_urgent.empty() ? 0 : 1;
      std::deque<Task>& queue = urgent ? m_urgent : m_waiting;
      Task task = std::move(queue.front());
      queue.pop_front();
      ++m_running;
      m_urgentRunning += urgent;
      lock.unlock();
      Execute(std::move(task));
      lock.lock();
      --m_running;
      m_urgentRunning -= urgent;
      m_changed.notify_all();
    }
  }

  /// Drops the last reference of the pool to the task, while the task still counts as running.
  static void Execute(Task task) {
    try {
      task->Exec();
    } catch (const std::exception& error) {
      IKPXFormatLog(5, kModule, "a task of %s threw: %s", task->Group().c_str(), error.what());
    } catch (...) {
      IKPXFormatLog(5, kModule, "a task of %s threw", task->Group().c_str());
    }
  }

  std::mutex m_mutex;
  std::condition_variable m_changed;

  // Guarded by m_mutex.
  std::deque<Task> m_urgent;
  std::deque<Task> m_waiting;
  int m_least = 1;
  int m_most = 1;
  int m_reserved = 0;
  int m_threads = 0;
  int m_running = 0;
  int m_urgentRunning = 0;  // of those
  bool m_released = false;
};

/// Never destroyed: pool threads may outlive main, and tasks on them may ask for pools.
struct Pools {
  std::mutex mutex;  // taken before a pool's own

  // Guarded by mutex.
  std::map<std::string, std::shared_ptr<Pool>> byName;
  std::vector<std::weak_ptr<Pool>> released;
};

Pools& ThePools() {
  static Pools& pools = *new Pools;
  return pools;
}

std::shared_ptr<Pool> FindPool(const std::string& name) {
  Pools& pools = ThePools();
  const std::lock_guard<std::mutex> lock(pools.mutex);
  const auto pool = pools.byName.find(name);
  return pool == pools.byName.end() ? nullptr : pool->second;
}

}  // namespace

CTMTask::CTMTask(const std::string& group) : m_group(group) {}

CTMTask::~CTMTask() = default;

void CTMTask::Exec() {
  DoTask();
}

CThreadManager& CThreadManager::Instance() {
  static CThreadManager& manager = *new CThreadManager;  // threads may outlive main
  return manager;
}

unsigned int CThreadManager::GetAvailableThreadpool(const std::string& name, int least, int most,
                                                    int reserved) {
  if (const std::shared_ptr<Pool> granted = FindPool(name)) {
    granted->Grow(least, most, reserved);
    return 1;
  }
  const auto fresh = std::make_shared<Pool>();
  if (!fresh->Grow(least, most, reserved)) {
    fresh->Release(false);  // ends the threads that there are
    return 0;
  }
  Pools& pools = ThePools();
  std::unique_lock<std::mutex> lock(pools.mutex);
  const auto [pool, isFirst] = pools.byName.emplace(name, fresh);
  if (isFirst) return 1;
  // Somebody else asked for the same name meanwhile.
  const std::shared_ptr<Pool> granted = pool->second;
  lock.unlock();
  fresh->Release(false);
  granted->Grow(least, most, reserved);
  return 1;
}

bool CThreadManager::PostTask(std::shared_ptr<CTMTask> task, bool urgent) {
  if (!task) return false;
  const std::shared_ptr<Pool> pool = FindPool(task->Group());
  return pool && pool->Post(std::move(task), urgent);
}

bool CThreadManager::ReleaseThread(const std::string& name, bool wait) {
  std::shared_ptr<Pool> pool;
  {
    Pools& pools = ThePools();
    const std::lock_guard<std::mutex> lock(pools.mutex);
    const auto found = pools.byName.find(name);
    if (found == pools.byName.end()) return false;
    pool = std::move(found->second);
    pools.byName.erase(found);
    pools.released.erase(std::remove_if(pools.released.begin(), pools.released.end(),
                                        [](const auto& old) { return old.expired(); }),
                         pools.released.end());
    pools.released.push_back(pool);
  }
  pool->Release(wait);
  return true;
}

std::size_t UnfinishedTasks() {
  Pools& pools = ThePools();
  const std::lock_guard<std::mutex> lock(pools.mutex);
  std::size_t count = 0;
  for (const auto& pool : pools.byName) count += pool.second->Unfinished();
  for (const auto& old : pools.released) {
    if (const auto pool = old.lock()) count += pool->Unfinished();
  }
  return count;
}
