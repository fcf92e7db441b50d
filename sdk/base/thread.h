#pragma once

#include <memory>
#include <string>

/// One piece of work for a thread pool.
///
/// Made by whoever posts it, shared with the pool, which lets go of it after it has run.
class CTMTask {
 public:
  /// `group` names the pool that is to run the task.
  explicit CTMTask(const std::string& group);
  virtual ~CTMTask();
  CTMTask(const CTMTask&) = delete;
  CTMTask& operator=(const CTMTask&) = delete;

  /// What a pool thread calls: runs DoTask once.
  virtual void Exec();

  /// The work itself, on a pool thread.
  virtual void DoTask() = 0;

  const std::string& Group() const { return m_group; }

 private:
  const std::string m_group;
};

/// The process-wide keeper of named thread pools. All members may be called from any thread.
class CThreadManager {
 public:
  static CThreadManager& Instance();

  /// Grants the pool `name` with at least `least` and at most `most` threads, made as tasks come,
  /// `reserved` of which are for urgent tasks only. A `most` below `least` counts as `least`.
  /// A name that is granted already is granted again: the same pool, whose bounds rise to the
  /// higher ones and stay there, with the new `reserved`, and which goes on until each grant is
  /// released. Returns a number other than 0 for a pool that is ready, 0 when none can be had.
  unsigned int GetAvailableThreadpool(const std::string& name, int least, int most, int reserved);

  /// Hands `task` to the pool named by its group; an `urgent` one overtakes those that wait.
  /// Returns true when the pool took it: it will then be run, even if the pool is released first.
  ///
  /// An implementation must neither run the task within this call nor wait for room in a full pool:
  /// the frame posts while it holds a lock that its tasks take, so that either would wait for ever.
  /// Of a plugin whose task is refused the frame does not load the library, or at the stop does not
  /// unload it.
  bool PostTask(std::shared_ptr<CTMTask> task, bool urgent);

  /// Gives one grant of the pool `name` back. With the last one the pool takes no further task,
  /// runs what it has, and ends its threads. With `wait` the call returns when the tasks have ended
  /// that were in the pool when it was made, whether or not other grants are left. Returns false
  /// for an unknown name; and with `wait` from within a task of the same pool, which would wait for
  /// itself: nothing is given back then.
  ///
  /// That a task has ended does not say that the pool has let go of it. The frame releases its pool
  /// without waiting.
  bool ReleaseThread(const std::string& name, bool wait);

  CThreadManager(const CThreadManager&) = delete;
  CThreadManager& operator=(const CThreadManager&) = delete;

 private:
  CThreadManager() = default;
  ~CThreadManager() = default;
};
