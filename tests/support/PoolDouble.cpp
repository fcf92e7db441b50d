#include "tests/support/PoolDouble.h"

#include <algorithm>
#include <exception>
#include <utility>

#include "sdk/base/log.h"
#include "tests/support/TimeLimit.h"

namespace {

thread_local const PoolDouble* t_pool = nullptr;

}  // namespace

PoolDouble::~PoolDouble() {
  {
    const std::lock_guard<std::mutex> lock(m_mutex);
    m_closing = true;
    m_changed.notify_all();
  }
  for (std::thread& thread : m_threads) thread.join();
}

bool PoolDouble::IsGranted() {
  const std::lock_guard<std::mutex> lock(m_mutex);
  return m_grants > 0;
}

void PoolDouble::Grant(int least, int reserved) {
  const std::lock_guard<std::mutex> lock(m_mutex);
  ++m_grants;
  m_least = std::max(m_least, least);
  m_reserved = std::clamp(reserved, 0, m_least - 1);
  if (!m_waiting.empty()) StartThreads();
  m_changed.notify_all();
}

void PoolDouble::Release() {
  const std::lock_guard<std::mutex> lock(m_mutex);
  --m_grants;
}

void PoolDouble::Run(std::shared_ptr<CTMTask> task, bool urgent) {
  const std::lock_guard<std::mutex> lock(m_mutex);
  m_waiting.push_back({std::move(task), ++m_lastNumber, urgent});
  m_unfinished.insert(m_lastNumber);
  StartThreads();
  m_changed.notify_all();
}

void PoolDouble::StartThreads() {
  while (static_cast<int>(m_threads.size()) < m_least) m_threads.emplace_back([this] { Work(); });
}

void PoolDouble::AwaitTasks() {
  std::unique_lock<std::mutex> lock(m_mutex);
  const bool ended = m_changed.wait_for(lock, kLongestWait, [this, last = m_lastNumber] {
    return m_unfinished.empty() || *m_unfinished.begin() > last;
  });
  if (!ended) FailAndExit("a task of the pool does not end");
}

bool PoolDouble::IsOnOwnThread() const {
  return t_pool == this;
}

/// The task that a free thread may run now: an urgent one first.
std::list<PoolDouble::Entry>::iterator PoolDouble::FindNext() {
  const auto urgent = std::find_if(m_waiting.begin(), m_waiting.end(),
                                   [](const Entry& entry) { return entry.urgent; });
  if (urgent != m_waiting.end()) return urgent;
  return m_ordinaryRunning < m_least - m_reserved ? m_waiting.begin() : m_waiting.end();
}

void PoolDouble::Work() {
  t_pool = this;
  std::unique_lock<std::mutex> lock(m_mutex);
  while (true) {
    m_changed.wait(lock, [this] { return m_closing || FindNext() != m_waiting.end(); });
    const auto next = FindNext();
    if (next == m_waiting.end()) return;
    Entry entry = std::move(*next);
    m_waiting.erase(next);
    m_ordinaryRunning += entry.urgent ? 0 : 1;
    lock.unlock();
    try {
      entry.task->Exec();
    } catch (const std::exception& error) {
      IKPXFormatLog(5, "base.thread", "a task of %s threw: %s", m_name.c_str(), error.what());
    } catch (...) {
      IKPXFormatLog(5, "base.thread", "a task of %s threw", m_name.c_str());
    }
    entry.task.reset();
    lock.lock();
    m_ordinaryRunning -= entry.urgent ? 0 : 1;
    m_unfinished.erase(entry.number);
    m_changed.notify_all();
  }
}
