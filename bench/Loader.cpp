// Starts a product's plugins without the frame, for comparison: no model files, no log, no states.
// Prints "start_ms NUMBER": from the first library to the return of the last Init.
//
//   loader BIN serial            one after the other, in the order of BIN/order.txt
//   loader BIN parallel THREADS  each as soon as those that it depends on have started
//
// A line of order.txt is a plugin and those that it depends on, which are in lines before it. The
// exit status is not 0, with a sentence on standard error, when a plugin did not start.

#include <dlfcn.h>

#include <chrono>
#include <condition_variable>
#include <cstddef>
#include <fstream>
#include <iostream>
#include <map>
#include <mutex>
#include <queue>
#include <sstream>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

namespace {

struct Plugin {
  std::string library;
  std::size_t missing = 0;          // how many that it depends on have not started yet
  std::vector<std::size_t> behind;  // those that depend on it
};

std::vector<Plugin> ReadOrder(const std::string& bin) {
  std::vector<Plugin> plugins;
  std::map<std::string, std::size_t> numbers;
  std::ifstream order(bin + "/order.txt");
  for (std::string line; std::getline(order, line);) {
    std::istringstream words(line);
    std::string id;
    words >> id;
    const std::size_t number = plugins.size();
    numbers[id] = number;
    plugins.push_back({std::string(bin).append("/").append(id).append(".dll"), 0, {}});
    for (std::string other; words >> other; ++plugins[number].missing) {
      plugins[numbers.at(other)].behind.push_back(number);
    }
  }
  return plugins;
}

void Start(const Plugin& plugin) {
  void* const library = dlopen(plugin.library.c_str(), RTLD_NOW);
  using Entry = bool();
  Entry* const init =
      library == nullptr ? nullptr : reinterpret_cast<Entry*>(dlsym(library, "Init"));
  if (init == nullptr || !init()) throw std::runtime_error(plugin.library + " did not start");
}

/// The plugins that are ready, taken by the threads.
class ReadyQueue {
 public:
  explicit ReadyQueue(std::vector<Plugin>& plugins) : m_plugins(plugins), m_left(plugins.size()) {
    for (std::size_t i = 0; i < plugins.size(); ++i) {
      if (plugins[i].missing == 0) m_ready.push(i);
    }
  }

  /// Starts plugins until all have started.
  void Work() {
    std::unique_lock<std::mutex> lock(m_mutex);
    while (true) {
      m_changed.wait(lock, [this] { return m_left == 0 || !m_ready.empty(); });
      if (m_left == 0) return;
      const Plugin& plugin = m_plugins[m_ready.front()];
      m_ready.pop();
      lock.unlock();
      Start(plugin);
      lock.lock();
      for (const std::size_t other : plugin.behind) {
        if (--m_plugins[other].missing > 0) continue;
        m_ready.push(other);
        m_changed.notify_one();
      }
      if (--m_left == 0) m_changed.notify_all();
    }
  }

 private:
  std::mutex m_mutex;
  std::condition_variable m_changed;

  // Guarded by m_mutex.
  std::vector<Plugin>& m_plugins;
  std::queue<std::size_t> m_ready;
  std::size_t m_left;
};

void StartAll(std::vector<Plugin>& plugins, std::size_t threads) {
  if (threads == 0) {
    for (const Plugin& plugin : plugins) Start(plugin);
    return;
  }
  ReadyQueue queue(plugins);
  std::vector<std::thread> workers;
  for (std::size_t i = 0; i < threads; ++i) workers.emplace_back([&queue] { queue.Work(); });
  for (std::thread& worker : workers) worker.join();
}

}  // namespace

int main(int argc, char** argv) {
  try {
    if (argc < 3) throw std::runtime_error("loader: name the folder of the libraries and a way");
    std::vector<Plugin> plugins = ReadOrder(argv[1]);
    if (plugins.empty()) throw std::runtime_error("loader: order.txt names no plugin");
    const std::size_t threads = argc > 3 ? std::stoul(argv[3]) : 0;
    const auto begin = std::chrono::steady_clock::now();
    StartAll(plugins, threads);
    const std::chrono::duration<double, std::milli> time = std::chrono::steady_clock::now() - begin;
    std::cout << "start_ms " << time.count() << "\n";
  } catch (const std::exception& error) {
    std::cerr << error.what() << std::endl;
    return 1;
  }
  return 0;
}
