#include "reference/base/ThreadPools.h"

#include <algorithm>
#include <atomic>
#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <utility>

#include "reference/base/Pool.h"
#include "sdk/base/log.h"
#include "sdk/base/thread.h"

namespace {

std::atomic<int> g_mostThreads{0};  // maximum for a pool; 0: no limit

/// Never destroyed: pool threads may outlive main, and tasks on them may ask for pools.
struct Pools {
  std::mutex mutex;                                     // taken before a pool's own
  std::map<std::string, std::shared_ptr<Pool>> byName;  // each with a holder; guarded by mutex
};

Pools& ThePools() {
  static Pools& pools = *new Pools;
  return pools;
}

std::shared_ptr<Pool> FindPool(const std::string& name) {
  Pools& pools = ThePools();
  const std::lock_guard<std::mutex> lock(pools.mutex);
  const auto found = pools.byName.find(name);
  return found == pools.byName.end() ? nullptr : found->second;
}

/// Adds the calling thread as a holder to the pool; null when there is no pool of that name.
std::shared_ptr<Pool> HoldPool(const std::string& name) {
  Pools& pools = ThePools();
  const std::lock_guard<std::mutex> lock(pools.mutex);
  const auto found = pools.byName.find(name);
  if (found == pools.byName.end()) return nullptr;
  found->second->AddHolder();
  return found->second;
}

/// Adds the pool `fresh`, of which the calling thread is the holder, and returns it. If another
/// thread has added one of that name meanwhile, adds the holder to that one and returns that one.
std::shared_ptr<Pool> AddPool(const std::string& name, const std::shared_ptr<Pool>& fresh) {
  Pools& pools = ThePools();
  const std::lock_guard<std::mutex> lock(pools.mutex);
  const auto [entry, isAdded] = pools.byName.emplace(name, fresh);
  if (!isAdded) entry->second->AddHolder();
  return entry->second;
}

int Limited(int threads) {
  const int most = g_mostThreads;
  return most > 0 ? std::min(threads, most) : threads;
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
  least = Limited(least);
  most = Limited(most);
  if (const std::shared_ptr<Pool> granted = HoldPool(name)) {
    granted->Grow(least, most, reserved);
    return 1;
  }
  const auto fresh = std::make_shared<Pool>(name);
  if (!fresh->Grow(least, most, reserved)) {
    fresh->Close();  // ends the threads that were started
    return 0;
  }
  fresh->AddHolder();
  const std::shared_ptr<Pool> granted = AddPool(name, fresh);
  if (granted != fresh) {
    fresh->Close();
    granted->Grow(least, most, reserved);
  }
  return 1;
}

bool CThreadManager::PostTask(std::shared_ptr<CTMTask> task, bool urgent) {
  if (!task) return false;
  const std::shared_ptr<Pool> pool = FindPool(task->Group());
  return pool && pool->Post(std::move(task), urgent);
}

bool CThreadManager::ReleaseThread(const std::string& name, bool wait) {
  std::shared_ptr<Pool> pool;
  bool waitsForItself = false;
  {
    Pools& pools = ThePools();
    const std::lock_guard<std::mutex> lock(pools.mutex);
    const auto found = pools.byName.find(name);
    if (found == pools.byName.end()) return false;
    pool = found->second;
    waitsForItself = wait && pool->IsOnOwnThread();
    if (!waitsForItself && pool->RemoveHolder() == 0) {
      pools.byName.erase(found);
      pool->Close();
    }
  }
  if (waitsForItself) {
    IKPXFormatLog(
        5, "base.thread",
        "ReleaseThread with waiting, from a task of %s itself, would never return: not released",
        name.c_str());
    return false;
  }
  if (wait) pool->WaitForTasks();
  return true;
}

void LimitPoolThreads(int most) {
  g_mostThreads = most;
}

std::size_t UnfinishedTasks() {
  return Pool::UnfinishedOfAll();
}
