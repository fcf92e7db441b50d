#pragma once

#include <memory>
#include <string>

/// One piece of work for a thread pool.
///
/// Made by the caller of PostTask and shared with the pool, which releases it after it has run.
class CTMTask {
 public:
  /// `group` names the pool that is to run the task.
  explicit CTMTask(const std::string& group);
  virtual ~CTMTask();
  CTMTask(const CTMTask&) = delete;
  CTMTask& operator=(const CTMTask&) = delete;

  /// What a pool thread calls: runs DoTask once. What it throws ends this task and nothing else.
  virtual void Exec();

  /// The work itself, on a pool thread.
  virtual void DoTask() = 0;

  const std::string& Group() const { return m_group; }

 private:
  const std::string m_group;
};

/// The named thread pools of the process. All members may be called from any thread.
class CThreadManager {
 public:
  static CThreadManager& Instance();

  /// Grants the pool `name` with at least `least` and at most `most` threads, made as tasks come,
  /// `reserved` of which are for urgent tasks only. A `most` below `least` counts as `least`.
  /// A name that is granted already is granted again: it is the same pool, with the higher ones of
  /// the old and the new bounds and with the new `reserved`, and it exists until each grant is
  /// released. Returns a number other than 0 when the pool is ready, 0 when it is refused.
  unsigned int GetAvailableThreadpool(const std::string& name, int least, int most, int reserved);

  /// Hands `task` to the pool named by its group; an `urgent` one runs before those that wait.
  /// Returns true when the pool took it: it is then run on one of the pool's own threads, even if
  /// the pool is released first. False when no pool of that name has been granted.
  ///
  /// An implementation must neither run the task within this call nor wait for room in a full pool:
  /// the frame posts while it holds a lock that its tasks take, so either would deadlock. When a
  /// task is refused, the frame does not load the plugin's library, or at the stop does not unload
  /// it.
  bool PostTask(std::shared_ptr<CTMTask> task, bool urgent);

  /// Releases one grant of the pool `name`. With the last one the pool takes no further task, runs
  /// those that it has, and ends its threads. With `wait` the call returns when all tasks have
  /// ended that the pool had when it was called, whether or not other grants are left. Releases
  /// nothing and returns false for an unknown name, and with `wait` from within a task of the same
  /// pool, which would wait for itself.
  ///
  /// A task that has ended may still be shared by the pool. The frame releases its pool without
  /// waiting.
  bool ReleaseThread(const std::string& name, bool wait);

  CThreadManager(const CThreadManager&) = delete;
  CThreadManager& operator=(const CThreadManager&) = delete;

 private:
  CThreadManager() = default;
  ~CThreadManager() = default;
};
