#pragma once

#include <atomic>
#include <condition_variable>
#include <cstdint>
#include <deque>
#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <random>
#include <string>
#include <thread>
#include <vector>

#include "sdk/base/thread.h"
#include "sdk/kpx/platform.h"
#include "tests/support/TimeLimit.h"

// Thread-safe doubles of the libraries around the frame, fast enough for thousands of runs: pool
// threads that run tasks in random order after a short delay, a very short sleep, and plugins that
// check the order of their calls.

/// A plugin of the loader's double. Its Init and UnInit record a fault when they are called too
/// early or twice.
struct WatchedPlugin {
  std::string name;
  std::vector<WatchedPlugin*> needs;
  std::vector<WatchedPlugin*> neededBy;
  bool loads = true;
  bool succeeds = true;
  bool stops = true;               // what UnInit returns
  std::function<void()> onLoad;    // called when it is loaded, as a static constructor
  std::function<void()> onInit;    // called by Init
  std::function<void()> onUnInit;  // called by UnInit

  std::atomic<int> inits{0};      // begun
  std::atomic<int> initsDone{0};  // ended, or the library failed to load
  std::atomic<int> uninits{0};
  std::atomic<int> uninitsDone{0};
  std::atomic<int> handles{0};
};

/// While one exists, its thread runs code of the doubles that may allocate: a test that takes the
/// frame's memory away leaves them theirs.
class InDoubles {
 public:
  InDoubles();
  ~InDoubles();
  InDoubles(const InDoubles&) = delete;
  InDoubles& operator=(const InDoubles&) = delete;

  /// Whether one exists on the calling thread.
  static bool IsHere();
};

/// The state of the doubles for one run of a product. They use the one LibraryDoubles that exists.
class LibraryDoubles {
 public:
  explicit LibraryDoubles(unsigned seed);
  ~LibraryDoubles();
  LibraryDoubles(const LibraryDoubles&) = delete;
  LibraryDoubles& operator=(const LibraryDoubles&) = delete;

  static LibraryDoubles& Current();

  /// Adds a plugin that depends on those at the indices `needs` in `plugins`.
  WatchedPlugin& Add(const std::vector<std::size_t>& needs);

  WatchedPlugin* Find(const std::string& name);

  /// The product as the argument of ProductTree::Product.
  std::string Words() const;

  // Thread-safe. Rest throws when no task was posted for kLongestWait; AwaitTasks ends the process
  // as a failed test when it has waited that long.
  void Fault(const std::string& what);
  void Rest();
  void Post(std::shared_ptr<CTMTask> task);
  void AwaitTasks();

  std::deque<WatchedPlugin> plugins;
  std::string exePath;
  std::function<void()> onTaskEnd;  // called after each task on its thread
  std::atomic<int> rests{0};        // calls of XRT_Sleep
  ProductModel productModel;        // this and the next two as handed over by the frame
  std::vector<AddonModel> addons;
  std::vector<ToolModel> tools;
  std::map<std::string, bool> loadState;
  std::vector<int> counts;            // the counts in the frame's log lines, in order
  std::map<std::string, int> timing;  // timing lines by text
  std::vector<std::string> faults;
  std::mutex mutex;  // guards loadState, counts, timing and faults

 private:
  void Work(unsigned seed);

  TimeLimit m_limit;  // restarted by each task that is posted

  std::mutex m_queueMutex;
  std::condition_variable m_changed;
  std::deque<std::shared_ptr<CTMTask>> m_queue;  // guarded by m_queueMutex
  int m_running = 0;                             // guarded by m_queueMutex
  bool m_closing = false;                        // guarded by m_queueMutex
  std::vector<std::thread> m_threads;
};
