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

// Doubles of the libraries around the frame that many threads may use at once, quick enough for
// thousands of runs: real pool threads that run tasks in any order after a little while, a sleep
// that hardly lasts, and plugins that watch their own order.

/// A plugin as the loader double knows it. Its two functions write down what is out of order.
struct WatchedPlugin {
  std::string name;
  std::vector<WatchedPlugin*> needs;
  std::vector<WatchedPlugin*> neededBy;
  bool loads = true;
  bool succeeds = true;
  std::function<void()> onInit;  // runs within Init

  std::atomic<int> inits{0};      // begun
  std::atomic<int> initsDone{0};  // finished, or found not to load
  std::atomic<int> uninits{0};
  std::atomic<int> uninitsDone{0};
  std::atomic<int> handles{0};
};

/// What is around the frame in one run of a product. The doubles use the one World that exists.
class World {
 public:
  explicit World(unsigned seed);
  ~World();
  World(const World&) = delete;
  World& operator=(const World&) = delete;

  static World& Current();

  /// Adds a plugin that depends on those at `needs`, places among those added before.
  WatchedPlugin& Add(const std::vector<std::size_t>& needs);

  WatchedPlugin* Find(const std::string& name);

  /// The product as words for ProductTree::Product.
  std::string Words() const;

  /// Any thread, from here on.
  void Fault(const std::string& what);
  void Rest();
  void Post(std::shared_ptr<CTMTask> task);
  void AwaitTasks();

  std::deque<WatchedPlugin> plugins;
  std::string exePath;
  std::atomic<int> rests{0};  // of the manager
  ProductModel productModel;  // as handed over
  std::vector<AddonModel> addons;
  std::vector<ToolModel> tools;
  std::map<std::string, bool> loadState;
  std::vector<int> counts;            // told by the frame's log in this phase
  std::map<std::string, int> timing;  // timing lines by text
  std::vector<std::string> faults;
  std::mutex mutex;  // guards loadState, counts, timing and faults

 private:
  void Work(unsigned seed);

  std::mutex m_queueMutex;
  std::condition_variable m_changed;
  std::deque<std::shared_ptr<CTMTask>> m_queue;  // guarded by m_queueMutex
  int m_running = 0;                             // guarded by m_queueMutex
  bool m_closing = false;                        // guarded by m_queueMutex
  std::vector<std::thread> m_threads;
};
