#include "reference/base/Pool.h"

#include <algorithm>
#include <atomic>
#include <exception>
#include <thread>
#include <utility>

#include "reference/base/TaskObservation.h"
#include "reference/os/Threads.h"
#include "sdk/base/log.h"

namespace {

constexpr char kModule[] = "base.thread";

std::atomic<std::uint64_t> g_lastTask{0};
std::atomic<std::size_t> g_unfinished{0};

/// The pool to which the calling thread belongs; null for other threads.
thread_local const Pool* t_pool = nullptr;

}  // namespace

Pool::Pool(std::string name) : m_name(std::move(name)) {}

bool Pool::Grow(int least, int most, int reserved) {
  std::unique_lock<std::mutex> lock(m_mutex);
  m_least = std::max(m_least, least);
  m_most = std::max({m_most, most, m_least});
  m_reserved = std::clamp(reserved, 0, m_most - 1);
  m_work.notify_all();  // with the new bounds several tasks may begin
  while (m_threads < m_least || NeedsThread()) {
    ++m_threads;
    lock.unlock();
    const bool started = StartThread();
    lock.lock();
    if (!started) return m_threads >= m_least;
  }
  return true;
}

void Pool::AddHolder() {
  const SleepWaker holder = SleepWaker::OfThisThread();
  const std::lock_guard<std::mutex> lock(m_mutex);
  m_holders.push_back(holder);
}

std::size_t Pool::RemoveHolder() {
  const std::lock_guard<std::mutex> lock(m_mutex);
  const auto own = std::find_if(m_holders.begin(), m_holders.end(),
                                [](const SleepWaker& holder) { return holder.IsOfThisThread(); });
  m_holders.erase(own != m_holders.end() ? own : m_holders.begin());
  return m_holders.size();
}

bool Pool::Post(std::shared_ptr<CTMTask> task, bool urgent) {
  std::list<Entry> posted;
  posted.push_back({std::move(task), 0, 0, urgent});
  Entry& entry = posted.front();
  {
    const std::lock_guard<std::mutex> lock(m_mutex);
    if (m_closed) return false;
    entry.number = ++g_lastTask;
    entry.wave = m_oldestWave + m_waves.size() - 1;
    ++m_waves.back();
    ++m_announced;
    ++g_unfinished;
  }
  ObserveTask({TaskEvent::Kind::kPosted, entry.number, m_name});
  bool needsThread = false;
  {
    const std::lock_guard<std::mutex> lock(m_mutex);
    --m_announced;
    std::list<Entry>& queue = urgent ? m_urgent : m_ordinary;
    queue.splice(queue.end(), posted);
    needsThread = NeedsThread();
    if (needsThread) ++m_threads;
  }
  // If no thread can be started, the task waits for one of the existing threads.
  if (!needsThread || !StartThread()) m_work.notify_one();
  return true;
}

void Pool::Close() {
  const std::lock_guard<std::mutex> lock(m_mutex);
  m_closed = true;
  m_work.notify_all();
}

void Pool::WaitForTasks() {
  std::unique_lock<std::mutex> lock(m_mutex);
  if (m_waves.back() > 0) m_waves.push_back(0);
  const std::uint64_t present = m_oldestWave + m_waves.size() - 1;
  m_ended.wait(lock, [&] { return m_oldestWave >= present; });
}

std::size_t Pool::UnfinishedOfAll() {
  return g_unfinished;
}

bool Pool::IsOnOwnThread() const {
  return t_pool == this;
}

/// How many of the waiting tasks may begin now, if there are threads for them. It is enough that a
/// post wakes one thread: a thread that has ended a task takes the next one by itself.
int Pool::Takeable() const {
  const int free = m_most - m_reserved - (m_running - m_urgentRunning);
  return static_cast<int>(m_urgent.size()) +
         std::min(static_cast<int>(m_ordinary.size()), std::max(free, 0));
}

/// Whether the threads have to end.
bool Pool::IsAtEnd() const {
  return m_closed && m_urgent.empty() && m_ordinary.empty() && m_announced == 0;
}

bool Pool::NeedsThread() const {
  return Takeable() > m_threads - m_running && m_threads < m_most;
}

/// Starts a thread, which the caller has already counted in m_threads; on failure corrects the
/// count. Called without the mutex, since creating a thread takes long.
bool Pool::StartThread() {
  try {
    std::thread([pool = shared_from_this()] { pool->Run(); }).detach();
    return true;
  } catch (const std::exception& error) {
    {
      const std::lock_guard<std::mutex> lock(m_mutex);
      --m_threads;
    }
    IKPXFormatLog(4, kModule, "no further thread: %s", error.what());
    return false;
  }
}

void Pool::Run() {
  t_pool = this;
  PrepareWorkerThread();
  std::unique_lock<std::mutex> lock(m_mutex);
  while (true) {
    m_work.wait(lock, [this] { return Takeable() > 0 || IsAtEnd(); });
    if (Takeable() == 0) return;
    std::list<Entry>& queue = m_urgent.empty() ? m_ordinary : m_urgent;
    Entry entry = std::move(queue.front());
    queue.pop_front();
    ++m_running;
    m_urgentRunning += entry.urgent ? 1 : 0;
    if (IsAtEnd()) m_work.notify_all();
    lock.unlock();
    Execute(std::move(entry.task), entry.number);
    lock.lock();
    if (!EndTask(entry)) continue;
    lock.unlock();
    ObserveIdle();
    lock.lock();
  }
}

/// Runs the task and releases the pool's last reference to it while it still counts as running.
void Pool::Execute(std::shared_ptr<CTMTask> task, std::uint64_t number) {
  ObserveTask({TaskEvent::Kind::kBegun, number, m_name});
  try {
    task->Exec();
  } catch (const std::exception& error) {
    IKPXFormatLog(5, kModule, "a task of %s threw: %s", m_name.c_str(), error.what());
  } catch (...) {
    IKPXFormatLog(5, kModule, "a task of %s threw", m_name.c_str());
  }
  task.reset();
  ObserveTask({TaskEvent::Kind::kEnded, number, m_name});
}

/// Returns whether no task of any pool is left.
bool Pool::EndTask(const Entry& entry) {
  --m_running;
  m_urgentRunning -= entry.urgent ? 1 : 0;
  --m_waves[entry.wave - m_oldestWave];
  while (m_waves.size() > 1 && m_waves.front() == 0) {
    m_waves.pop_front();
    ++m_oldestWave;
    m_ended.notify_all();
  }
  for (const SleepWaker& holder : m_holders) holder.Wake();
  return --g_unfinished == 0;
}
